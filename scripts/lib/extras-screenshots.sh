# Screenshots of the import window and the preset manager, for scripts/screenshots.sh (which
# sources scripts/lib/desktop-session.sh first: this uses its wait_for_window, press_keys and
# screenshot).
#
# prepare_extras_screenshots CLI WORK: before the program starts: a folder of samples to import
# (two velocity layers named by tags, one file without a note) and three presets.
# shoot_extras_screenshots WINDOW WORK: with the program's main window WINDOW showing a project
# of two Multi-Samples: docs/screenshots/import-audio.png and docs/screenshots/preset-manager.png.

prepare_extras_screenshots() {
    local cli=$1 work=$2 note
    mkdir -p "$work/Cello samples"
    for note in C2 E2 G2 C3 E3 G3; do
        sox -n -r 44100 -c 2 -b 16 "$work/Cello samples/Cello $note v1.wav" synth 0.5 pluck "$note"
    done
    for note in C2 E2 G2; do
        sox -n -r 48000 -c 2 -b 24 "$work/Cello samples/Cello $note v2.wav" synth 0.5 pluck "$note"
    done
    sox -n -r 44100 -c 1 -b 16 "$work/Cello samples/Bow noise.wav" synth 0.3 pinknoise
    local project
    project=$(find "$work" -maxdepth 2 -name '*.TGprj' | sort | head -n1)
    "$cli" preset save "Strings 2 layers" "$project" >/dev/null
    "$cli" preset save "Synth pad, 61 keys" "$project" >/dev/null
    "$cli" preset save "Drum kit one-shots" "$project" >/dev/null
}

shoot_extras_screenshots() {
    local window=$1 work=$2 dialog chooser
    press_keys "$window" ctrl+i
    dialog=$(wait_for_window "Import Audio Files" 60)
    press_keys "$dialog" alt+f # "Add Folder..."
    chooser=$(wait_for_window "Select a Folder of Audio Files" 60)
    sleep 1
    xdotool windowfocus --sync "$chooser"
    xdotool type --delay 5 "$work/Cello samples"
    xdotool key Return
    sleep 2
    screenshot "$dialog" docs/screenshots/import-audio.png
    press_keys "$dialog" Escape

    press_keys "$window" ctrl+p
    dialog=$(wait_for_window "Preset Manager" 60)
    sleep 1
    screenshot "$dialog" docs/screenshots/preset-manager.png
    press_keys "$dialog" Escape
}
