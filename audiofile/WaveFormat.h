// The audio format record of every audio function, named and ordered like WAVEFORMATEX.
#pragma once

#include <cstdint>

namespace tg {

// Audio in memory is always the WAV byte image: interleaved frames (left, right),
// little-endian, 8-bit unsigned (128 = zero), 16- and 24-bit signed (24-bit packed in 3 bytes).
struct WaveFormat {
    uint16_t wFormatTag = 1;         // 1 = integer PCM
    uint16_t nChannels = 2;          // 1 or 2
    uint32_t nSamplesPerSec = 44100; // Hz
    uint32_t nAvgBytesPerSec = 0;    // nSamplesPerSec * nBlockAlign
    uint16_t nBlockAlign = 0;        // bytes per frame = nChannels * wBitsPerSample / 8
    uint16_t wBitsPerSample = 16;    // 8, 16 or 24
    uint16_t cbSize = 0;             // always 0
};

// Recomputes nBlockAlign, nAvgBytesPerSec and cbSize from channels, rate and bits.
inline void completeWaveFormat(WaveFormat& format)
{
    format.nBlockAlign = static_cast<uint16_t>(format.nChannels * format.wBitsPerSample / 8);
    format.nAvgBytesPerSec = format.nSamplesPerSec * format.nBlockAlign;
    format.cbSize = 0;
}

inline WaveFormat makeWaveFormat(uint32_t rate, uint16_t channels, uint16_t bits)
{
    WaveFormat format;
    format.nSamplesPerSec = rate;
    format.nChannels = channels;
    format.wBitsPerSample = bits;
    completeWaveFormat(format);
    return format;
}

} // namespace tg
