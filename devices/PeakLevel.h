// The input meter's value: the peak of one block of samples as PortAudio delivers them.
#pragma once

#include <cstddef>

namespace tg {

// Peaks of the first and second channel of `frames` interleaved frames in the stream's own
// sample format (8-bit signed, 16-bit, packed 24-bit or 32-bit integers, native order).
// The peak is the largest sample value starting from 0, not the largest magnitude, so a
// block that is entirely negative reports 0; it is limited to full scale and divided by
// full scale (127, 32767, and 2147483647 for 24 and 32 bits, whose samples are read as the
// top bytes of a 32-bit value). Mono leaves the second peak 0. Null input gives 0, 0.
void blockPeaks(const void* input, unsigned long frames, int channels, int bits, float& first,
                float& second);
// The same for the channels a take keeps of a wider stream of `streamChannels` interleaved
// channels: the peaks of `firstChannel` and of `secondChannel` (-1 for a mono take).
void pickedBlockPeaks(const void* input, unsigned long frames, int streamChannels, int bits,
                      int firstChannel, int secondChannel, float& first, float& second);

} // namespace tg
