// Wrap steps of a heard loop.
#include "tests/e2e/LoopWraps.h"

#include "analysis/LoopQuality.h"

#include <algorithm>
#include <cmath>

namespace tg::test {

LoopWraps measureLoopWraps(const std::vector<double>& played, int64_t loopStart, int64_t loopEnd,
                           int64_t until)
{
    LoopWraps result;
    const int64_t length = loopEnd + 1 - loopStart;
    if (loopStart < 1 || length < 2 || until > int64_t(played.size()))
        return result;
    std::vector<double> steps;
    double loopPeak = 0.0;
    for (int64_t i = loopStart; i < loopEnd; ++i) {
        steps.push_back(std::fabs(played[size_t(i + 1)] - played[size_t(i)]));
        loopPeak = std::max(loopPeak, std::fabs(played[size_t(i)]));
    }
    std::nth_element(steps.begin(), steps.begin() + std::ptrdiff_t(steps.size() / 2), steps.end());
    const double median = steps[steps.size() / 2];
    // The step the audio takes into the loop start the first time, from the note part.
    const double entry = played[size_t(loopStart)] - played[size_t(loopStart - 1)];
    for (int64_t wrap = loopEnd + 1; wrap < until; wrap += length) {
        const double step = played[size_t(wrap)] - played[size_t(wrap - 1)];
        const double seam = std::fabs(step - entry);
        ++result.wraps;
        result.clickingWraps += isLoopClick(seam, median, loopPeak);
        result.worstRatio = std::max(result.worstRatio, median > 0.0 ? seam / median : 0.0);
    }
    return result;
}

} // namespace tg::test
