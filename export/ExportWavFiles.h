// The simplest exports: one WAV or AIFF file per rendered note part (and release part).
#pragma once

#include "core/Records.h"
#include "export/ExportServices.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// Writes every present and recorded Key-Sample of the selected Multi-Samples as
// "<folder>/<expanded template>.wav" (and "... - release.wav") with its loop and root key.
// Returns 1, or 0 with the message after "TGexport_WavFiles():\n\n".
int TGexport_WavFiles(const std::string& folder, const std::string& nameTemplate, Project* project,
                      const std::vector<int>& mslIndices, uint32_t settings, bool loopOnly,
                      std::string& message, const ExportServices& services);

// The same through the AIFF writer: "<folder>/<expanded template>.aif".
int TGexport_Aiff(const std::string& folder, const std::string& nameTemplate, Project* project,
                  const std::vector<int>& mslIndices, uint32_t settings, bool loopOnly,
                  std::string& message, const ExportServices& services);

} // namespace tg
