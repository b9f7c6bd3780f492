# Screenshots of the record dialog during an offline run and of the semi-automatic check
# dialog, for scripts/screenshots.sh (which sources scripts/lib/desktop-session.sh first and
# has the display running: this uses its start_program, wait_for_window, press_keys and
# screenshot_when_painted).
#
# shoot_recgui_screenshots BUILD_DIR WORK: with no program running, makes two Projects that
# sample the hosted General MIDI SoundFont (no audio output, so the dialog bounces offline),
# opens each in the program and saves docs/screenshots/record-dialog.png (mid-run) and
# docs/screenshots/check-take.png; ends the program it started.

recgui_project() {
    local cli=$1 path=$2 data=$3
    shift 3
    mkdir -p "$data" "$(dirname "$path")"
    "$cli" new "$path" --data-path "$data" --plugin --audio-in "-Vst Plugin-" \
        --midi-out "-Vst Plugin-" --format "44.1KHz, Mono, 16bit" --keys 37 "$@" >/dev/null
}

recgui_quit_program() {
    local window=$1 question
    press_keys "$window" ctrl+q
    question=$(wait_for_window "Quit" 60)
    press_keys "$question" Return
    wait "$APP_PID" || true
    APP_PID=
}

shoot_recgui_screenshots() {
    local build=$1 work=$2 window dialog check
    local cli=$build/cli/tonegrabber-cli app=$build/app/tonegrabber
    local font=${TG_SOUNDFONT:-/usr/share/sounds/sf2/FluidR3_GM.sf2}
    recgui_project "$cli" "$work/rec/Grand Piano.TGprj" "$work/rec/data" --step 1 \
        --note-length 2.5 --release-length 1 --autoloop intermediate
    recgui_project "$cli" "$work/semi/Warm Pad.TGprj" "$work/semi/data" --step 12 \
        --note-length 1.5 --release-length 0.5 --semi
    # The program starts with these projects, not with the start-up wizard.
    "$cli" set prefs_showPrjWizardAtStartup=0 >/dev/null
    # The hosted instrument the dialog bounces from: the choice the CLI and the program keep.
    printf '\n[VstHostWidget]\nPluginPath=%s?preset=0\n' "$font" >>"$TONEGRABBER_HOME/Tonegrabber.ini"

    start_program "$app" "$work/rec/Grand Piano.TGprj"
    window=$(wait_for_window "Tonegrabber 6.*" 300)
    press_keys "$window" alt+r # "Record selected Project"
    dialog=$(wait_for_window "Record selected Project \\(Automatic Mode\\)" 60)
    press_keys "$dialog" Return # "Start Recording"
    dialog=$(wait_for_window "Record selected Project \\(Automatic Mode\\) - 37 keys \\([4-9] done\\)" 300)
    screenshot_when_painted "$dialog" docs/screenshots/record-dialog.png 60
    press_keys "$dialog" Escape # closing stops the run; the finished takes stay
    recgui_quit_program "$window"

    start_program "$app" "$work/semi/Warm Pad.TGprj"
    window=$(wait_for_window "Tonegrabber 6.*" 300)
    press_keys "$window" alt+shift+r # "Semi-automatic Record selected Project"
    dialog=$(wait_for_window "Record selected Project \\(Semi Automatic Mode\\)" 60)
    press_keys "$dialog" Return # "Start Recording": the first key waits
    sleep 1
    press_keys "$dialog" Return # "Start Countdown": the take is bounced and shown for checking
    check=$(wait_for_window "Check recorded Keysample" 120)
    xdotool windowfocus --sync "$check"
    xdotool type --delay 5 "Pad C2 soft attack"
    screenshot_when_painted "$check" docs/screenshots/check-take.png 60
    press_keys "$check" Return # "Keep and record next"
    press_keys "$dialog" Escape
    recgui_quit_program "$window"

    for png in docs/screenshots/record-dialog.png docs/screenshots/check-take.png; do
        not_blank "$png"
        echo "screenshots: $png ($(identify -format '%wx%h' "$png"))"
    done
}
