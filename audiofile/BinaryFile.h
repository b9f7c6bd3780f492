// Bounded, endian-explicit reading and writing of a file, for the audio file readers and writers.
#pragma once

#include "core/AtomicFile.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace tg {

// Wraps a FILE*; every read reports whether all requested bytes arrived, so that a truncated
// or lying file ends a parse cleanly instead of leaving fields half filled. A file opened for
// writing appears whole at `finish()` or not at all: until then the bytes go to a temporary
// file beside it, and a file that was there before stays as it was.
class BinaryFile {
  public:
    BinaryFile() = default;
    ~BinaryFile() { close(); }
    BinaryFile(const BinaryFile&) = delete;
    BinaryFile& operator=(const BinaryFile&) = delete;

    bool openForReading(const std::string& path);
    bool openForWriting(const std::string& path);
    // Closes the file; one being written is thrown away.
    void close();
    // Puts a file opened for writing in place; false when any of its bytes could not be
    // written (nothing is replaced then).
    bool finish();

    // Total size of the file in bytes (measured when opened for reading).
    int64_t size() const { return size_; }
    int64_t tell() const;
    bool seek(int64_t offset);
    // Moves forward `count` bytes; fails when that would pass the end of the file.
    bool skip(int64_t count);
    // Moves forward `count` bytes, stopping at the end of the file, so that the next read fails.
    void skipClamped(uint64_t count);

    bool read(void* dest, size_t count);
    bool readU16LE(uint16_t& value);
    bool readU32LE(uint32_t& value);
    bool readU16BE(uint16_t& value);
    bool readU32BE(uint32_t& value);
    // Reads a 4-character chunk id.
    bool readId(char (&id)[4]) { return read(id, 4); }

    bool write(const void* source, size_t count);
    bool writeU16LE(uint16_t value);
    bool writeU32LE(uint32_t value);
    bool writeU16BE(uint16_t value);
    bool writeU32BE(uint32_t value);
    bool writeText(const char* text); // without terminator

  private:
    FILE* file_ = nullptr;
    std::unique_ptr<AtomicFile> writer_; // set while writing
    int64_t size_ = 0;
};

inline bool sameId(const char (&id)[4], const char* text)
{
    return id[0] == text[0] && id[1] == text[1] && id[2] == text[2] && id[3] == text[3];
}

inline uint16_t loadU16LE(const uint8_t* p)
{
    return static_cast<uint16_t>(p[0] | (p[1] << 8));
}
inline uint32_t loadU32LE(const uint8_t* p)
{
    return static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
           (static_cast<uint32_t>(p[2]) << 16) | (static_cast<uint32_t>(p[3]) << 24);
}
inline uint16_t loadU16BE(const uint8_t* p)
{
    return static_cast<uint16_t>((p[0] << 8) | p[1]);
}
inline uint32_t loadU32BE(const uint8_t* p)
{
    return (static_cast<uint32_t>(p[0]) << 24) | (static_cast<uint32_t>(p[1]) << 16) |
           (static_cast<uint32_t>(p[2]) << 8) | static_cast<uint32_t>(p[3]);
}
inline void storeU16LE(uint8_t* p, uint16_t v)
{
    p[0] = static_cast<uint8_t>(v);
    p[1] = static_cast<uint8_t>(v >> 8);
}
inline void storeU32LE(uint8_t* p, uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        p[i] = static_cast<uint8_t>(v >> (8 * i));
}
inline void storeU16BE(uint8_t* p, uint16_t v)
{
    p[0] = static_cast<uint8_t>(v >> 8);
    p[1] = static_cast<uint8_t>(v);
}
inline void storeU32BE(uint8_t* p, uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        p[i] = static_cast<uint8_t>(v >> (24 - 8 * i));
}

} // namespace tg
