// The frequency, depth and channel fields are checked; the on/off fields always fit.
#include "export/SettingsWordCheck.h"

#include "core/Message.h"
#include "export/ExportSettings.h"

namespace tg {

int checkSettingsWord(const ExportFormatInfo& format, const std::string& menuText, uint32_t word,
                      std::string& message)
{
    using namespace exportbits;
    static const struct {
        uint32_t mask;
        const char* name;
    } kFields[] = {
        {kFrequencyMask, "sample rate"},
        {kDepthMask, "bit depth"},
        {kChannelsMask, "channels"},
    };
    for (const auto& field : kFields) {
        const uint32_t value = word & field.mask;
        const uint32_t allowed = format.allowedMask & field.mask;
        // Exactly one bit of the field, and one the format allows.
        if (value == 0 || (value & (value - 1)) != 0 || (value & allowed) == 0)
            return setMessage(message,
                              "The export settings 0x%08X do not suit \"%s\": its %s value 0x%X "
                              "is not one of the allowed 0x%X.",
                              word, menuText.c_str(), field.name, value, allowed);
    }
    return 1;
}

} // namespace tg
