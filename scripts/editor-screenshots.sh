#!/usr/bin/env bash
# Screenshots of the waveform editor showing a Key-Sample of the demo project: the whole take
# with the loop splice beside it, then the waveform fitted to the loop. Runs the real program
# on an Xvfb display, picks the key on the on-screen keyboard with xdotool, and stops what it
# started by process id.
#
#   scripts/editor-screenshots.sh [BUILD_DIR] [NOTE]     (default build/release, note 60)
#
# The demo project is made with `tonegrabber-cli demo`; DEMO_DIR=FOLDER uses a copy of what an
# earlier `demo FOLDER` made instead (the demo takes long in a sanitizer build).
# Writes docs/screenshots/editor-whole-take.png and docs/screenshots/editor-loop.png.
set -Eeuo pipefail
cd "$(dirname "$0")/.."

build=${1:-build/release}
note=${2:-60}
out=docs/screenshots
width=1600
height=1000

work=$(mktemp -d)
pids=()
cleanup() {
    for pid in "${pids[@]}"; do
        kill "$pid" 2>/dev/null || true
    done
    for pid in "${pids[@]}"; do
        wait "$pid" 2>/dev/null || true
    done
    rm -rf "$work"
}
trap cleanup EXIT

export TONEGRABBER_HOME=$work/home
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=0}
mkdir -p "$TONEGRABBER_HOME" "$out"
printf '[Misc]\nShowWarningOnQuit=false\n' >"$TONEGRABBER_HOME/Tonegrabber.ini"
# The program opens straight into the project, not into the start-up wizard.
"$build/cli/tonegrabber-cli" set prefs_showPrjWizardAtStartup=0 >/dev/null

if [ -n "${DEMO_DIR:-}" ]; then
    cp -r "$DEMO_DIR" "$work/demo"
else
    echo "editor-screenshots: making the demo project (offline, hosted instrument)"
    "$build/cli/tonegrabber-cli" demo "$work/demo" >"$work/demo.log" 2>&1
fi
project=$(find "$work/demo" -name '*.TGprj' | sort | tail -n 1)
[ -n "$project" ] || { echo "editor-screenshots: the demo made no project" >&2; exit 1; }

# A display number nobody uses.
display=""
for n in $(seq 90 140); do
    if [ ! -e "/tmp/.X11-unix/X$n" ] && [ ! -e "/tmp/.X$n-lock" ]; then
        display=":$n"
        break
    fi
done
[ -n "$display" ] || { echo "editor-screenshots: no free X display" >&2; exit 1; }
Xvfb "$display" -screen 0 "${width}x${height}x24" -nolisten tcp >/dev/null 2>&1 &
pids+=($!)
export DISPLAY=$display
for _ in $(seq 50); do
    [ -e "/tmp/.X11-unix/X${display#:}" ] && break
    sleep 0.2
done

QT_QPA_PLATFORM=xcb "$build/app/tonegrabber" "$project" >"$work/gui.log" 2>&1 &
pids+=($!)
window=$(timeout 120 xdotool search --sync --onlyvisible --name '^Tonegrabber 6$' | head -n 1)
xdotool windowmove "$window" 0 0 windowsize "$window" "$width" "$height"
sleep 3

# The keyboard runs along the bottom of the window, 75 white keys across its width.
eval "$(xdotool getwindowgeometry --shell "$window")"
white_of() {
    local n=$1
    local in_octave=(0 0 1 1 2 3 3 4 4 5 5 6)
    echo $((n / 12 * 7 + in_octave[n % 12]))
}
key_x=$((X + (2 * $(white_of "$note") + 1) * WIDTH / 150))
key_y=$((Y + HEIGHT - 22))
xdotool mousemove "$key_x" "$key_y" click 1
sleep 3
import -window root "$out/editor-whole-take.png"

# Into the waveform (a click away from the markers' name strip) and fit the loop.
xdotool mousemove $((X + WIDTH / 2)) $((Y + HEIGHT / 3)) click 1
xdotool key l
sleep 2
import -window root "$out/editor-loop.png"
echo "editor-screenshots: wrote $out/editor-whole-take.png and $out/editor-loop.png"
