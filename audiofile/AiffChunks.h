// The chunks of an AIFF or AIFF-C file, one class each: id, body size, big-endian read/write.
#pragma once

#include "audiofile/BinaryFile.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg::aiff {

// Every chunk class reads its body from the current position, given the body size from the
// chunk header (reads never go past it), and writes header, body and pad byte.

// Size on disk of a counted string: count byte, text, pad to an even total.
uint32_t countedStringSize(const std::string& text);

struct CommonChunk {
    static constexpr const char* kId = "COMM";
    int16_t channels = 0;
    uint32_t frames = 0;
    int16_t bits = 0;
    double sampleRate = 0;   // Hz
    bool compressed = false; // AIFF-C: the two fields below are present
    char compressionType[4] = {'N', 'O', 'N', 'E'};
    std::string compressionName;

    uint32_t bodySize() const;
    bool read(BinaryFile& file, uint32_t size, bool aifc);
    bool write(BinaryFile& file) const;
};

struct SoundDataChunk {
    static constexpr const char* kId = "SSND";
    uint32_t offset = 0;    // bytes from the data start to the first sample frame
    uint32_t blockSize = 0; // alignment block size, 0 for plain files
    int64_t dataStart = 0;  // file position just after the two fields (read only)
    int64_t dataBytes = 0;  // bytes after the two fields inside the chunk

    uint32_t bodySize() const { return 8 + static_cast<uint32_t>(dataBytes); }
    bool read(BinaryFile& file, uint32_t size);
    // Writes the header and the two fields; the caller writes the samples and the pad byte.
    bool writeHeader(BinaryFile& file) const;
};

struct Marker {
    int16_t id = 0;
    uint32_t position = 0; // frame
    std::string name;
};

struct MarkerChunk {
    static constexpr const char* kId = "MARK";
    std::vector<Marker> markers;

    uint32_t bodySize() const;
    bool read(BinaryFile& file, uint32_t size);
    bool write(BinaryFile& file) const;
    // The marker with `id`, or null.
    const Marker* find(int16_t id) const;
};

struct Loop {
    int16_t playMode = 0; // 0 none, 1 forward, 2 forward-backward
    int16_t beginMarker = 0;
    int16_t endMarker = 0;
};

struct InstrumentChunk {
    static constexpr const char* kId = "INST";
    uint8_t baseNote = 60; // MIDI note
    int8_t detune = 0;     // cents
    uint8_t lowNote = 0, highNote = 127;
    uint8_t lowVelocity = 1, highVelocity = 127;
    int16_t gain = 0; // dB
    Loop sustainLoop, releaseLoop;

    static constexpr uint32_t bodySize() { return 20; }
    bool read(BinaryFile& file, uint32_t size);
    bool write(BinaryFile& file) const;
};

struct NameChunk {
    static constexpr const char* kId = "NAME";
    std::string text;

    uint32_t bodySize() const { return static_cast<uint32_t>(text.size()); }
    bool read(BinaryFile& file, uint32_t size);
    bool write(BinaryFile& file) const;
};

struct FormatVersionChunk {
    static constexpr const char* kId = "FVER";
    static constexpr uint32_t kAifcVersion1 = 0xA2805140;
    uint32_t timestamp = kAifcVersion1;

    static constexpr uint32_t bodySize() { return 4; }
    bool read(BinaryFile& file, uint32_t size);
    bool write(BinaryFile& file) const;
};

// Bytes a chunk occupies in the file: header, body, pad byte.
inline uint32_t chunkSpan(uint32_t bodySize)
{
    return 8 + bodySize + (bodySize & 1u);
}

} // namespace tg::aiff
