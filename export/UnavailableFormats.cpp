// The reasons behind the disabled entries; each format's note in its folder says what is known.
#include "export/UnavailableFormats.h"

namespace tg {

const char* exportUnavailableReason(ExportFormat format)
{
    switch (format) {
    case ExportFormat::HALion:
    case ExportFormat::Blofeld:
        return "The layout of the HALion XML sample map (which Spectre also imports for the "
               "Blofeld) is not published, so this export is not available.";
    case ExportFormat::Microsampler:
        return "The Microsampler bank (.msmpl_bank) is a binary format without a published "
               "description, so this export is not available.";
    default:
        return nullptr;
    }
}

} // namespace tg
