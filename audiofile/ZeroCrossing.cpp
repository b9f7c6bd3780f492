// The zero-crossing finder: either-channel and both-channels rules, three directions.
#include "audiofile/ZeroCrossing.h"

#include "audiofile/SampleAccess.h"

#include <cstdlib>

namespace tg {

namespace {

bool crosses(int32_t a, int32_t b)
{
    return (a > 0 && b < 0) || (a < 0 && b > 0);
}
bool crossesOrTouches(int32_t a, int32_t b)
{
    return a == 0 || b == 0 || crosses(a, b);
}

// Tests the pair (q, q + d); returns the frame found, or -1 when the pair holds no crossing.
int32_t testPair(const WaveFormat& f, const uint8_t* data, int32_t q, int32_t d, int rule)
{
    const int32_t n = q + d;
    const int32_t l0 = sampleAt(f, data, q, 0), r0 = sampleAt(f, data, q, 1);
    const int32_t l1 = sampleAt(f, data, n, 0), r1 = sampleAt(f, data, n, 1);
    if (rule == kZeroCrossingBothChannels) {
        if (l0 == 0 && r0 == 0)
            return q;
        if (l1 == 0 && r1 == 0)
            return n;
        if (crossesOrTouches(l0, l1) && crossesOrTouches(r0, r1)) {
            const int64_t s0 = std::llabs(l0) + std::llabs(r0);
            const int64_t s1 = std::llabs(l1) + std::llabs(r1);
            return s1 < s0 ? n : q;
        }
        return -1;
    }
    if (l0 == 0 || r0 == 0)
        return q;
    if (l1 == 0 || r1 == 0)
        return n;
    if (crosses(l0, l1))
        return std::abs(l1) < std::abs(l0) ? n : q;
    if (crosses(r0, r1))
        return std::abs(r1) < std::abs(r0) ? n : q;
    return -1;
}

int32_t search(const WaveFormat& f, const uint8_t* data, int32_t frames, int32_t position,
               int32_t d, int rule)
{
    int32_t q = position < 0 ? 0 : (position > frames - 1 ? frames - 1 : position);
    for (;;) {
        const int32_t next = q + d;
        if (next < 0 || next > frames - 1)
            return q;
        const int32_t found = testPair(f, data, q, d, rule);
        if (found >= 0)
            return found;
        q = next;
    }
}

} // namespace

int32_t findZeroCrossing(const WaveFormat* format, const uint8_t* data, int32_t byteCount,
                         int32_t position, int direction, int channelRule)
{
    if (!format || !data || byteCount <= 0 || format->nBlockAlign == 0)
        return 0;
    const int bytes = format->wBitsPerSample / 8;
    if (bytes < 1 || bytes > 3 || format->nBlockAlign < format->nChannels * bytes)
        return 0;
    const int32_t frames = byteCount / format->nBlockAlign;
    if (frames < 1)
        return 0;
    if (direction == 0) {
        const int32_t back = search(*format, data, frames, position, -1, channelRule);
        const int32_t fwd = search(*format, data, frames, position, +1, channelRule);
        const int64_t p = position;
        return std::llabs(p - fwd) < std::llabs(p - back) ? fwd : back;
    }
    return search(*format, data, frames, position, direction > 0 ? 1 : -1, channelRule);
}

} // namespace tg
