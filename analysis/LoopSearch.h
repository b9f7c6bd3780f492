// Auto-loop's search for the loop end whose following audio best matches the loop start.
#pragma once

#include "analysis/LoopScoring.h"
#include "audiofile/WaveFormat.h"

#include <cstddef>
#include <cstdint>
#include <functional>

namespace tg {

// Progress of a long search: fraction done (0..1) and the estimated seconds left (negative
// while the speed of this machine has not been measured). Returns false to cancel.
using LoopSearchProgress = std::function<bool(double fraction, double secondsLeft)>;

// Searches the loop end for the loop start `loopStart` among the candidates
// max(searchStart, loopStart + window) .. min(searchEnd, frames - window) - 1, scoring each by
// the mean absolute difference of the `window` frames after it and after the loop start.
// Writes the `resultCount` best positions, each at least min(window, rate / 10) frames from
// the others, into `results` (-1 where none), the best first. With `zeroCrossingStepping`
// and a loop start on a zero crossing only zero crossings are tried; with
// `snapToZeroCrossing` each result moves to its nearest zero crossing.
// Returns the best loop end, -1 when cancelled through `progress`, 0 for bad arguments
// (null format or buffer, no data, window < 1, loop start < 0).
// Runs on the calling thread (helpers are joined before it returns); `progress` is only
// called on the calling thread.
int32_t loopSearch(const WaveFormat* format, const uint8_t* data, size_t bytes, int32_t loopStart,
                   int32_t searchStart, int32_t searchEnd, int32_t window, int32_t* results,
                   int resultCount, bool snapToZeroCrossing, bool zeroCrossingStepping,
                   const LoopSearchProgress& progress = {}, const LoopScanOptions& options = {});

} // namespace tg
