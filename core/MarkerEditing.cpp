// Moving one marker of a Key-Sample.
#include "core/MarkerEditing.h"

#include "core/Model.h"

#include <algorithm>

namespace tg {

const std::array<MarkerId, kMarkerCount>& allMarkers()
{
    static const std::array<MarkerId, kMarkerCount> ids = {
        MarkerId::SilenceIn, MarkerId::SilenceOut, MarkerId::NoteIn,       MarkerId::NoteOut,
        MarkerId::LoopIn,    MarkerId::LoopOut,    MarkerId::LoopSearchIn, MarkerId::LoopSearchOut,
        MarkerId::ReleaseIn, MarkerId::ReleaseOut,
    };
    return ids;
}

const char* markerName(MarkerId id)
{
    switch (id) {
    case MarkerId::SilenceIn:
        return "Silence_In";
    case MarkerId::SilenceOut:
        return "Silence_Out";
    case MarkerId::NoteIn:
        return "Note_In";
    case MarkerId::NoteOut:
        return "Note_Out";
    case MarkerId::LoopIn:
        return "Loop_In";
    case MarkerId::LoopOut:
        return "Loop_Out";
    case MarkerId::LoopSearchIn:
        return "LoopSearch_In";
    case MarkerId::LoopSearchOut:
        return "LoopSearch_Out";
    case MarkerId::ReleaseIn:
        return "Release_In";
    case MarkerId::ReleaseOut:
        return "Release_Out";
    }
    return "";
}

bool markerByName(const std::string& name, MarkerId& id)
{
    for (MarkerId candidate : allMarkers())
        if (name == markerName(candidate)) {
            id = candidate;
            return true;
        }
    return false;
}

int32_t& markerField(TGmsl_key& key, MarkerId id)
{
    switch (id) {
    case MarkerId::SilenceIn:
        return key.Silence_In;
    case MarkerId::SilenceOut:
        return key.Silence_Out;
    case MarkerId::NoteIn:
        return key.Note_In;
    case MarkerId::NoteOut:
        return key.Note_Out;
    case MarkerId::LoopIn:
        return key.Loop_In;
    case MarkerId::LoopOut:
        return key.Loop_Out;
    case MarkerId::LoopSearchIn:
        return key.LoopSearch_In;
    case MarkerId::LoopSearchOut:
        return key.LoopSearch_Out;
    case MarkerId::ReleaseIn:
        return key.Release_In;
    case MarkerId::ReleaseOut:
        break;
    }
    return key.Release_Out;
}

int32_t markerValue(const TGmsl_key& key, MarkerId id)
{
    return markerField(const_cast<TGmsl_key&>(key), id);
}

bool isStartMarker(MarkerId id)
{
    return static_cast<int>(id) % 2 == 0;
}

MarkerId pairedMarker(MarkerId id)
{
    const int index = static_cast<int>(id);
    return static_cast<MarkerId>(isStartMarker(id) ? index + 1 : index - 1);
}

Result moveMarker(Model& model, int note, MarkerId id, int32_t frame, int32_t frames,
                  int32_t& placed)
{
    Project* project = model.currentProject();
    TGmsl* msl = model.currentMultiSample();
    if (!project || !msl || note < 0 || note >= kKeyCount || frames <= 0)
        return Result::refused(kNoKeySampleToEdit);
    TGmsl_key& key = msl->keys[note];
    const int32_t partner = markerValue(key, pairedMarker(id));
    int32_t low = 0;
    int32_t high = frames - 1;
    // Only a pair that already spans something holds its partner back: an unset pair (both
    // at 0) or one out of order leaves the marker free within the recording.
    const bool ordered =
        isStartMarker(id) ? partner > markerValue(key, id) : partner < markerValue(key, id);
    if (ordered && isStartMarker(id))
        high = std::min(high, partner);
    else if (ordered)
        low = std::max(low, partner);
    placed = std::clamp(frame, low, std::max(low, high));
    markerField(key, id) = placed;
    project->modified = 1;
    const int projectIndex = model.currentProjectIndex();
    const int mslIndex = project->currentMsl;
    model.notifyListeners([&](TonegrabberModelListener& l) {
        l.keysChanged(projectIndex, mslIndex);
        l.projectChanged(projectIndex);
    });
    return Result::done();
}

} // namespace tg
