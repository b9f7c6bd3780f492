// Per-sample gain on the WAV byte image (8-bit unsigned, 16/24-bit signed little-endian).
#include "export/BufferGain.h"

#include <algorithm>
#include <cmath>

namespace tg {

void applyBufferGain(const WaveFormat& format, std::vector<uint8_t>& data, double gain)
{
    if (gain == 1.0)
        return;
    const size_t bytes = format.wBitsPerSample / 8;
    if (bytes == 0 || bytes > 3)
        return;
    const double full = bytes == 1 ? 127.0 : bytes == 2 ? 32767.0 : 8388607.0;
    const size_t count = data.size() / bytes;
    for (size_t i = 0; i < count; ++i) {
        uint8_t* p = data.data() + i * bytes;
        int32_t value;
        if (bytes == 1) {
            value = int32_t(p[0]) - 128;
        } else if (bytes == 2) {
            value = int16_t(uint16_t(p[0] | (p[1] << 8)));
        } else {
            value = int32_t(uint32_t(p[0] << 8 | p[1] << 16 | uint32_t(p[2]) << 24)) >> 8;
        }
        const double scaled = std::trunc(value * gain);
        const int32_t out = int32_t(std::clamp(scaled, -full - 1.0, full));
        if (bytes == 1) {
            p[0] = uint8_t(out + 128);
        } else {
            p[0] = uint8_t(out & 0xFF);
            p[1] = uint8_t((out >> 8) & 0xFF);
            if (bytes == 3)
                p[2] = uint8_t((out >> 16) & 0xFF);
        }
    }
}

} // namespace tg
