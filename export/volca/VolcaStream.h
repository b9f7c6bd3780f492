// The sample-transfer stream of the Volca Sample: stereo audio at 44.1 kHz that the device
// decodes from its sync input. Each sample travels as a header block and 256-byte data blocks,
// each block sent as 3-bit symbols per channel: one eight-frame cycle of a sine whose phase
// (four steps) and level (two steps) carry the bits.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tg {

constexpr int kVolcaSlots = 100;                 // sample slots 0..99
constexpr uint32_t kVolcaStreamRate = 44100;     // rate of the stream itself
constexpr uint32_t kVolcaNativeRate = 31250;     // the device's playback rate (speed 1.0)
constexpr uint32_t kVolcaMaxSampleRate = 125000; // the header's speed field holds up to 4.0

// One sample for one slot: 16-bit mono frames at `rate`.
struct VolcaSample {
    int slot = 0;      // 0..99
    uint32_t rate = 0; // Hz, at most kVolcaMaxSampleRate
    std::vector<int16_t> frames;
};

// Stereo frames of the stream, left then right.
using VolcaFrameSink = std::function<bool(const int16_t* interleaved, size_t frames)>;

// The number of stereo frames the stream of `samples` takes, by the transfer library's
// published size formula (header gap and header per sample, a short gap and a block per 256
// bytes, a long gap per 4094 bytes, the closing gap).
uint64_t volcaStreamFrames(const std::vector<VolcaSample>& samples);

// Produces the whole stream, exactly volcaStreamFrames() frames, in pieces handed to `sink`.
// Returns false when the sink refuses a piece.
bool writeVolcaStream(const std::vector<VolcaSample>& samples, const VolcaFrameSink& sink);

} // namespace tg
