// The AIFF/AIFF-C reader: walks the FORM's chunks, then takes the samples and the loop.
#include "audiofile/AiffChunks.h"
#include "audiofile/AiffFile.h"

#include "core/Message.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tg {

namespace {

using namespace aiff;

struct Parsed {
    bool aifc = false;
    bool haveCommon = false, haveSound = false, haveMarkers = false, haveInstrument = false;
    CommonChunk common;
    SoundDataChunk sound;
    MarkerChunk markers;
    InstrumentChunk instrument;
    NameChunk name;
    FormatVersionChunk version;
};

std::string printableId(const char (&id)[4])
{
    std::string s(id, 4);
    for (char& c : s)
        if (c < 0x20 || c > 0x7E)
            c = '?';
    return s;
}

bool littleEndianSamples(const Parsed& p)
{
    return p.aifc && p.common.compressed && sameId(p.common.compressionType, "sowt");
}

// Walks the chunks between `position` and `end`, dispatching on the id. Returns 0 with the
// message of the chunk that could not be read.
int walkChunks(BinaryFile& file, int64_t position, int64_t end, const std::string& path, Parsed& p,
               std::string& notes, std::string& message)
{
    const char* q = path.c_str();
    while (position + 8 <= end) {
        char id[4];
        uint32_t size = 0;
        if (!file.seek(position) || !file.readId(id) || !file.readU32BE(size))
            break;
        const int64_t body = position + 8;
        // A chunk running past the FORM can be read no further than the FORM's end.
        const uint32_t inside =
            static_cast<uint32_t>(std::min<int64_t>(size, std::max<int64_t>(0, end - body)));
        const bool whole = inside == size;
        if (sameId(id, "COMM")) {
            if (!whole || !p.common.read(file, size, p.aifc))
                return setMessage(message, "Error reading Common Chunk from \"%s\".", q);
            if (p.aifc && p.common.compressed && !sameId(p.common.compressionType, "NONE") &&
                !sameId(p.common.compressionType, "sowt"))
                return setMessage(message, "Compression type not supported (\"%s\")",
                                  printableId(p.common.compressionType).c_str());
            p.haveCommon = true;
        } else if (sameId(id, "FVER")) {
            p.version.read(file, inside);
        } else if (sameId(id, "INST")) {
            if (!whole || !p.instrument.read(file, size))
                return setMessage(message, "Error reading Instrument Chunk from \"%s\".", q);
            p.haveInstrument = true;
        } else if (sameId(id, "NAME")) {
            if (!whole || !p.name.read(file, size))
                return setMessage(message, "Error reading Name Chunk from \"%s\".", q);
        } else if (sameId(id, "SSND")) {
            // The sample data may be cut short; the sample read below checks what is there.
            if (!p.sound.read(file, size))
                return setMessage(message, "Error reading Sound Data Chunk from \"%s\".", q);
            p.sound.dataBytes =
                std::max<int64_t>(0, std::min<int64_t>(p.sound.dataBytes, end - p.sound.dataStart));
            p.haveSound = true;
        } else if (sameId(id, "MARK")) {
            if (!whole || !p.markers.read(file, size))
                return setMessage(message, "Error reading Marker Chunk from \"%s\".", q);
            p.haveMarkers = true;
        } else if (!sameId(id, "APPL")) {
            notes += formatText("Unrecognized Chunk: %s\n", printableId(id).c_str());
        }
        position = body + static_cast<int64_t>(size) + (size & 1u);
    }
    return 1;
}

// Reads the frames from SSND into the WAV byte image.
int readSamples(BinaryFile& file, const Parsed& p, AiffContents& out, std::string& message)
{
    const CommonChunk& c = p.common;
    if (c.bits <= 0)
        return setMessage(message, "Error reading Bit Depth.");
    const int bytes = (c.bits + 7) / 8;
    if (bytes > 3)
        return setMessage(message, "Bit depth not supported.");
    const int64_t start = p.sound.dataStart + p.sound.offset;
    if (p.sound.offset > p.sound.dataBytes || !file.seek(start))
        return setMessage(message, "Could not seek to sound data.");
    const int64_t total = static_cast<int64_t>(c.frames) * c.channels * bytes;
    if (total > p.sound.dataBytes - p.sound.offset || total > std::numeric_limits<int32_t>::max())
        return setMessage(message, "Error reading in sound data.");
    out.data.assign(static_cast<size_t>(total), 0);
    if (total > 0 && !file.read(out.data.data(), out.data.size())) {
        out.data.clear();
        return setMessage(message, "Error reading in sound data.");
    }
    const bool swap = !littleEndianSamples(p);
    for (size_t i = 0; i < out.data.size(); i += bytes) {
        uint8_t* s = &out.data[i];
        if (swap)
            for (int a = 0, b = bytes - 1; a < b; ++a, --b)
                std::swap(s[a], s[b]);
        if (bytes == 1)
            s[0] ^= 0x80;
    }
    out.format =
        makeWaveFormat(static_cast<uint32_t>(std::lround(c.sampleRate)),
                       static_cast<uint16_t>(c.channels), static_cast<uint16_t>(bytes * 8));
    return 1;
}

} // namespace

int readAiff(const std::string& path, AiffContents& contents, std::string& message)
{
    contents = AiffContents();
    const char* q = path.c_str();
    BinaryFile file;
    if (!file.openForReading(path))
        return setMessage(message, "unable to open %s", q);
    char id[4], type[4];
    uint32_t formSize = 0;
    if (!file.readId(id) || !file.readU32BE(formSize) || !file.readId(type))
        return setMessage(message, "Error reading Header Chunk from \"%s\".", q);
    if (!sameId(id, "FORM"))
        return setMessage(message, "Format not supported (no \"FORM\" Chunk found).");
    Parsed p;
    p.aifc = sameId(type, "AIFC");
    if (!p.aifc && !sameId(type, "AIFF"))
        return setMessage(message, "Format not supported (no \"AIFF\" or \"AIFC\" Chunk found).");

    std::string notes;
    const int64_t end = std::min<int64_t>(8 + static_cast<int64_t>(formSize), file.size());
    if (!walkChunks(file, 12, end, path, p, notes, message))
        return 0;
    if (!p.haveCommon || !p.haveSound)
        return setMessage(message, "At least one required Chunk was not read in successfully.");
    // The in-memory form holds mono or stereo only.
    if (p.common.channels < 1 || p.common.channels > 2 || !std::isfinite(p.common.sampleRate) ||
        p.common.sampleRate < 1 || p.common.sampleRate > 4294967295.0)
        return setMessage(message, "Error reading Common Chunk from \"%s\".", q);
    if (!readSamples(file, p, contents, message))
        return 0;

    if (p.haveInstrument) {
        contents.rootKey = p.instrument.baseNote;
        const Marker* begin = p.markers.find(p.instrument.sustainLoop.beginMarker);
        const Marker* last = p.markers.find(p.instrument.sustainLoop.endMarker);
        const uint32_t limit = static_cast<uint32_t>(std::numeric_limits<int32_t>::max());
        if (p.haveMarkers && begin && last && begin->position <= limit && last->position <= limit) {
            contents.loopStart = static_cast<int32_t>(begin->position);
            contents.loopEnd = static_cast<int32_t>(last->position);
        }
    }
    contents.name = p.name.text;
    message = notes;
    return 1;
}

} // namespace tg
