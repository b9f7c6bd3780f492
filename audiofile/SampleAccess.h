// Reading one sample of the in-memory WAV byte image as a signed value.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstdint>

namespace tg {

// Sample `channel` of `frame` at its own scale: 8-bit as x - 128, 16-bit and 24-bit signed.
// A mono format returns its single channel for either channel index.
inline int32_t sampleAt(const WaveFormat& format, const uint8_t* data, int32_t frame, int channel)
{
    const int bytes = format.wBitsPerSample / 8;
    const int ch = format.nChannels == 2 ? channel : 0;
    const uint8_t* p = data + static_cast<int64_t>(frame) * format.nBlockAlign + ch * bytes;
    switch (bytes) {
    case 1:
        return static_cast<int32_t>(p[0]) - 128;
    case 2:
        return static_cast<int16_t>(static_cast<uint16_t>(p[0] | (p[1] << 8)));
    case 3: {
        uint32_t u = static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
                     (static_cast<uint32_t>(p[2]) << 16);
        return static_cast<int32_t>(u << 8) >> 8;
    }
    default:
        return 0;
    }
}

// Same, scaled to 24-bit range: 16-bit values shifted left 8, 8-bit values left 16.
inline int32_t sampleAt24(const WaveFormat& format, const uint8_t* data, int32_t frame, int channel)
{
    const int32_t v = sampleAt(format, data, frame, channel);
    switch (format.wBitsPerSample) {
    case 8:
        return v * 65536;
    case 16:
        return v * 256;
    default:
        return v;
    }
}

} // namespace tg
