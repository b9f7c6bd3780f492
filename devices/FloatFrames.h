// Float stereo frames from a hosted instrument turned into the recorder's sample bytes.
#pragma once

#include <cstdint>

namespace tg {

// Writes `frames` frames into `out` as a WAV byte image of `channels` (1 or 2) channels and
// `bits` (8 unsigned, 16, 24 packed, 32) bits, little-endian. Mono takes the mean of both
// sides, as a mono input fed with both outputs of a stereo source would. Samples beyond
// full scale are clipped. No allocation: safe on a render thread.
void encodeFloatFrames(const float* left, const float* right, uint32_t frames, int channels,
                       int bits, uint8_t* out);

} // namespace tg
