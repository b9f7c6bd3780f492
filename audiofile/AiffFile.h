// Reading AIFF and AIFF-C files and writing AIFF files, in the in-memory form of WAV audio.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// What the reader takes from a file.
struct AiffContents {
    WaveFormat format;         // PCM, 1 or 2 channels, 8/16/24 bits
    std::vector<uint8_t> data; // WAV byte image: little-endian, 8-bit unsigned
    int32_t loopStart = -1;    // frame of the sustain loop's begin marker, -1 without loop
    int32_t loopEnd = -1;      // frame of its end marker, -1 without loop
    int32_t rootKey = -1;      // INST base note 0..127, -1 without INST
    std::string name;          // NAME text, empty without NAME
};

// Reads an AIFF or AIFF-C ("NONE" or "sowt") file. Returns 1, with any notes about skipped
// chunks ("Unrecognized Chunk: ...") in `message`, or 0 with the reason in `message`.
int readAiff(const std::string& path, AiffContents& contents, std::string& message);

// The key values the INST chunk is filled from, with the sample's name for NAME.
struct AiffKeyRecord {
    uint8_t baseNote = 60;      // MIDI note of the key
    uint8_t lowNote = 0;        // lowest note of the key's zone
    uint8_t highNote = 127;     // highest note of the key's zone
    uint8_t lowVelocity = 1;    // 1..127
    uint8_t highVelocity = 127; // 1..127
    std::string name;           // written as the NAME chunk
};

// Writes an AIFF file: COMM, then MARK ("beg loop" at loopStart, "end loop" at loopEnd) and
// INST with a forward sustain loop only when loopEnd > 0, then NAME and SSND. Returns 1, or 0
// with `message`.
int writeAiff(const std::string& path, const WaveFormat& format, const uint8_t* data,
              int32_t byteCount, int32_t loopStart, int32_t loopEnd, const AiffKeyRecord& key,
              std::string& message);

} // namespace tg
