#!/usr/bin/env bash
# Installs what is needed, builds with AddressSanitizer + UndefinedBehaviorSanitizer, and runs
# every test. This is the command CI runs.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake --preset asan
cmake --build --preset asan -j "$(nproc)"
ctest --preset asan
