#!/usr/bin/env bash
# Installs what is needed, builds an optimised tonegrabber-cli, and runs the main job:
# `tonegrabber-cli demo [OUTDIR]` samples a piano and strings from the General MIDI
# SoundFont through the hosted instrument (offline, no sound card or JACK server needed),
# finds notes and loops, exports SFZ, SoundFont 2 and Bitwig, and prints what it made.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release -j "$(nproc)" >/dev/null
exec build/release/cli/tonegrabber-cli demo "$@"
