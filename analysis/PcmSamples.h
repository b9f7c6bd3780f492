// Reading and writing single samples of the WAV byte image for the analysis functions.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstddef>
#include <cstdint>

namespace tg::pcm {

// Bytes per sample of one channel: 1, 2 or 3; 0 for a width the analysis does not handle.
inline int bytesPerSample(const WaveFormat& format)
{
    switch (format.wBitsPerSample) {
    case 8:
        return 1;
    case 16:
        return 2;
    case 24:
        return 3;
    default:
        return 0;
    }
}

// True when the analysis can work on the format: integer PCM of 8, 16 or 24 bits, mono or
// stereo, with a block align that matches.
inline bool isSupportedFormat(const WaveFormat& format)
{
    const int width = bytesPerSample(format);
    return width != 0 && (format.nChannels == 1 || format.nChannels == 2) &&
           format.nBlockAlign == format.nChannels * width && format.nSamplesPerSec > 0;
}

// The signed value of the sample at `p` in its own scale: 8-bit with its offset of 128
// removed (-128..127), 16-bit as stored, 24-bit sign-extended (-8388608..8388607).
inline int32_t readSample(const uint8_t* p, int width)
{
    switch (width) {
    case 1:
        return static_cast<int32_t>(p[0]) - 128;
    case 2:
        return static_cast<int16_t>(static_cast<uint16_t>(p[0] | (p[1] << 8)));
    default: {
        const uint32_t raw = static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
                             (static_cast<uint32_t>(p[2]) << 16);
        return static_cast<int32_t>(raw << 8) >> 8;
    }
    }
}

// Largest and smallest value of a sample in its own scale.
inline int32_t sampleMax(int width)
{
    return width == 1 ? 127 : width == 2 ? 32767 : 8388607;
}
inline int32_t sampleMin(int width)
{
    return -sampleMax(width) - 1;
}

// Stores `value` (own scale, clipped to the sample's range) at `p`.
inline void writeSample(uint8_t* p, int width, int32_t value)
{
    const int32_t hi = sampleMax(width);
    const int32_t lo = sampleMin(width);
    value = value > hi ? hi : value < lo ? lo : value;
    switch (width) {
    case 1:
        p[0] = static_cast<uint8_t>(value + 128);
        break;
    case 2:
        p[0] = static_cast<uint8_t>(value & 0xff);
        p[1] = static_cast<uint8_t>((value >> 8) & 0xff);
        break;
    default:
        p[0] = static_cast<uint8_t>(value & 0xff);
        p[1] = static_cast<uint8_t>((value >> 8) & 0xff);
        p[2] = static_cast<uint8_t>((value >> 16) & 0xff);
        break;
    }
}

// Truncates a scaled sample toward zero, limited to a range every sample width clips from
// (a huge gain must not overflow the conversion).
inline int32_t truncateScaled(double value)
{
    constexpr double kLimit = 1073741824.0;
    value = value > kLimit ? kLimit : value < -kLimit ? -kLimit : value;
    return static_cast<int32_t>(value);
}

// The sample of channel `channel` (0 or 1; a mono buffer answers channel 1 with its only
// channel) in frame `frame`.
inline int32_t sampleAt(const WaveFormat& format, const uint8_t* data, int64_t frame, int channel)
{
    const int width = bytesPerSample(format);
    const int ch = format.nChannels == 1 ? 0 : channel;
    return readSample(data + static_cast<size_t>(frame) * format.nBlockAlign + ch * width, width);
}

} // namespace tg::pcm
