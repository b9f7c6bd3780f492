// Linear fade-in and fade-out at the ends of a buffer against clicks and pops.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstddef>
#include <cstdint>

namespace tg {

// Fades the first `fadeIn` frames in (the first frame becomes silent) and the last
// `fadeOut` frames out (the last frame becomes silent), both lengths cut to the buffer.
// Both channels of a frame get the same gain; values are truncated toward zero.
void clickPopFade(const WaveFormat& format, uint8_t* data, size_t bytes, int64_t fadeIn,
                  int64_t fadeOut);

} // namespace tg
