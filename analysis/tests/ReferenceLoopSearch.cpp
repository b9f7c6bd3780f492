// Reference loop search: one sample difference at a time.
#include "analysis/tests/ReferenceLoopSearch.h"

#include "analysis/CentredCrossings.h"
#include "audiofile/ZeroCrossing.h"

#include <algorithm>
#include <cstdlib>

namespace tg::test {

namespace {

// The raw stored value used for comparison: 8-bit unsigned byte, 16-bit signed, 24-bit
// the signed value of its upper two bytes.
int32_t rawValue(const WaveFormat& format, const uint8_t* data, int64_t frame, int ch)
{
    const uint8_t* p = data + frame * format.nBlockAlign + ch * (format.wBitsPerSample / 8);
    switch (format.wBitsPerSample) {
    case 8:
        return p[0];
    case 16:
        return static_cast<int16_t>(p[0] | (p[1] << 8));
    default:
        return static_cast<int16_t>(p[1] | (p[2] << 8));
    }
}

} // namespace

int16_t referenceScore(const WaveFormat& format, const uint8_t* data, int64_t frames, int64_t s,
                       int64_t c, int64_t w)
{
    const int64_t n = std::min(frames, c + w) - c;
    int64_t d = 0;
    for (int64_t i = 0; i < n; ++i) {
        for (int ch = 0; ch < format.nChannels; ++ch) {
            const int64_t diff =
                std::llabs(rawValue(format, data, s + i, ch) - rawValue(format, data, c + i, ch));
            d += format.wBitsPerSample == 8 ? diff * 128 : diff;
        }
    }
    return static_cast<int16_t>(std::min<int64_t>(32000, d / n));
}

int32_t referenceLoopSearch(const WaveFormat& format, const uint8_t* data, size_t bytes, int32_t s,
                            int32_t a, int32_t b, int32_t w, int32_t* results, int k, bool snap,
                            bool stepping)
{
    for (int i = 0; i < k; ++i)
        results[i] = -1;
    if (data == nullptr || w < 1 || s < 0)
        return 0;
    const int64_t frames = static_cast<int64_t>(bytes / format.nBlockAlign);
    const int32_t byteCount = static_cast<int32_t>(frames * format.nBlockAlign);
    if (frames < 1)
        return 0;
    const CentredCrossings crossings(format, data, static_cast<size_t>(byteCount));
    const bool onCrossing = stepping && crossings.find(s, 0, kZeroCrossingEitherChannel) == s;

    std::vector<int16_t> score(static_cast<size_t>(frames), 32000);
    const int64_t c0 = std::max<int64_t>(a, int64_t{s} + w);
    const int64_t c1 = std::min<int64_t>(b, frames - w);
    for (int64_t c = c0; c < c1;) {
        score[static_cast<size_t>(c)] = referenceScore(format, data, frames, s, c, w);
        const int64_t next =
            onCrossing ? crossings.find(c + 1, 1, kZeroCrossingEitherChannel) : c + 1;
        if (next <= c)
            break;
        c = next;
    }

    const int64_t r = std::min<int64_t>(w, format.nSamplesPerSec / 10);
    int32_t first = 0;
    for (int pass = 0; pass < std::max(1, k); ++pass) {
        int16_t lowest = 32000;
        int64_t p = c1;
        for (int64_t c = c0; c < c1; ++c) {
            if (score[static_cast<size_t>(c)] <= lowest) {
                lowest = score[static_cast<size_t>(c)];
                p = c;
            }
        }
        p = std::max<int64_t>(p, 0);
        if (snap && crossings.find(p, 0, kZeroCrossingEitherChannel) > s)
            p = crossings.find(p, 0, kZeroCrossingEitherChannel);
        if (pass < k)
            results[pass] = static_cast<int32_t>(p);
        if (pass == 0)
            first = static_cast<int32_t>(p);
        for (int64_t c = std::max(c0, p - r); c < std::min(c1, p + r); ++c)
            score[static_cast<size_t>(c)] = 32000;
    }
    return first;
}

} // namespace tg::test
