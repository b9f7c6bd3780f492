// Moving a marker of a Key-Sample whose audio is at hand, as the waveform editor and the
// command line both do: onto a zero crossing when the Key-Sample keeps its markers there,
// then through the model.
#pragma once

#include "audiofile/WaveFormat.h"
#include "core/MarkerEditing.h"

#include <cstddef>
#include <cstdint>

namespace tg {

// Moves marker `id` of key `note` of the current Multi-Sample towards `frame`. When the key's
// zero-crossing flag is set the marker lands on the zero crossing nearest to `frame`
// (`direction` 0) or the next one from it (-1 backward, +1 forward). `placed` is where it went.
Result moveMarkerOnAudio(Model& model, int note, MarkerId id, int32_t frame, int direction,
                         const WaveFormat& format, const uint8_t* data, size_t bytes,
                         int32_t& placed);

} // namespace tg
