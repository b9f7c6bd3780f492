// The Decent Sampler export: a ".dspreset" with its "Samples" folder, or both packed as a
// ".dslibrary" archive.
#pragma once

#include "core/Records.h"
#include "export/ExportServices.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// Writes "<folder>/<baseName>.dspreset" and one WAV file per note part and per release part
// into "<folder>/Samples" (created when missing). With `library` set, the same files go into
// the archive "<folder>/<baseName>.dslibrary" under the folder "<baseName>/" instead, and
// nothing else is left in `folder`. Every Key-Sample runs through the export pipeline
// (`settings`, `loopOnly`). Returns 1, or 0 with the message after
// "TGexport_DecentSampler():\n\n".
int TGexport_DecentSampler(const std::string& folder, const std::string& baseName, bool library,
                           Project* project, const std::vector<int>& mslIndices, uint32_t settings,
                           bool loopOnly, std::string& message, const ExportServices& services);

} // namespace tg
