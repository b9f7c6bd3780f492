# Screenshot of the device docks, for scripts/screenshots.sh (which sources
# scripts/lib/desktop-session.sh first: this uses its screenshot and not_blank).
#
# shoot_devpanels_screenshots WINDOW: with the main window WINDOW showing a project, the right
# side of the window (the Input/Output panel above the peak meter) as
# docs/screenshots/device-panels.png.
shoot_devpanels_screenshots() {
    local window=$1 whole
    whole=$(mktemp --suffix=.png)
    screenshot "$window" "$whole"
    convert "$whole" -gravity NorthEast -crop 345x632+0+24 +repage docs/screenshots/device-panels.png
    rm -f "$whole"
    not_blank docs/screenshots/device-panels.png
}
