// Fuzzes the import's sample file reader: what it accepts is whole frames with a loop and a
// root key inside their ranges.
#include "extras/SampleFile.h"
#include "fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    tg::SampleFileContents contents;
    std::string message;
    const int ok = tg::readSampleFile(tg::fuzz::pathWithBytes(data, size), contents, message);
    if (!ok && message.empty())
        __builtin_trap();
    if (ok) {
        const int32_t frames = contents.frames();
        if (contents.format.nBlockAlign == 0 || frames < 1 ||
            contents.data.size() != size_t(frames) * contents.format.nBlockAlign ||
            contents.data.size() > size)
            __builtin_trap();
        if (contents.hasLoop() &&
            !(contents.loopStart >= 0 && contents.loopStart < contents.loopEnd &&
              contents.loopEnd < frames))
            __builtin_trap();
        if (contents.rootKey < -1 || contents.rootKey > 127)
            __builtin_trap();
    }
    return 0;
}
