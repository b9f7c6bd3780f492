// Block peaks for the input level meter.
#include "devices/PeakLevel.h"

#include <cstdint>
#include <cstring>

namespace tg {

namespace {

// One sample widened to a signed 64-bit value, and the full-scale value of its size.
int64_t sampleAt(const uint8_t* bytes, int bits)
{
    switch (bits) {
    case 8:
        return static_cast<int8_t>(bytes[0]);
    case 16: {
        int16_t value;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
    case 24: {
        // PortAudio's packed 24-bit samples are in native (little-endian) byte order; put
        // them into the top three bytes of a 32-bit value.
        uint32_t top =
            (uint32_t(bytes[0]) << 8) | (uint32_t(bytes[1]) << 16) | (uint32_t(bytes[2]) << 24);
        return static_cast<int32_t>(top);
    }
    default: {
        int32_t value;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
    }
}

double fullScale(int bits)
{
    switch (bits) {
    case 8:
        return 127.0;
    case 16:
        return 32767.0;
    default:
        return 2147483647.0;
    }
}

} // namespace

void blockPeaks(const void* input, unsigned long frames, int channels, int bits, float& first,
                float& second)
{
    pickedBlockPeaks(input, frames, channels, bits, 0, channels >= 2 ? 1 : -1, first, second);
}

void pickedBlockPeaks(const void* input, unsigned long frames, int streamChannels, int bits,
                      int firstChannel, int secondChannel, float& first, float& second)
{
    first = 0.0f;
    second = 0.0f;
    if (input == nullptr || streamChannels < 1 || firstChannel < 0 ||
        firstChannel >= streamChannels || secondChannel >= streamChannels ||
        (bits != 8 && bits != 16 && bits != 24 && bits != 32))
        return;
    const auto* bytes = static_cast<const uint8_t*>(input);
    const int sampleBytes = bits / 8;
    const double scale = fullScale(bits);
    const int picked[2] = {firstChannel, secondChannel};
    const int count = secondChannel >= 0 ? 2 : 1;
    int64_t peak[2] = {0, 0};
    for (unsigned long frame = 0; frame < frames; ++frame) {
        const uint8_t* frameBytes = bytes + frame * size_t(streamChannels) * sampleBytes;
        for (int i = 0; i < count; ++i) {
            int64_t value = sampleAt(frameBytes + picked[i] * sampleBytes, bits);
            if (value > peak[i])
                peak[i] = value;
        }
    }
    first = static_cast<float>((peak[0] > scale ? scale : double(peak[0])) / scale);
    if (count == 2)
        second = static_cast<float>((peak[1] > scale ? scale : double(peak[1])) / scale);
}

} // namespace tg
