// The Montage export: one user (.X7U) or library (.X7L) file holding each selected
// Multi-Sample as a waveform, its Key-Samples as the waveform's key banks.
#pragma once

#include "core/Records.h"
#include "export/ExportServices.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// What the user does with the file, shown after the export (the CLI prints it).
constexpr const char* kMontageExportInformation =
    "The file holds the exported Multi-Samples as user waveforms only, without a Performance. "
    "Load it on the instrument, then choose each waveform in an Element of a Performance "
    "(one Element per velocity layer).\n\n";

enum class MontageFile { User, Library };

class MontageExporter {
  public:
    // Writes "<folder>/<baseName>.X7U" (User) or ".X7L" (Library).
    MontageExporter(Project& project, std::vector<int> mslIndices, std::string folder,
                    std::string baseName, MontageFile kind, uint32_t settings, bool loopOnly);

    // Creates the folder when missing and refuses at once, before rendering, when the file
    // cannot be written there. The audio must come out of the pipeline as 16 bit at 44.1 kHz,
    // mono or stereo; a Multi-Sample name must fit a waveform name. Returns 1, or 0 with the
    // message after "MontageExporter:\n\n"; the file is written whole or not at all.
    int run(const ExportServices& services, std::string& message);

  private:
    Project& project_;
    std::vector<int> mslIndices_;
    std::string folder_;
    std::string path_;
    uint32_t settings_;
    bool loopOnly_;
};

} // namespace tg
