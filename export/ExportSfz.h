// The SFZ export: one SFZ text mapping the rendered Key-Samples, plus their WAV files.
#pragma once

#include "core/Records.h"
#include "export/ExportServices.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// Writes "<folder>/<baseName>-<ordinal>-<note>-<note name>.wav" per Key-Sample (with loop
// and root key in its smpl chunk) and "<folder>/<baseName>.<extension>" holding the
// regions. `releaseTime`/`attackTime` are the envelope times of release regions (seconds).
// Returns 1, or 0 with the message after "TGexport_DimensionSFZ():\n\n".
int TGexport_DimensionSFZ(const std::string& folder, const std::string& baseName,
                          const std::string& extension, Project* project,
                          const std::vector<int>& mslIndices, uint32_t settings, double releaseTime,
                          double attackTime, std::string& message, const ExportServices& services);

} // namespace tg
