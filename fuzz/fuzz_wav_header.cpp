// Fuzzes the WAV header reader: any bytes must end in success or a message, never a fault.
#include "audiofile/WavFile.h"
#include "fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    tg::WaveFormat format;
    int32_t loopStart, loopEnd, rootKey, frames;
    std::string message;
    const int ok = tg::readWavHeader(tg::fuzz::pathWithBytes(data, size), format, loopStart,
                                     loopEnd, rootKey, frames, message);
    if (!ok && message.empty())
        __builtin_trap(); // a failure must say why
    if (ok && frames < 0)
        __builtin_trap();
    return 0;
}
