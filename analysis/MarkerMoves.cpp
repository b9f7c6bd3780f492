// Moving a marker on the Key-Sample's audio.
#include "analysis/MarkerMoves.h"

#include "audiofile/ZeroCrossing.h"
#include "core/Model.h"

#include <algorithm>
#include <limits>

namespace tg {

Result moveMarkerOnAudio(Model& model, int note, MarkerId id, int32_t frame, int direction,
                         const WaveFormat& format, const uint8_t* data, size_t bytes,
                         int32_t& placed)
{
    const TGmsl* msl = model.currentMultiSample();
    if (!msl || note < 0 || note >= kKeyCount || format.nBlockAlign == 0 || !data ||
        bytes > static_cast<size_t>(std::numeric_limits<int32_t>::max()))
        return Result::refused(kNoKeySampleToEdit);
    const int32_t frames = static_cast<int32_t>(bytes / format.nBlockAlign);
    if (frames > 0 && msl->keys[note].zerocrossing)
        frame = findZeroCrossing(&format, data, static_cast<int32_t>(bytes),
                                 std::clamp(frame, 0, frames - 1), direction,
                                 kZeroCrossingEitherChannel);
    return moveMarker(model, note, id, frame, frames, placed);
}

} // namespace tg
