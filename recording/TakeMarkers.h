// The markers a fresh take gets: note in/out by threshold detection, the release from the
// measured note duration and the latency setting, and the loop set-up and search.
#pragma once

#include "audiofile/WaveFormat.h"
#include "core/Records.h"

#include <cstddef>
#include <cstdint>

namespace tg {

// Silence, note and release markers of `key` from its take (`bytes` of `data` in `format`).
// `noteSeconds` is the time from Note On to Note Off as it was measured (or as rendered
// offline); it places Note_Out when the Multi-Sample has a release length.
void setTakeNoteMarkers(TGmsl_key& key, const WaveFormat& format, const uint8_t* data, size_t bytes,
                        const RecordSettings& settings, double releaseLength, double noteSeconds);

// The loop markers from the note markers and the record settings' percentages, before any
// search: loop mode, loop start, search region and length, crossfade lengths and curves.
void setUpTakeLoop(TGmsl_key& key, const RecordSettings& settings);

// The loop search of auto-loop over the take, placing Loop_In and Loop_Out.
void searchTakeLoop(TGmsl_key& key, const WaveFormat& format, const uint8_t* data, size_t bytes,
                    const RecordSettings& settings);

} // namespace tg
