// Reading a Key-Sample's WAV file and writing it back without risking the original.
#pragma once

#include "audiofile/WaveFormat.h"
#include "core/Records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// Writes `data` as a WAV file at `path`, replacing the file there only once the new one is
// complete. Returns 1, or 0 with the writer's message (the original file is then untouched).
int writeWavReplacing(const std::string& path, const WaveFormat& format,
                      const std::vector<uint8_t>& data, std::string& message);

// Which Key-Samples a batch job works on.
enum class KeyScope { Sample, MultiSample, Project };

struct KeyRef {
    int msl;  // index into the project's Multi-Samples
    int note; // 0..127
};

// The Key-Samples with audio in `scope`: the key `note` of Multi-Sample `msl`, every key of
// that Multi-Sample, or every key of every Multi-Sample of the project; ordered by
// Multi-Sample, then note.
std::vector<KeyRef> keysInScope(const Project& project, KeyScope scope, int msl, int note);

// The Multi-Samples `scope` touches, in order.
std::vector<int> multiSamplesInScope(const Project& project, KeyScope scope, int msl);

} // namespace tg
