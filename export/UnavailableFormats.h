// Export menu entries whose file layout could not be established from public descriptions:
// the menu shows them disabled with the reason as tool tip, and an export asked for anyway is
// refused with the same reason.
#pragma once

#include "export/ExportFormats.h"

namespace tg {

// Why `format` cannot be exported, or null when it can.
const char* exportUnavailableReason(ExportFormat format);

} // namespace tg
