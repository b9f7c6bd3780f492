// Reading a WAV or AIFF sample file for import: its audio, its loop and its root key, whatever
// the extension says.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

struct SampleFileContents {
    WaveFormat format;
    std::vector<uint8_t> data; // whole frames only, WAV byte image
    int32_t loopStart = -1;    // frame, -1 without a usable loop
    int32_t loopEnd = -1;      // frame, inclusive, -1 without a usable loop
    int32_t rootKey = -1;      // 0..127 from `smpl` or INST, -1 without

    int32_t frames() const
    {
        return format.nBlockAlign ? int32_t(data.size() / format.nBlockAlign) : 0;
    }
    bool hasLoop() const { return loopEnd >= 0; }
};

// Reads the file at `path` by what it holds ("RIFF" or "FORM"). A loop that does not lie
// inside the audio, or a root key outside 0..127, is dropped. Returns 1, or 0 with `message`.
int readSampleFile(const std::string& path, SampleFileContents& contents, std::string& message);

// The root key stored in the file (-1 when it has none), without keeping the audio. Returns 1,
// or 0 with `message` when the file cannot be read as a WAV or AIFF file.
int readSampleFileRootKey(const std::string& path, int32_t& rootKey, std::string& message);

// True for the extensions a folder import takes: ".wav" for WAV, ".aif", ".aiff", ".aifc" for
// AIFF (letter case free).
bool isWavFileName(const std::string& path);
bool isAiffFileName(const std::string& path);

} // namespace tg
