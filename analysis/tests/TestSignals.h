// Synthetic recordings for the analysis tests: format, frames and sample values.
#pragma once

#include "analysis/PcmSamples.h"
#include "audiofile/WaveFormat.h"

#include <cmath>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <random>
#include <vector>

namespace tg::test {

// A recording of `frames` frames whose sample (frame, channel) is `value(frame, channel)`
// in the format's own scale (clipped).
inline std::vector<uint8_t> makeSignal(const WaveFormat& format, int64_t frames,
                                       const std::function<int32_t(int64_t, int)>& value)
{
    const int width = pcm::bytesPerSample(format);
    std::vector<uint8_t> data(static_cast<size_t>(frames) * format.nBlockAlign);
    for (int64_t f = 0; f < frames; ++f)
        for (int ch = 0; ch < format.nChannels; ++ch)
            pcm::writeSample(data.data() + f * format.nBlockAlign + ch * width, width,
                             value(f, ch));
    return data;
}

// Uniform random bytes: every sample value of every width is possible.
inline std::vector<uint8_t> randomBytes(size_t count, uint32_t seed)
{
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> byte(0, 255);
    std::vector<uint8_t> data(count);
    for (uint8_t& b : data)
        b = static_cast<uint8_t>(byte(rng));
    return data;
}

// A sine of `amplitude` (own scale) and `period` frames, the right channel phase-shifted.
inline std::vector<uint8_t> makeSine(const WaveFormat& format, int64_t frames, double amplitude,
                                     double period)
{
    return makeSignal(format, frames, [&](int64_t f, int ch) {
        return static_cast<int32_t>(amplitude * std::sin(2.0 * M_PI * f / period + ch * 0.7));
    });
}

inline int32_t sampleOf(const WaveFormat& format, const std::vector<uint8_t>& data, int64_t frame,
                        int channel)
{
    return pcm::sampleAt(format, data.data(), frame, channel);
}

// Channel `channel` of the given frames, to compare several frames in one check.
inline std::vector<int32_t> samplesAt(const WaveFormat& format, const std::vector<uint8_t>& data,
                                      std::initializer_list<int64_t> frames, int channel = 0)
{
    std::vector<int32_t> values;
    for (int64_t f : frames)
        values.push_back(sampleOf(format, data, f, channel));
    return values;
}

} // namespace tg::test
