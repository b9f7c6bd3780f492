// 16-bit PCM in the WAV byte image (little-endian, interleaved), for tests that make or look
// into recordings of that one width.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <vector>

namespace tg::test {

// `frames` frames of `channels` samples; sample (frame, channel) is value(frame, channel).
inline std::vector<uint8_t> pcm16(size_t frames, int channels,
                                  const std::function<int16_t(size_t, int)>& value)
{
    std::vector<uint8_t> data;
    data.reserve(frames * size_t(channels) * 2);
    for (size_t frame = 0; frame < frames; ++frame)
        for (int channel = 0; channel < channels; ++channel) {
            const auto v = uint16_t(value(frame, channel));
            data.push_back(uint8_t(v & 0xFF));
            data.push_back(uint8_t(v >> 8));
        }
    return data;
}

// Sample number `index` (counted over all channels).
inline int16_t pcm16At(const std::vector<uint8_t>& data, size_t index)
{
    return int16_t(data[2 * index] | data[2 * index + 1] << 8);
}

// The largest magnitude of the first `count` samples, all when `count` is larger.
inline int pcm16Peak(const std::vector<uint8_t>& data, size_t count = SIZE_MAX)
{
    int peak = 0;
    for (size_t i = 0; i < std::min(count, data.size() / 2); ++i)
        peak = std::max(peak, std::abs(int(pcm16At(data, i))));
    return peak;
}

} // namespace tg::test
