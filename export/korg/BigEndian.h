// Appending big-endian integers and fixed-width text fields to a byte buffer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tg::be {

inline void put8(std::vector<uint8_t>& out, uint32_t value)
{
    out.push_back(static_cast<uint8_t>(value & 0xFF));
}

inline void put16(std::vector<uint8_t>& out, uint32_t value)
{
    put8(out, value >> 8);
    put8(out, value);
}

inline void put32(std::vector<uint8_t>& out, uint32_t value)
{
    put8(out, value >> 24);
    put8(out, value >> 16);
    put8(out, value >> 8);
    put8(out, value);
}

// Exactly `width` bytes of `text`: cut when longer, blank-padded when shorter, no terminator.
inline void putText(std::vector<uint8_t>& out, const std::string& text, size_t width)
{
    for (size_t i = 0; i < width; ++i)
        out.push_back(i < text.size() ? static_cast<uint8_t>(text[i]) : ' ');
}

// A chunk header: four-character id and the 32-bit size of what follows.
inline void putChunkHeader(std::vector<uint8_t>& out, const char (&id)[5], uint32_t size)
{
    out.insert(out.end(), id, id + 4);
    put32(out, size);
}

} // namespace tg::be
