// The OP-1 export: one drum kit AIFF per selected Multi-Sample, its Key-Samples as slices on
// the kit's keys in key order.
#pragma once

#include "core/Records.h"
#include "export/ExportServices.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// Writes "<folder>/<baseName>.aif" for one selected Multi-Sample, or
// "<folder>/<baseName>-<ordinal %02d>.aif" for each of several. The audio must come out of the
// pipeline as 44.1 kHz mono 16 bit (the format's allowed settings); a layer with more than 24
// Key-Samples or more than 12 seconds of audio is refused. Returns 1, or 0 with the message
// after "TGexport_OP1():\n\n".
int TGexport_OP1(const std::string& folder, const std::string& baseName, Project* project,
                 const std::vector<int>& mslIndices, uint32_t settings, bool loopOnly,
                 std::string& message, const ExportServices& services);

} // namespace tg
