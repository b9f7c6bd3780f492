// Feeds arbitrary bytes to the preferences reader: it must stay inside the buffer, and a
// record it accepted must serialise to a file image that reads back to the same image.
#include "core/Preferences.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    tg::Preferences prefs;
    if (!tg::parsePreferences(data, size, prefs))
        return 0;
    const std::vector<uint8_t> image = tg::serializePreferences(prefs);
    if (image.size() != tg::kPreferencesFileSize)
        std::abort();
    tg::Preferences again;
    if (!tg::parsePreferences(image.data(), image.size(), again) ||
        tg::serializePreferences(again) != image)
        std::abort();
    return 0;
}
