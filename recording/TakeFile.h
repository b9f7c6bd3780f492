// Writing a take to its Key-Sample file so that a failure never leaves a half-written file.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace tg {

// Bytes of a take written to disk: (bits / 8) x (frames + 1) x channels, but never more than
// the record buffer holds.
size_t takeByteCount(const WaveFormat& format, int64_t frames, size_t bufferBytes);

// Writes `bytes` of `data` as a WAV file at `path`, put in place only once complete, so an
// earlier take of the key stays whole until then. Returns 1, or 0 with the writer's message (naming `path`).
int writeTakeFile(const std::string& path, const WaveFormat& format, const uint8_t* data,
                  size_t bytes, std::string& message);

} // namespace tg
