// Multiplying a rendered part by a level gain before it is written.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstdint>
#include <vector>

namespace tg {

// Multiplies every sample of `data` by `gain`, truncating toward zero and clipping at full
// scale. A gain of exactly 1 leaves the bytes untouched.
void applyBufferGain(const WaveFormat& format, std::vector<uint8_t>& data, double gain);

} // namespace tg
