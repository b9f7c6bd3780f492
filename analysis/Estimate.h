// How long a recording run will take and how much audio it will store.
#pragma once

#include "analysis/LoopSpeed.h"
#include "core/Records.h"

#include <cstdint>
#include <string>

namespace tg {

struct EstimateOptions {
    bool keepLocked = false; // "Keep locked Key-Samples"
    bool onlyEmpty = false;  // "Record only empty Key-Samples"
};

struct RecordingEstimate {
    double seconds = 0.0;
    uint64_t bytes = 0;
};

// Adds the keys of `msl` to `estimate`: per key selected for recording (keyState set) with
// the Multi-Sample's note and release lengths, its note, release, the 0.5 s lead-in and the
// pause, plus the loop search scaled by `speeds` (the figure of the Multi-Sample's bit depth
// and channel count) when auto-loop is on, and the WAV size. Keys are skipped as the
// options say.
void addMultiSampleEstimate(const TGmsl& msl, const EstimateOptions& options,
                            const LoopSpeedTable& speeds, RecordingEstimate& estimate);

// "%1 h %2 min %3 sec" with whole hours, minutes and seconds, truncated.
std::string formatEstimateTime(double seconds);
// "%1 MB" with bytes / 1048576, truncated.
std::string formatEstimateSize(uint64_t bytes);

} // namespace tg
