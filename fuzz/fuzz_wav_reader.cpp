// Fuzzes the full WAV reader: the audio bytes it returns must fit the file it read.
#include "audiofile/WavFile.h"
#include "fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    tg::WaveFormat format;
    std::vector<uint8_t> audio;
    std::string message;
    const int ok = tg::readWav(tg::fuzz::pathWithBytes(data, size), format, audio, message);
    if (!ok && (message.empty() || !audio.empty()))
        __builtin_trap();
    if (ok && audio.size() > size)
        __builtin_trap();
    return 0;
}
