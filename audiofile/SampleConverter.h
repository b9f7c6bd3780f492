// Converting audio between sample rates, channel counts and bit depths, loop points included.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// Which channel a stereo source gives a mono destination.
enum class ChannelMode {
    Mix = 0,   // (left + right) / 2, integer division
    Left = 1,  // first channel
    Right = 2, // second channel
};

// How the rate changes.
enum class ResampleMode {
    Linear = 0,      // linear interpolation both ways
    Average = 1,     // linear up, weighted mean over each output span down (files, export)
    HighQuality = 2, // band-limited resampling by libsoxr (very high quality recipe), both ways
};

// Converts `data` (the WAV byte image in `source` format) to `destination`, replacing the
// buffer. Both records get their derived fields recomputed. New frame count N =
// trunc(frames * destination rate / source rate). Loop points (frames, end inclusive, either
// pointer may be null) follow a rate change, and a point that lay on a zero crossing is moved
// to the nearest zero crossing of the result. Formats alike in rate, channels and bits leave
// everything untouched. Returns 1, or 0 with the reason appended to `*message` (which starts
// with "convert sample error: " when given).
int convertSamples(std::vector<uint8_t>& data, WaveFormat& source, WaveFormat& destination,
                   int32_t* loopStart, int32_t* loopEnd, ChannelMode channelMode,
                   ResampleMode resampleMode, std::string* message = nullptr);

} // namespace tg
