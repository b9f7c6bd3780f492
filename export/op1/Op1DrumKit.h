// The OP-1 drum kit: one mono 16-bit 44.1 kHz AIFF holding up to 24 slices back to back, with
// the kit's description as JSON in an "APPL" chunk signed "op-1".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

constexpr int kOp1Slots = 24;               // keys of the kit, one slice each
constexpr uint32_t kOp1Rate = 44100;        // the only rate the kit plays
constexpr int64_t kOp1MaxFrames = 529200;   // 12 seconds, the kit's whole length
constexpr int64_t kOp1PositionScale = 4058; // units per frame of the JSON start/end values

// One slice: 16-bit mono frames (host order).
struct Op1Slice {
    std::vector<int16_t> frames;
};

// The whole AIFF file image of a kit named `name` (at most kOp1Slots slices, together at most
// kOp1MaxFrames frames; the caller checks both). Slot i plays slice i; unused slots are empty
// (start equals end, at the end of the audio).
std::vector<uint8_t> op1DrumKitFile(const std::string& name, const std::vector<Op1Slice>& slices);

} // namespace tg
