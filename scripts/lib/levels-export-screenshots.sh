# Screenshots of the Normalize dialog and of the Export Settings dialog of a SoundFont export,
# for scripts/screenshots.sh (which sources scripts/lib/desktop-session.sh first).
#
# shoot_levels_export_screenshots WINDOW: with the program's main window WINDOW showing a
# project: docs/screenshots/normalize.png and docs/screenshots/export-settings.png.

shoot_levels_export_screenshots() {
    local window=$1 dialog
    press_keys "$window" ctrl+n
    dialog=$(wait_for_window "Normalize" 60)
    screenshot_when_painted "$dialog" docs/screenshots/normalize.png 60
    press_keys "$dialog" Escape

    # Through the menus by keyboard as a user would: Alt opens the menu bar, Import/Export is
    # the third menu, "Export selected Project as ..." its fifth entry, SoundFont2 the eighth
    # format.
    press_keys "$window" alt
    xdotool key --delay 200 Right Right Down Down Down Down Down Right \
        Down Down Down Down Down Down Down Return
    dialog=$(wait_for_window "Export Settings - SoundFont2 \\(\\*\\.sf2\\)" 60)
    screenshot_when_painted "$dialog" docs/screenshots/export-settings.png 60
    press_keys "$dialog" Escape
}
