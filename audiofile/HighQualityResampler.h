// Band-limited resampling of 24-bit-scale channel arrays through libsoxr.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// Resamples each array of `channels` (values at 24-bit scale) from `sourceRate` to
// `destinationRate`, giving exactly `outputFrames` frames per channel, time-aligned with the
// input. Undithered and deterministic. Returns false with `error` set when libsoxr refuses.
bool resampleHighQuality(std::vector<std::vector<int32_t>>& channels, int32_t frames,
                         uint32_t sourceRate, uint32_t destinationRate, int32_t outputFrames,
                         std::string& error);

} // namespace tg
