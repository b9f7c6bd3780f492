// Decoding of the Export Settings word into the target format of the converter.
#include "export/ExportSettings.h"

namespace tg {

uint32_t channelIndex(uint32_t word)
{
    const uint32_t value = (word & exportbits::kChannelsMask) - exportbits::kChannelsStereo;
    return (value << 15) | (value >> 17);
}

uint32_t targetRate(uint32_t word, uint32_t sourceRate)
{
    switch (word & exportbits::kFrequencyMask) {
    case exportbits::kFrequency11025:
        return 11025;
    case exportbits::kFrequency22050:
        return 22050;
    case exportbits::kFrequency44100:
        return 44100;
    case exportbits::kFrequency48000:
        return 48000;
    case exportbits::kFrequency96000:
        return 96000;
    case exportbits::kFrequency192000:
        return 192000;
    default:
        return sourceRate;
    }
}

uint16_t targetBits(uint32_t word, uint16_t sourceBits)
{
    switch (word & exportbits::kDepthMask) {
    case exportbits::kDepth8:
        return 8;
    case exportbits::kDepth16:
        return 16;
    case exportbits::kDepth24:
        return 24;
    default:
        return sourceBits;
    }
}

uint16_t targetChannels(uint32_t word, uint16_t sourceChannels)
{
    // Valid indices 0, 1, 3 and 7 are the bits of 139.
    const uint32_t index = channelIndex(word);
    if (index >= 8 || ((139u >> index) & 1u) == 0)
        return sourceChannels;
    return index == 0 ? 2 : 1;
}

ChannelMode targetChannelMode(uint32_t word)
{
    switch (channelIndex(word)) {
    case 3:
        return ChannelMode::Left;
    case 7:
        return ChannelMode::Right;
    default:
        return ChannelMode::Mix;
    }
}

ResampleMode targetResampling(uint32_t word)
{
    return (word & exportbits::kResamplingMask) == exportbits::kResamplingHigh
               ? ResampleMode::HighQuality
               : ResampleMode::Average;
}

WaveFormat targetFormat(uint32_t word, const WaveFormat& source)
{
    return makeWaveFormat(targetRate(word, source.nSamplesPerSec),
                          targetChannels(word, source.nChannels),
                          targetBits(word, source.wBitsPerSample));
}

} // namespace tg
