// Montage user (.X7U) and library (.X7L) files that hold waveforms only: each waveform is a set
// of key banks (key and velocity range, root key, loop) with their 16-bit audio. The two kinds
// of file have the same bytes; only the extension tells the instrument where to load them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tg {

constexpr size_t kYsfcNameLength = 20;             // characters of a waveform name
constexpr uint32_t kYsfcRate = 44100;              // the rate every waveform is written at
constexpr uint64_t kYsfcMaxFileSize = 0xFFFFFFFFu; // offsets in the file are 32 bits

// One channel of one Key-Sample: a stereo Key-Sample has two key banks, left then right, each
// with `channels` 2 and the same sample number.
struct YsfcKeyBank {
    uint8_t lowKey = 0;
    uint8_t highKey = 127;
    uint8_t lowVelocity = 1;
    uint8_t highVelocity = 127;
    uint8_t rootKey = 60;
    uint8_t channels = 1;
    uint32_t sampleNumber = 1; // counts the Key-Samples of the whole file, from 1
    uint32_t rate = kYsfcRate;
    uint32_t frames = 0; // the channel's audio is frames * 2 bytes
    bool looped = false;
    uint32_t loopStart = 0; // frames
    uint32_t loopEnd = 0;   // frames, the last frame of the loop
};

struct YsfcWaveform {
    std::string name; // printable ASCII without ':', at most kYsfcNameLength characters
    std::vector<YsfcKeyBank> keyBanks;
};

// Takes the file's bytes in order; false stops the writing.
using YsfcOutput = std::function<bool(const uint8_t* data, size_t size)>;
// Hands the audio of key bank `keyBank` of waveform `waveform` to `out`: exactly its
// frames * 2 bytes of signed 16-bit little-endian samples. False stops the writing.
using YsfcAudio = std::function<bool(size_t waveform, size_t keyBank, const YsfcOutput& out)>;

// The size of the file the waveforms make.
uint64_t ysfcFileSize(const std::vector<YsfcWaveform>& waveforms);

// Writes the whole file (at most kYsfcMaxFileSize bytes; the caller checks). False when `audio`
// or `out` failed.
bool writeYsfcLibrary(const std::vector<YsfcWaveform>& waveforms, const YsfcAudio& audio,
                      const YsfcOutput& out);

} // namespace tg
