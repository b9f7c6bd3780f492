// Little-endian reads and writes of fixed-size fields inside a byte buffer, bounds-checked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tg {

// Each put/get works on `size` bytes at `data`; a field that would not fit entirely is
// neither written nor read (puts return false, gets leave `value` unchanged and return false).

inline bool fieldFits(size_t size, size_t offset, size_t length)
{
    return offset <= size && length <= size - offset;
}

template <typename Unsigned>
bool putUnsignedLE(uint8_t* data, size_t size, size_t offset, Unsigned value)
{
    if (!fieldFits(size, offset, sizeof(Unsigned)))
        return false;
    for (size_t i = 0; i < sizeof(Unsigned); ++i)
        data[offset + i] = static_cast<uint8_t>(value >> (8 * i));
    return true;
}

template <typename Unsigned>
bool getUnsignedLE(const uint8_t* data, size_t size, size_t offset, Unsigned& value)
{
    if (!fieldFits(size, offset, sizeof(Unsigned)))
        return false;
    Unsigned result = 0;
    for (size_t i = 0; i < sizeof(Unsigned); ++i)
        result =
            static_cast<Unsigned>(result | (static_cast<Unsigned>(data[offset + i]) << (8 * i)));
    value = result;
    return true;
}

inline bool putLE(uint8_t* data, size_t size, size_t offset, uint8_t value)
{
    return putUnsignedLE<uint8_t>(data, size, offset, value);
}
inline bool putLE(uint8_t* data, size_t size, size_t offset, uint16_t value)
{
    return putUnsignedLE<uint16_t>(data, size, offset, value);
}
inline bool putLE(uint8_t* data, size_t size, size_t offset, uint32_t value)
{
    return putUnsignedLE<uint32_t>(data, size, offset, value);
}
inline bool putLE(uint8_t* data, size_t size, size_t offset, int32_t value)
{
    return putUnsignedLE<uint32_t>(data, size, offset, static_cast<uint32_t>(value));
}
inline bool putLE(uint8_t* data, size_t size, size_t offset, double value)
{
    uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits); // IEEE 754 binary64 bit pattern
    return putUnsignedLE<uint64_t>(data, size, offset, bits);
}

inline bool getLE(const uint8_t* data, size_t size, size_t offset, uint8_t& value)
{
    return getUnsignedLE<uint8_t>(data, size, offset, value);
}
inline bool getLE(const uint8_t* data, size_t size, size_t offset, uint16_t& value)
{
    return getUnsignedLE<uint16_t>(data, size, offset, value);
}
inline bool getLE(const uint8_t* data, size_t size, size_t offset, uint32_t& value)
{
    return getUnsignedLE<uint32_t>(data, size, offset, value);
}
inline bool getLE(const uint8_t* data, size_t size, size_t offset, int32_t& value)
{
    uint32_t bits = 0;
    if (!getUnsignedLE<uint32_t>(data, size, offset, bits))
        return false;
    value = static_cast<int32_t>(bits);
    return true;
}
inline bool getLE(const uint8_t* data, size_t size, size_t offset, double& value)
{
    uint64_t bits = 0;
    if (!getUnsignedLE<uint64_t>(data, size, offset, bits))
        return false;
    std::memcpy(&value, &bits, sizeof value);
    return true;
}

} // namespace tg
