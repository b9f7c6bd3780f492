// The free-space check run before any exporter: is there room for the exported audio?
#pragma once

#include "audiofile/WaveFormat.h"
#include "core/Records.h"

#include <cstdint>
#include <functional>
#include <string>

namespace tg {

// Reads the format of a Key-Sample file; false when the file cannot be read.
using WaveFormatProbe = std::function<bool(const std::string& path, WaveFormat& format)>;

// Bytes of audio the export of every present and recorded Key-Sample of the Project will
// write with the settings `word` ("same" counts as 44.1 kHz, 16 bits, 2 channels). A file
// that cannot be read makes the estimate UINT64_MAX.
uint64_t estimateExportBytes(const Project& project, uint32_t word, const WaveFormatProbe& probe);

// The frames of one Key-Sample counted by the estimate: the loop when enabled, inside the
// note and at least 6 frames long, else the whole note.
int64_t estimatedFrames(const TGmsl_key& key);

// True when `freeBytes` + 5 MiB of grace cover `estimate`.
bool enoughSpace(uint64_t freeBytes, uint64_t estimate);

// Free bytes for an unprivileged user on the drive of `folder`; false when unknown.
bool freeBytesAt(const std::string& folder, uint64_t& freeBytes);

// The whole check; on refusal `message` holds the text to show under "Error".
bool checkFreeSpace(const Project& project, uint32_t word, const std::string& destination,
                    const WaveFormatProbe& probe, std::string& message);

constexpr const char* kNotEnoughSpaceText =
    "Sorry! Not enough space available for export. Aborting!";

} // namespace tg
