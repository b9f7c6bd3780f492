// Auto-loop for one Key-Sample: loop start, search region, loop end and crossfade lengths.
#pragma once

#include "analysis/LoopSearch.h"
#include "audiofile/WaveFormat.h"
#include "core/Records.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace tg {

// The loop percentages of auto-loop, all of the note length except the crossfades (of the
// loop length).
struct LoopPercentages {
    double loopstart = 30.0;
    double loopoutsearchstart = 55.0;
    double loopsearchlength = 1.0;
    double searchEnd = -1.0; // % of the note length; negative: the search runs to Note_Out
    double xfadelength = 0.2;
    double bfxfadelength = 0.5;
    std::string xfadetype = "Exponential^2";
    std::string bfxfadetype = "Exponential^2";
};

LoopPercentages loopPercentagesFromSettings(const RecordSettings& settings);

// "Use the loaded Key-Sample's Loop-Search-Markers": the percentages measured on `loaded`
// with inclusive note and loop lengths, the search length clamped to 0.1..10 %.
// Returns false when the loaded Key-Sample has no note.
bool loopPercentagesFromKey(const TGmsl_key& loaded, LoopPercentages& out);

// Places the loop markers of `key` after auto-note: 1 when placed, 0 when the key has no
// note to loop (markers unchanged), -1 when the user cancelled the search (markers restored).
int placeLoop(TGmsl_key& key, const WaveFormat& format, const uint8_t* data, size_t bytes,
              const LoopPercentages& percentages, bool zeroCrossing,
              const LoopSearchProgress& progress = {}, const LoopScanOptions& options = {});

} // namespace tg
