// Threshold search: noise reference from the silence region, then a five-frame onset test.
#include "analysis/ThresholdSearch.h"

#include "analysis/PcmSamples.h"

#include <algorithm>
#include <cstdlib>

namespace tg {

namespace {

using namespace pcm;

// Samples enter the threshold test with 8-bit data lifted to 16-bit scale so that one
// precision setting means the same for every format.
inline int64_t levelSample(const WaveFormat& format, const uint8_t* data, int64_t frame, int ch)
{
    const int32_t v = sampleAt(format, data, frame, ch);
    return format.wBitsPerSample == 8 ? static_cast<int64_t>(v) * 256 : v;
}

} // namespace

int64_t thresholdReferenceLevel(const WaveFormat& format, const uint8_t* data, int64_t frames,
                                int32_t windowStart, int32_t windowEnd)
{
    if (frames < 5)
        return 0;
    const int64_t last = frames - 5; // the last frame whose five-frame mean stays inside
    const int64_t a = std::clamp<int64_t>(windowStart, 0, last);
    // At least 50 ms of reference even when the silence markers sit closer together.
    int64_t b =
        std::max<int64_t>(a + format.nSamplesPerSec / 20, std::min<int64_t>(last, windowEnd));
    b = std::min(b, last);

    int64_t level = 0;
    for (int ch = 0; ch < format.nChannels; ++ch) {
        for (int64_t k = a; k <= b; ++k) {
            int64_t sum = 0;
            for (int j = 0; j < 5; ++j)
                sum += std::llabs(levelSample(format, data, k + j, ch));
            level = std::max(level, sum / 5);
        }
    }
    return level;
}

int32_t thresholdSearch(const WaveFormat* format, const uint8_t* data, size_t bytes,
                        int32_t windowStart, int32_t windowEnd, int32_t start, int direction,
                        double precision)
{
    if (format == nullptr || data == nullptr || !isSupportedFormat(*format))
        return 0;
    const int64_t frames = static_cast<int64_t>(bytes / format->nBlockAlign);
    if (frames < 2)
        return 0;

    const int64_t reference =
        thresholdReferenceLevel(*format, data, frames, windowStart, windowEnd);
    const double p = std::clamp(precision, 0.01, 1.0);
    const int d = direction == 1 ? 1 : -1;

    // A channel qualifies at q when all five frames q, q+d, .. q+4d rise above the reference.
    auto qualifies = [&](int64_t q, int ch) {
        for (int j = 0; j < 5; ++j) {
            const int64_t v = std::llabs(levelSample(*format, data, q + j * d, ch));
            if (static_cast<int64_t>(static_cast<double>(v) * p) <= reference)
                return false;
        }
        return true;
    };

    int64_t result = d == 1 ? frames : -1; // ran off the data
    for (int64_t q = std::clamp<int64_t>(start, 0, frames - 1);
         q + 4 * d >= 0 && q + 4 * d < frames; q += d) {
        bool found = false;
        for (int ch = 0; ch < format->nChannels && !found; ++ch)
            found = qualifies(q, ch);
        if (found) {
            result = q - d;
            break;
        }
    }
    return static_cast<int32_t>(std::clamp<int64_t>(result, 0, frames - 1));
}

} // namespace tg
