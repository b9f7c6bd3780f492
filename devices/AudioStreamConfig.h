// The configuration of one side (input or output) of the audio streams.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstdint>

namespace tg {

struct AudioStreamConfig {
    int32_t device = 0;        // PortAudio device index; negative = this side is not used
    int32_t channelLeft = -1;  // device channel of the first channel, -1 = not chosen
    int32_t channelRight = -1; // device channel of the second channel, -1 = not chosen
    int32_t sampleRate = 0;    // Hz
    int32_t bits = 0;          // 8, 16, 24 or 32
    int32_t channels = 0;      // 1 or 2
    float latency = -1.0f;     // seconds; negative = the device's default low latency
};

// Field by field, latency included: the test that decides whether streams are reopened.
inline bool sameConfig(const AudioStreamConfig& a, const AudioStreamConfig& b)
{
    return a.device == b.device && a.channelLeft == b.channelLeft &&
           a.channelRight == b.channelRight && a.sampleRate == b.sampleRate && a.bits == b.bits &&
           a.channels == b.channels && a.latency == b.latency;
}

// Bytes of one frame of this side, 0 when bits or channels are unset.
inline int32_t bytesPerFrame(const AudioStreamConfig& config)
{
    return config.bits / 8 * config.channels;
}

// The WAV format record of the bytes this side carries.
inline WaveFormat waveFormatOf(const AudioStreamConfig& config)
{
    return makeWaveFormat(static_cast<uint32_t>(config.sampleRate),
                          static_cast<uint16_t>(config.channels),
                          static_cast<uint16_t>(config.bits));
}

// Frames per callback buffer for a latency: round(latency x rate), and 512 whenever that is
// not a multiple of 64. Drivers behave best with such sizes, so a 10 ms latency at 44.1 kHz
// (441 frames) deliberately becomes 512. Zero stays zero: PortAudio then picks the size.
inline unsigned long framesPerBufferFor(double latencySeconds, int32_t sampleRate)
{
    double exact = latencySeconds * sampleRate;
    long frames = exact <= 0.0 ? 0 : static_cast<long>(exact + 0.5);
    if (frames % 64 != 0)
        frames = 512;
    return static_cast<unsigned long>(frames);
}

} // namespace tg
