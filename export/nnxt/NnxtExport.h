// The NN-XT export: a ".sxt" patch with one zone per Key-Sample, the WAV files beside it.
#pragma once

#include "core/Records.h"
#include "export/ExportServices.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// Writes "<folder>/<baseName>.sxt" and, beside it, one WAV file per Key-Sample of every
// selected Multi-Sample, named "<baseName>-<msi>-<ms>-<mn>-<n>.wav". Each Multi-Sample becomes
// a voice group whose zones answer its velocity range. Every Key-Sample runs through the export
// pipeline (`settings`, `loopOnly`). Returns 1, or 0 with the message after
// "TGexport_NNXT():\n\n".
int TGexport_NNXT(const std::string& folder, const std::string& baseName, Project* project,
                  const std::vector<int>& mslIndices, uint32_t settings, bool loopOnly,
                  std::string& message, const ExportServices& services);

} // namespace tg
