#!/usr/bin/env bash
# Makes the screenshots the README shows: the desktop program on a virtual display (Xvfb)
# with the demo's two projects open, its dialogs (steps in scripts/lib/*-screenshots.sh) and
# the waveform editor (scripts/editor-screenshots.sh). Saves PNGs under docs/screenshots/ and
# stops everything it started, by process id.
# Usage: scripts/screenshots.sh [BUILD_DIR]   (default build/release, built when missing)
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)
build=${1:-build/release}
source scripts/lib/desktop-session.sh
for steps in scripts/lib/*-screenshots.sh; do
    source "$steps"
done

if [ ! -x "$build/app/tonegrabber" ] || [ ! -x "$build/cli/tonegrabber-cli" ]; then
    cmake --preset release >/dev/null
    cmake --build --preset release --target tonegrabber tonegrabber-cli -j "$(nproc)" >/dev/null
    build=build/release
fi

WORK=$(mktemp -d)
trap 'stop_session; rm -rf "$WORK"' EXIT
export TONEGRABBER_HOME=$WORK/home
mkdir -p "$TONEGRABBER_HOME" docs/screenshots

echo "screenshots: bouncing the demo projects ..."
"$build/cli/tonegrabber-cli" demo "$WORK/demo" --quiet >"$WORK/demo.log"
mapfile -t projects < <(find "$WORK/demo" -maxdepth 1 -name '*.TGprj' | sort)
[ "${#projects[@]}" -ge 2 ] || { echo "the demo made no projects" >&2; exit 1; }
prepare_extras_screenshots "$build/cli/tonegrabber-cli" "$WORK/demo"

start_display "$WORK"
export ASAN_OPTIONS=detect_leaks=0 # a sanitizer build may be given; its exit is not judged here
start_program "$root/$build/app/tonegrabber" "${projects[@]}"
window=$(wait_for_window "Tonegrabber 6" 300)
source scripts/lib/wizard-screenshots.sh && shoot_wizard_screenshots "$window"
screenshot_when_painted "$window" docs/screenshots/main-window.png 60
shoot_devpanels_screenshots "$window"

press_keys "$window" alt+p
dialog=$(wait_for_window "Preferences" 60)
screenshot_when_painted "$dialog" docs/screenshots/preferences.png 60
press_keys "$dialog" Escape

shoot_extras_screenshots "$window" "$WORK/demo"
shoot_levels_export_screenshots "$window"

press_keys "$window" ctrl+q
question=$(wait_for_window "Quit" 60)
press_keys "$question" Return
wait "$APP_PID"
APP_PID=
shoot_recgui_screenshots "$root/$build" "$WORK"

stop_session
DEMO_DIR="$WORK/demo" scripts/editor-screenshots.sh "$build"

for png in docs/screenshots/*.png; do
    not_blank "$png"
    echo "screenshots: $png ($(identify -format '%wx%h' "$png"))"
done
