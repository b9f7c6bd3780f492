// Starting an export from a menu text: format dispatch, settings word, free-space check.
// The GUI and the CLI both come through here.
#pragma once

#include "core/Records.h"
#include "export/ExportServices.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

struct ExportRequest {
    std::string menuText; // a text of the export menu, e.g. "SoundFont2 (*.sf2)"
    // WAV/AIFF sets: the destination folder. Single-file formats: the file to write
    // ("<folder>/<name>.<ext>"; without an extension the format's own is added).
    std::string destination;
    std::string nameTemplate;    // WAV/AIFF sets; empty means the long default
    std::vector<int> mslIndices; // empty means every Multi-Sample of the Project
    bool hasSettings = false;    // false: the format's default word with its corrections
    uint32_t settings = 0;
    // "Loop all Samples (use Loop points if available)": offered by the template formats
    // only; the WAV, AIFF, SFZ and SoundFont exports have no such choice.
    bool loopAll = false;
};

// Runs the export the menu text names. Returns 1, or 0 with the exporter's (or the
// free-space check's) message.
int runExport(Project& project, const ExportRequest& request, const ExportServices& services,
              std::string& message);

// The settings word an export with `request` uses.
uint32_t requestSettingsWord(const ExportRequest& request);

} // namespace tg
