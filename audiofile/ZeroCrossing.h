// Finding the zero crossing nearest to a frame, for loop points and note ends.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstdint>

namespace tg {

// Channel rule of the finder.
constexpr int kZeroCrossingEitherChannel = 0; // a crossing in any channel counts
constexpr int kZeroCrossingBothChannels = 1;  // both channels must cross between the same frames

// Searches from `position` in `direction` (-1 backward, +1 forward, 0 the nearer of both, the
// backward one on a tie) for a zero crossing and returns its frame: the frame of a pair that
// changes sign which lies closer to zero. Leaving the data returns the last frame inside it.
// Returns 0 for a null format or buffer or no data.
int32_t findZeroCrossing(const WaveFormat* format, const uint8_t* data, int32_t byteCount,
                         int32_t position, int direction, int channelRule);

} // namespace tg
