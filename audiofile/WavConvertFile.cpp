// Rewriting a WAV file in place in another format: read, convert, write back.
#include "audiofile/SampleConverter.h"
#include "audiofile/WavFile.h"

namespace tg {

int convertWavFile(const std::string& path, const WaveFormat& destination, std::string& message)
{
    WaveFormat source;
    int32_t loopStart, loopEnd, rootKey, frames;
    if (!readWavHeader(path, source, loopStart, loopEnd, rootKey, frames, message))
        return 0;
    if (source.nSamplesPerSec == destination.nSamplesPerSec &&
        source.nChannels == destination.nChannels &&
        source.wBitsPerSample == destination.wBitsPerSample)
        return 1;

    std::vector<uint8_t> data;
    if (!readWav(path, source, data, message))
        return 0;
    WaveFormat target = destination;
    if (!convertSamples(data, source, target, nullptr, nullptr, ChannelMode::Mix,
                        ResampleMode::Average, &message))
        return 0;
    return writeWav(path, target, data, message);
}

} // namespace tg
