// Reading and writing each AIFF chunk body big-endian, bounded by the chunk's own size.
#include "audiofile/AiffChunks.h"

#include "audiofile/Extended80.h"

namespace tg::aiff {

namespace {

bool writeHeader(BinaryFile& file, const char* id, uint32_t size)
{
    return file.write(id, 4) && file.writeU32BE(size);
}

bool writePad(BinaryFile& file, uint32_t size)
{
    return (size & 1u) == 0 || file.write("", 1);
}

// Reads a counted string that must end within `left` bytes; `left` shrinks by what was used.
bool readCountedString(BinaryFile& file, uint32_t& left, std::string& text)
{
    uint8_t count = 0;
    if (left < 1 || !file.read(&count, 1))
        return false;
    const uint32_t used = countedStringSize(std::string(count, ' '));
    if (used > left)
        return false;
    text.assign(count, '\0');
    if (count && !file.read(&text[0], count))
        return false;
    if (used > 1u + count && !file.skip(1))
        return false;
    left -= used;
    return true;
}

bool writeCountedString(BinaryFile& file, const std::string& text)
{
    const std::string cut = text.size() > 255 ? text.substr(0, 255) : text;
    const uint8_t count = static_cast<uint8_t>(cut.size());
    bool ok = file.write(&count, 1) && file.write(cut.data(), cut.size());
    if (ok && ((1u + count) & 1u))
        ok = file.write("", 1);
    return ok;
}

bool readI16(BinaryFile& file, int16_t& value)
{
    uint16_t u = 0;
    if (!file.readU16BE(u))
        return false;
    value = static_cast<int16_t>(u);
    return true;
}

} // namespace

uint32_t countedStringSize(const std::string& text)
{
    const uint32_t n = 1 + static_cast<uint32_t>(text.size() > 255 ? 255 : text.size());
    return n + (n & 1u);
}

uint32_t CommonChunk::bodySize() const
{
    return compressed ? 22 + countedStringSize(compressionName) : 18;
}

bool CommonChunk::read(BinaryFile& file, uint32_t size, bool aifc)
{
    uint8_t rate[10];
    if (size < 18 || !readI16(file, channels) || !file.readU32BE(frames) || !readI16(file, bits) ||
        !file.read(rate, sizeof rate))
        return false;
    sampleRate = extended80ToDouble(rate);
    compressed = false;
    if (!aifc || size < 22)
        return true; // an AIFF-C COMM without the fields is uncompressed
    compressed = true;
    if (!file.read(compressionType, 4))
        return false;
    uint32_t left = size - 22;
    return left == 0 || readCountedString(file, left, compressionName);
}

bool CommonChunk::write(BinaryFile& file) const
{
    uint8_t rate[10];
    doubleToExtended80(sampleRate, rate);
    bool ok = writeHeader(file, kId, bodySize()) &&
              file.writeU16BE(static_cast<uint16_t>(channels)) && file.writeU32BE(frames) &&
              file.writeU16BE(static_cast<uint16_t>(bits)) && file.write(rate, sizeof rate);
    if (ok && compressed)
        ok = file.write(compressionType, 4) && writeCountedString(file, compressionName);
    return ok;
}

bool SoundDataChunk::read(BinaryFile& file, uint32_t size)
{
    if (size < 8 || !file.readU32BE(offset) || !file.readU32BE(blockSize))
        return false;
    dataStart = file.tell();
    dataBytes = size - 8;
    return true;
}

bool SoundDataChunk::writeHeader(BinaryFile& file) const
{
    return aiff::writeHeader(file, kId, bodySize()) && file.writeU32BE(offset) &&
           file.writeU32BE(blockSize);
}

uint32_t MarkerChunk::bodySize() const
{
    uint32_t size = 2;
    for (const Marker& m : markers)
        size += 6 + countedStringSize(m.name);
    return size;
}

bool MarkerChunk::read(BinaryFile& file, uint32_t size)
{
    uint16_t count = 0;
    if (size < 2 || !file.readU16BE(count))
        return false;
    uint32_t left = size - 2;
    markers.clear();
    for (uint16_t i = 0; i < count; ++i) {
        Marker m;
        if (left < 6 || !readI16(file, m.id) || !file.readU32BE(m.position))
            return false;
        left -= 6;
        if (!readCountedString(file, left, m.name))
            return false;
        markers.push_back(std::move(m));
    }
    return true;
}

bool MarkerChunk::write(BinaryFile& file) const
{
    bool ok = writeHeader(file, kId, bodySize()) &&
              file.writeU16BE(static_cast<uint16_t>(markers.size()));
    for (const Marker& m : markers)
        ok = ok && file.writeU16BE(static_cast<uint16_t>(m.id)) && file.writeU32BE(m.position) &&
             writeCountedString(file, m.name);
    return ok;
}

const Marker* MarkerChunk::find(int16_t id) const
{
    for (const Marker& m : markers)
        if (m.id == id)
            return &m;
    return nullptr;
}

bool InstrumentChunk::read(BinaryFile& file, uint32_t size)
{
    uint8_t b[6];
    if (size < bodySize() || !file.read(b, sizeof b))
        return false;
    baseNote = b[0];
    detune = static_cast<int8_t>(b[1]);
    lowNote = b[2];
    highNote = b[3];
    lowVelocity = b[4];
    highVelocity = b[5];
    return readI16(file, gain) && readI16(file, sustainLoop.playMode) &&
           readI16(file, sustainLoop.beginMarker) && readI16(file, sustainLoop.endMarker) &&
           readI16(file, releaseLoop.playMode) && readI16(file, releaseLoop.beginMarker) &&
           readI16(file, releaseLoop.endMarker);
}

bool InstrumentChunk::write(BinaryFile& file) const
{
    const uint8_t b[6] = {baseNote,    static_cast<uint8_t>(detune), lowNote, highNote, lowVelocity,
                          highVelocity};
    bool ok = writeHeader(file, kId, bodySize()) && file.write(b, sizeof b) &&
              file.writeU16BE(static_cast<uint16_t>(gain));
    for (const Loop* loop : {&sustainLoop, &releaseLoop})
        ok = ok && file.writeU16BE(static_cast<uint16_t>(loop->playMode)) &&
             file.writeU16BE(static_cast<uint16_t>(loop->beginMarker)) &&
             file.writeU16BE(static_cast<uint16_t>(loop->endMarker));
    return ok;
}

bool NameChunk::read(BinaryFile& file, uint32_t size)
{
    if (size > file.size() - file.tell())
        return false;
    text.assign(size, '\0');
    return size == 0 || file.read(&text[0], size);
}

bool NameChunk::write(BinaryFile& file) const
{
    return writeHeader(file, kId, bodySize()) && file.write(text.data(), text.size()) &&
           writePad(file, bodySize());
}

bool FormatVersionChunk::read(BinaryFile& file, uint32_t size)
{
    return size >= 4 && file.readU32BE(timestamp);
}

bool FormatVersionChunk::write(BinaryFile& file) const
{
    return writeHeader(file, kId, bodySize()) && file.writeU32BE(timestamp);
}

} // namespace tg::aiff
