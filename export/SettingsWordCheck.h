// Whether an Export Settings word chosen outside the settings dialog (the CLI's --settings) is
// one the dialog could have produced for the format: one value per field, each allowed by the
// format's mask.
#pragma once

#include "export/ExportFormats.h"

#include <cstdint>
#include <string>

namespace tg {

// Returns 1, or 0 with a message naming the first field that does not fit.
int checkSettingsWord(const ExportFormatInfo& format, const std::string& menuText, uint32_t word,
                      std::string& message);

} // namespace tg
