// What the editor draws over a Key-Sample's waveform: every marker by its name and colour, the
// silence region, the loop search range and the loop's crossfade region.
#pragma once

#include "core/MarkerEditing.h"
#include "shell/editor/WavePainter.h"

#include <optional>

namespace tg::shell {

QColor markerColor(MarkerId id);

// The crossfade region of a loop: the frames before Loop_Out that are blended with the frames
// before Loop_In (the first crossfade of a backward-forward loop ends where its reversed pass
// turns, the second crossfade's length before Loop_Out). Empty (end < begin) without a loop.
ShadedRegion crossfadeRegion(const TGmsl_key& key);

WaveScene markerScene(const TGmsl_key& key, std::optional<MarkerId> selected);

} // namespace tg::shell
