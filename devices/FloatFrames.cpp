// Rounding and clipping float samples to 8, 16, 24 and 32-bit little-endian bytes.
#include "devices/FloatFrames.h"

#include <cmath>

namespace tg {

namespace {

// Full scale of a signed sample of `bits` bits.
double fullScale(int bits)
{
    switch (bits) {
    case 8:
        return 127.0;
    case 24:
        return 8388607.0;
    case 32:
        return 2147483647.0;
    default:
        return 32767.0;
    }
}

uint8_t* putSample(double value, int bits, uint8_t* out)
{
    if (!std::isfinite(value))
        value = 0.0;
    const double scale = fullScale(bits);
    double scaled = std::nearbyint(value * scale);
    if (scaled > scale)
        scaled = scale;
    if (scaled < -scale - 1.0)
        scaled = -scale - 1.0;
    const int64_t sample = static_cast<int64_t>(scaled);
    if (bits == 8) {
        *out++ = static_cast<uint8_t>(sample + 128);
        return out;
    }
    const int bytes = bits == 24 ? 3 : bits == 32 ? 4 : 2;
    const auto word = static_cast<uint64_t>(sample);
    for (int i = 0; i < bytes; ++i)
        *out++ = static_cast<uint8_t>(word >> (8 * i));
    return out;
}

} // namespace

void encodeFloatFrames(const float* left, const float* right, uint32_t frames, int channels,
                       int bits, uint8_t* out)
{
    for (uint32_t i = 0; i < frames; ++i) {
        if (channels == 1) {
            out = putSample(0.5 * (double(left[i]) + double(right[i])), bits, out);
        } else {
            out = putSample(left[i], bits, out);
            out = putSample(right[i], bits, out);
        }
    }
}

} // namespace tg
