// Fuzzes the AIFF/AIFF-C reader: results must be consistent with the format it reports.
#include "audiofile/AiffFile.h"
#include "fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    tg::AiffContents contents;
    std::string message;
    const int ok = tg::readAiff(tg::fuzz::pathWithBytes(data, size), contents, message);
    if (!ok && message.empty())
        __builtin_trap();
    if (ok) {
        const tg::WaveFormat& f = contents.format;
        if (f.nBlockAlign == 0 || contents.data.size() % f.nBlockAlign != 0 ||
            contents.data.size() > size)
            __builtin_trap();
    }
    return 0;
}
