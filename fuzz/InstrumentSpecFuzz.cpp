// Fuzz target: the instrument choice reader takes any text from a command line or the INI
// file; whatever it accepts must read back unchanged from its own text form.
#include "devices/InstrumentSpec.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    tg::InstrumentSpec choice;
    std::string message;
    if (!tg::parseInstrumentSpec(text, choice, message)) {
        if (message.empty())
            std::abort(); // a refusal always says why
        return 0;
    }
    const std::string written = tg::instrumentSpecText(choice);
    tg::InstrumentSpec again;
    if (!tg::parseInstrumentSpec(written, again, message) ||
        tg::instrumentSpecText(again) != written)
        std::abort();
    return 0;
}
