# Screenshots of the project wizard and the VST Host window, for scripts/screenshots.sh (which
# sources scripts/lib/desktop-session.sh first: this uses its wait_for_window, press_keys and
# screenshot_when_painted).
#
# shoot_wizard_screenshots WINDOW: right after the main window WINDOW has appeared with fresh
# preferences, which open the project wizard at start: docs/screenshots/project-wizard.png
# (its first page, then cancelled) and docs/screenshots/vst-host.png (Extras -> VST Host with
# the General MIDI SoundFont chosen, then cancelled).

shoot_wizard_screenshots() {
    local window=$1 wizard host
    wizard=$(wait_for_window "Project Wizard" 60)
    screenshot_when_painted "$wizard" docs/screenshots/project-wizard.png 60
    press_keys "$wizard" Escape

    # The window starts from the instrument kept for recording.
    printf '\n[VstHostWidget]\nPluginPath=/usr/share/sounds/sf2/FluidR3_GM.sf2?bank=0&preset=19\n' \
        >>"$TONEGRABBER_HOME/Tonegrabber.ini"
    press_keys "$window" ctrl+h
    host=$(wait_for_window "VST Host" 60)
    screenshot_when_painted "$host" docs/screenshots/vst-host.png 60
    press_keys "$host" Escape
    not_blank docs/screenshots/project-wizard.png
    not_blank docs/screenshots/vst-host.png
}
