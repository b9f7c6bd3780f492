// The wraps of a loop as it was heard: each wrap's step against the loop click rule.
#pragma once

#include <cstdint>
#include <vector>

namespace tg::test {

struct LoopWraps {
    int wraps = 0;
    int clickingWraps = 0;   // wraps whose seam step passes it
    double worstRatio = 0.0; // largest seam step over the median step
};

// `played` holds a loop whose first pass runs from `loopStart` to `loopEnd` (inclusive) and
// that then repeats up to `until`. A wrap clicks when its seam step, the part of its step
// that the audio does not take itself where it first enters the loop, passes the rule.
LoopWraps measureLoopWraps(const std::vector<double>& played, int64_t loopStart, int64_t loopEnd,
                           int64_t until);

} // namespace tg::test
