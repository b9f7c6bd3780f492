#!/usr/bin/env bash
# Installs what is needed, builds an optimised tonegrabber-cli, and runs the main job.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release -j "$(nproc)" >/dev/null
exec build/release/cli/tonegrabber-cli --help "$@"
