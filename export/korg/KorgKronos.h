// Korg Kronos export: a script (KSC) listing one multisample (KMP) per layer and channel, and
// one sample file (KSF) per zone.
#pragma once

#include "core/Records.h"
#include "export/templates/RenderedSample.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// Writes the Kronos files of the Multi-Samples `selection` (indices in export order; the menu
// passes every Multi-Sample of the Project) into the folder "%.6s%02d" (Project name, Project
// number `projectNumber`) under `destination`, with the script "<folder>.KSC" beside it.
// With the channel setting Stereo (0x20000) every Multi-Sample gets a left and a right KMP of
// mono KSFs; the depth setting 0x200 gives 8-bit samples, anything else 16-bit. `source`
// renders and converts each Key-Sample (the export pipeline: progress, abort, renderer,
// converter, gain); its failure ends the export with its message.
// Returns 1, or 0 with the message prefixed "TGexport_KORGKRONOS():\n\n".
int TGexport_KORGKRONOS(const std::string& destination, const Project& project,
                        const std::vector<int>& selection, uint32_t settings, int projectNumber,
                        KeySampleSource& source, std::string& message);

} // namespace tg
