# Shell functions for driving the desktop program on a virtual X display (Xvfb): start the
# display and the program, wait for a window by its title, take screenshots, and stop what
# was started, by process id. Sourced by scripts/screenshots.sh and the desktop e2e test.

# start_display WORKDIR: starts Xvfb on a free display number and exports DISPLAY.
start_display() {
    local work=$1
    Xvfb -displayfd 3 -screen 0 1400x900x24 -nolisten tcp 3>"$work/display" 2>"$work/xvfb.log" &
    XVFB_PID=$!
    local tries=0
    while [ ! -s "$work/display" ]; do
        tries=$((tries + 1))
        if [ $tries -gt 100 ] || ! kill -0 "$XVFB_PID" 2>/dev/null; then
            echo "Xvfb did not start: $(cat "$work/xvfb.log")" >&2
            return 1
        fi
        sleep 0.1
    done
    export DISPLAY=":$(head -n1 "$work/display")"
}

# start_program BINARY ARGS...: runs the program on the display (xcb), output to $WORK/app.log.
start_program() {
    QT_QPA_PLATFORM=xcb "$@" >"$WORK/app.log" 2>&1 &
    APP_PID=$!
}

# wait_for_window TITLE SECONDS: prints the id of the window whose whole title matches TITLE,
# an extended regular expression (escape a title's own brackets and stars), once it is
# mapped; fails when the time is up or the program has ended.
wait_for_window() {
    local title=$1 seconds=$2 id
    local deadline=$((SECONDS + seconds))
    while [ $SECONDS -lt "$deadline" ]; do
        id=$(xdotool search --onlyvisible --name "^${title}\$" 2>/dev/null | head -n1 || true)
        if [ -n "$id" ]; then
            echo "$id"
            return 0
        fi
        if [ -n "${APP_PID:-}" ] && ! kill -0 "$APP_PID" 2>/dev/null; then
            echo "the program ended before '$title' appeared" >&2
            return 1
        fi
        sleep 0.25
    done
    echo "no window '$title' after ${seconds} s" >&2
    return 1
}

# press_keys WINDOW KEYS...: focuses the window (there is no window manager) and types keys.
press_keys() {
    local window=$1
    shift
    xdotool windowfocus --sync "$window"
    xdotool key "$@"
}

# screenshot WINDOW FILE: the window as it is on screen, as PNG.
screenshot() {
    import -window "$1" "$2"
}

# not_blank FILE: the image has real content (several hundred colours, not one flat area).
not_blank() {
    local colours
    colours=$(convert "$1" -format '%k' info:)
    if [ "$colours" -lt 200 ]; then
        echo "$1 looks blank: only $colours colours" >&2
        return 1
    fi
}

# screenshot_when_painted WINDOW FILE SECONDS: retakes the screenshot until the window has
# been painted (a window is black until its first paint; a busy machine delays it).
screenshot_when_painted() {
    local deadline=$((SECONDS + $3))
    while true; do
        screenshot "$1" "$2"
        if not_blank "$2" 2>/dev/null; then
            return 0
        fi
        if [ $SECONDS -ge "$deadline" ]; then
            not_blank "$2"
            return 1
        fi
        sleep 1
    done
}

# stop_session: ends the program (if still running) and the display, by their process ids.
stop_session() {
    if [ -n "${APP_PID:-}" ] && kill -0 "$APP_PID" 2>/dev/null; then
        kill "$APP_PID" 2>/dev/null || true
        wait "$APP_PID" 2>/dev/null || true
    fi
    if [ -n "${XVFB_PID:-}" ] && kill -0 "$XVFB_PID" 2>/dev/null; then
        kill "$XVFB_PID" 2>/dev/null || true
        wait "$XVFB_PID" 2>/dev/null || true
    fi
}
