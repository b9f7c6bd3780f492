// Finding where a note rises out of the noise measured in a silence region.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstddef>
#include <cstdint>

namespace tg {

// Measures the noise level in the reference window `windowStart`..`windowEnd` (frames;
// stretched to at least 50 ms) and steps from `start` in `direction` (+1 forward, anything
// else backward) until five consecutive frames of one channel, scaled by `precision`
// (clamped to 0.01..1), rise above it. Returns the frame just before that point; a search
// that runs off the data gives `frames` forward and -1 backward, and the result is always
// clamped into the data. Fewer than 2 frames, a null buffer or an unsupported format give 0.
int32_t thresholdSearch(const WaveFormat* format, const uint8_t* data, size_t bytes,
                        int32_t windowStart, int32_t windowEnd, int32_t start, int direction,
                        double precision);

// The noise reference level of that window: over every frame of the window and each
// channel, the largest truncated mean of five absolute sample values, at 16-bit scale for
// 8-bit data. Exposed for the tests of the window rules.
int64_t thresholdReferenceLevel(const WaveFormat& format, const uint8_t* data, int64_t frames,
                                int32_t windowStart, int32_t windowEnd);

} // namespace tg
