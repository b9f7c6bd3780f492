// The single place where playback converts a Key-Sample part to the output stream's format.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// Converts `data` (WAV byte image in `source` format) to `destination`'s rate, channels
// and bits, replacing the buffer. Returns 1, or 0 with the converter's message in `msg`.
int convertForPlayback(std::vector<uint8_t>& data, const WaveFormat& source,
                       const WaveFormat& destination, std::string& msg);

} // namespace tg
