// `levels --input`: the live peak of an audio input, the level check before a recording.
#pragma once

#include <string>

namespace tg::cli {

// The input to measure: a device name of the audio input table and a recording format name,
// and for a device with more than two channels the channels to measure ("LEFT[,RIGHT]", from
// 1; empty: the device's first ones).
struct InputLevelSource {
    std::string device;
    std::string format;
    std::string channels;
};

// Opens the input alone, listens for `seconds` and prints the peaks: every half second a
// line "L %.1f dB  R %.1f dB" on stdout, then "Peak of \"DEVICE\": L ... R ..." (or one
// JSON document). A source that is no device, a device that cannot be opened, or an input
// that delivers no audio at all fails with a message.
int runInputLevels(const InputLevelSource& source, double seconds, bool json, bool quiet);

} // namespace tg::cli
