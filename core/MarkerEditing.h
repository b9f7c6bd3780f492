// Moving one marker of a Key-Sample as the waveform editor does: the position is kept inside
// the recording and on its side of the marker it pairs with, the Project is marked modified
// and every listener hears of it.
#pragma once

#include "core/Message.h"
#include "core/Records.h"

#include <array>
#include <cstdint>
#include <string>

namespace tg {

class Model;

// The markers the editor shows and moves, in the order they are drawn.
enum class MarkerId {
    SilenceIn,
    SilenceOut,
    NoteIn,
    NoteOut,
    LoopIn,
    LoopOut,
    LoopSearchIn,
    LoopSearchOut,
    ReleaseIn,
    ReleaseOut,
};
constexpr int kMarkerCount = 10;
const std::array<MarkerId, kMarkerCount>& allMarkers();

// The marker's name as the key record calls it ("Loop_In").
const char* markerName(MarkerId id);
// The marker called `name` ("Loop_In"), false when none is.
bool markerByName(const std::string& name, MarkerId& id);
// The marker's field in `key`.
int32_t& markerField(TGmsl_key& key, MarkerId id);
int32_t markerValue(const TGmsl_key& key, MarkerId id);
// The marker it pairs with (Loop_In with Loop_Out and so on).
MarkerId pairedMarker(MarkerId id);
// True for the first marker of a pair.
bool isStartMarker(MarkerId id);

constexpr const char* kNoKeySampleToEdit = "There is no Key-Sample to edit.";

// Moves marker `id` of key `note` of the current Multi-Sample to `frame`, clamped to the
// recording (0 .. frames - 1) and, while the pair spans something, so that a start marker
// never passes its end marker nor an end marker its start. Returns the position taken in
// `placed`.
Result moveMarker(Model& model, int note, MarkerId id, int32_t frame, int32_t frames,
                  int32_t& placed);

} // namespace tg
