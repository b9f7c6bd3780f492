#!/usr/bin/env bash
# The real desktop program on a virtual display: started with two projects on its command
# line, found by its window title, photographed, quit with Ctrl+Q (answering the quit
# question), and checked for exit status 0 and the window state it leaves in Tonegrabber.ini.
# Usage: desktop-e2e.sh TONEGRABBER TONEGRABBER-CLI
set -euo pipefail
app=$1
cli=$2
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=../../scripts/lib/desktop-session.sh
source "$here/../../scripts/lib/desktop-session.sh"

WORK=$(mktemp -d)
trap 'stop_session; rm -rf "$WORK"' EXIT
export TONEGRABBER_HOME=$WORK/home
mkdir -p "$TONEGRABBER_HOME" "$WORK/projects"
fail() {
    echo "FAILED: $*" >&2
    echo "--- program output ---" >&2
    tail -n 40 "$WORK/app.log" >&2 || true
    exit 1
}

for name in Piano Strings; do
    "$cli" new "$WORK/projects/$name.TGprj" --data-path "$WORK/projects" --layers 2 --keys 37 \
        --step 2 >/dev/null
done

start_display "$WORK"
# Leaks are the widget tests' business; at exit the audio and MIDI libraries leave a few
# blocks of their own, which would turn the exit status of this sanitizer build into 23.
export ASAN_OPTIONS=detect_leaks=0
start_program "$app" "$WORK/projects/Piano.TGprj" "$WORK/projects/Strings.TGprj"

# The start-up measures the loop search speed: slow under the sanitizers on a busy machine.
window=$(wait_for_window "Tonegrabber 6" 300) || fail "the main window did not appear"
# Fresh preferences open the project wizard at start; cancelled, it leaves the projects alone.
wizard=$(wait_for_window "Project Wizard" 60) || fail "the project wizard did not open at start"
press_keys "$wizard" Escape
screenshot_when_painted "$window" "$WORK/main-window.png" 60 || fail "blank main window"

press_keys "$window" ctrl+q
question=$(wait_for_window "Quit" 60) || fail "no quit question after Ctrl+Q"
press_keys "$question" Return
status=0
wait "$APP_PID" || status=$?
APP_PID=
[ "$status" -eq 0 ] || fail "exit status $status"

ini=$TONEGRABBER_HOME/Tonegrabber.ini
[ -f "$ini" ] || fail "no $ini"
# has_key SECTION KEY: a Qt INI file holds "SECTION/KEY".
has_key() {
    awk -v section="[$1]" -v key="$2" '
        /^\[/ { inside = ($0 == section) }
        inside && index($0, key "=") == 1 { found = 1 }
        END { exit !found }' "$ini"
}
for key in Geometry State ShowHeader; do
    has_key MainWindow "$key" || fail "MainWindow/$key missing"
done
for dock in InputOutputDock ProjectsDock MultisampleDock SamplesDock PeakLevelDock KeyboardDock; do
    has_key "$dock" Geometry || fail "$dock/Geometry missing"
    has_key "$dock" IsFloating || fail "$dock/IsFloating missing"
done
# The window opened both projects: they are its recent projects now.
for name in Piano Strings; do
    grep -q "$WORK/projects/$name.TGprj" "$ini" || fail "$name was not opened by the window"
done
echo "desktop e2e: window shown, quit with status 0, window state written"
