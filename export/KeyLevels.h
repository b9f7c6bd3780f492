// The level measure and the gain stage of an export, run once per Key-Sample over the whole
// recording or rendering: the analysis layer's rules (peak against full scale; multiply,
// truncate toward zero, clip) in loops with the sample width fixed, so that the compiler turns
// them into straight loops over the samples.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstddef>
#include <cstdint>

namespace tg {

// The larger of the channels' peaks as a fraction of full scale; 0 for a format the analysis
// does not handle.
double keyPeakLevel(const WaveFormat& format, const uint8_t* data, size_t bytes);

// Multiplies every sample of every whole frame by `gain`, truncating toward zero and clipping
// to full scale. A gain of 1 and an unhandled format leave the data alone.
void applyKeyGain(double gain, const WaveFormat& format, uint8_t* data, size_t bytes);

} // namespace tg
