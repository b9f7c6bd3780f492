// The SoundFont 2 export: one bank holding every rendered Key-Sample of the selection.
#pragma once

#include "core/Records.h"
#include "export/ExportServices.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// Writes "<folder>/<bankName>.<extension>". Returns 1, or 0 with the message after
// "TGexport_SoundFont2():\n\n"; a bank that could not be completed is deleted.
int TGexport_SoundFont2(const std::string& folder, const std::string& bankName,
                        const std::string& extension, Project* project,
                        const std::vector<int>& mslIndices, uint32_t settings, std::string& message,
                        const ExportServices& services);

} // namespace tg
