// The loop search written as plainly as possible, to check the fast one against.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tg::test {

// Score of candidate `c` for loop start `s` and window `w`, frame by frame and channel by
// channel.
int16_t referenceScore(const WaveFormat& format, const uint8_t* data, int64_t frames, int64_t s,
                       int64_t c, int64_t w);

// The whole search, step by step, without threads, vectors or cancellation.
int32_t referenceLoopSearch(const WaveFormat& format, const uint8_t* data, size_t bytes, int32_t s,
                            int32_t a, int32_t b, int32_t w, int32_t* results, int k, bool snap,
                            bool stepping);

} // namespace tg::test
