// Starting an export from a menu text: format dispatch, settings word, free-space check.
// The GUI and the CLI both come through here.
#pragma once

#include "core/Message.h"
#include "core/Records.h"
#include "export/ExportFormats.h"
#include "export/ExportServices.h"
#include "export/ExportTemplateFormats.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

struct ExportRequest {
    std::string menuText; // a text of the export menu, e.g. "SoundFont2 (*.sf2)"
    // WAV/AIFF sets: the destination folder. Single-file formats (SFZ, SoundFont, Bitwig): the
    // file to write ("<folder>/<name>.<ext>"; without an extension the format's own is added).
    // Deluge, Quantum, Prophet-X: the root folder of the card or drive. Kronos: the folder that
    // gets the export folder and its script.
    std::string destination;
    std::string nameTemplate; // WAV/AIFF sets; empty means the long default
    // Empty means every Multi-Sample of the Project; for Deluge, which exports one layer, the
    // Project's current Multi-Sample.
    std::vector<int> mslIndices;
    bool hasSettings = false; // false: the format's default word with its corrections
    uint32_t settings = 0;
    // "Loop all Samples (use Loop points if available)": offered by the template formats
    // only; the WAV, AIFF, SFZ and SoundFont exports have no such choice.
    bool loopAll = false;
    ExportTagging tagging; // the template formats' names, places and texts
    int projectNumber = 0; // the Project's place in the Projects list (Kronos folder name)
};

// The checks the main window makes before a template export starts: the Prophet-X layer
// rules, then (Deluge, Prophet-X, Quantum) the loop-type notice, which refuses only when the
// Project mixes looped and unlooped Key-Samples and "Loop all Samples" was not chosen.
Result checkBeforeExport(const Project& project, const ExportRequest& request);

// Runs the export the menu text names. A settings word given with the request must hold
// only values the format allows; an export that would write no Key-Sample is refused.
// Returns 1, or 0 with the refusal's, the free-space check's or the exporter's message.
int runExport(Project& project, const ExportRequest& request, const ExportServices& services,
              std::string& message);

// True when the format has an exporter that can write it (menu entries without one, or whose
// layout is not known, start no export).
bool hasExporter(ExportFormat format);
// True for formats whose destination is a folder (sets, cards, drives) rather than a file.
bool exportsIntoFolder(ExportFormat format);
// True for the WAV and AIFF sets, whose file names come from the naming scheme.
bool usesNamingScheme(ExportFormat format);

// The settings word an export with `request` uses.
uint32_t requestSettingsWord(const ExportRequest& request);

} // namespace tg
