// Loading the audio of a Key-Sample from its WAV file in the project's data path, and the WAV
// sample-rate look-up the project file reader needs for files of old versions.
#pragma once

#include "audiofile/WaveFormat.h"
#include "core/Message.h"
#include "core/ProjectFile.h"
#include "core/Records.h"

#include <cstdint>
#include <vector>

namespace tg {

// Reads the WAV file of key `note` (0..127) of `msl` in `project` (file named by the key-sample
// name rule). On success `format` and `data` hold the audio and the key has audio; on failure
// `data` is empty, the key is left without audio and the Result carries the message.
Result loadKeySampleAudio(const Project& project, TGmsl& msl, int note, WaveFormat& format,
                          std::vector<uint8_t>& data);

// The sample rate the WAV header reader reports for the file at `path`.
bool wavSampleRate(const std::string& path, double& rate);

// wavSampleRate as the project file reader takes it.
WavRateReader wavFileRateReader();

} // namespace tg
