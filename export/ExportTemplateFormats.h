// The template formats (Bitwig, Deluge, Prophet-X, Quantum) and the Korg Kronos writer run
// inside the common export pipeline.
#pragma once

#include "export/ExportPipeline.h"
#include "export/templates/TemplateExporter.h"

#include <string>
#include <vector>

namespace tg {

// What the tagging dialog asks before a template export.
struct ExportTagging {
    std::string userBank;    // Prophet-X: the folder under "px"
    std::string category;    // Prophet-X: the folder under the bank; Bitwig: the category text
    int programNumber = 2;   // Prophet-X: the program's number in its category
    std::string programName; // Prophet-X program; Deluge synth; Quantum map (empty: Project name)
    std::string folder;      // Quantum: the folder under "samples" (empty: Project name)
    std::string creator;     // the creator text
    std::vector<std::string> keywords;
};

// Hands the tagging texts and the "Loop all Samples" choice to a template exporter.
void applyTagging(TemplateExporter& exporter, const ExportTagging& tagging, bool loopAll);

// Runs `exporter` (built on `*job.project` and `job.mslIndices`) inside the pipeline: the
// session's preparation, then the export step rendering through the session and writing
// WAV files through `services.writeWav`, then the finishing step (zipping), with progress and
// the abort flag. The Project is restored on every exit. Returns 1, or 0 with the message.
int runTemplateExport(const ExportJob& job, TemplateExporter& exporter,
                      const ExportServices& services, std::string& message);

// TGexport_KORGKRONOS() inside the pipeline: the folder "%.6s%02d" (Project name,
// `projectNumber`) and its script go under `destination`.
int runKronosExport(const ExportJob& job, const std::string& destination, int projectNumber,
                    const ExportServices& services, std::string& message);

} // namespace tg
