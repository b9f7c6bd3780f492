// The two WAV readers: header (format, frames, loop, root key) and full (format and audio bytes).
#include "audiofile/WavFile.h"

#include "audiofile/BinaryFile.h"
#include "core/Message.h"

#include <limits>
#include <new>

namespace tg {

namespace {

constexpr uint16_t kTagPcm = 1;
constexpr uint16_t kTagExtensible = 0xFFFE;

// Opens the file and checks the "RIFF" size "WAVE" preamble.
int readPreamble(BinaryFile& file, const std::string& path, std::string& message)
{
    const char* p = path.c_str();
    if (!file.openForReading(path))
        return setMessage(message, "unable to open %s", p);
    char id[4];
    uint32_t riffSize = 0;
    if (!file.readId(id))
        return setMessage(message, "read error (RIFF): \"%s\"", p);
    if (!sameId(id, "RIFF"))
        return setMessage(message, "wrong format: \"%s\"", p);
    if (!file.readU32LE(riffSize))
        return setMessage(message, "read error (RIFF chunk size): \"%s\"", p);
    if (!file.readId(id))
        return setMessage(message, "read error (WAVE): \"%s\"", p);
    if (!sameId(id, "WAVE"))
        return setMessage(message, "wrong format: \"%s\"", p);
    return 1;
}

// Reads the fields of the `fmt ` chunk at the current position and applies the acceptance
// test; an extensible header passes when GUID bytes 2..5 read as 0 or 1 and then counts as PCM.
int readFormatFields(BinaryFile& file, const std::string& path, WaveFormat& format,
                     std::string& message)
{
    const char* p = path.c_str();
    WaveFormat f;
    f.cbSize = 0;
    if (!file.readU16LE(f.wFormatTag))
        return setMessage(message, "read error (wFormatTag): \"%s\"", p);
    if (!file.readU16LE(f.nChannels))
        return setMessage(message, "read error (nChannels): \"%s\"", p);
    if (!file.readU32LE(f.nSamplesPerSec))
        return setMessage(message, "read error (nSamplesPerSec): \"%s\"", p);
    if (!file.readU32LE(f.nAvgBytesPerSec))
        return setMessage(message, "read error (nAvgBytesPerSec): \"%s\"", p);
    if (!file.readU16LE(f.nBlockAlign))
        return setMessage(message, "read error (nBlockAlign): \"%s\"", p);
    if (!file.readU16LE(f.wBitsPerSample))
        return setMessage(message, "read error (wBitsPerSample): \"%s\"", p);

    bool accepted = false;
    if (f.wFormatTag == kTagPcm) {
        accepted = (f.nChannels == 1 || f.nChannels == 2) &&
                   (f.wBitsPerSample == 8 || f.wBitsPerSample == 16 || f.wBitsPerSample == 24);
    } else if (f.wFormatTag == kTagExtensible) {
        uint8_t guid[16];
        file.skipClamped(10);
        if (!file.read(guid, sizeof guid))
            return setMessage(message, "read error (SubFormat): \"%s\"", p);
        accepted = loadU32LE(guid) <= 1;
        if (accepted)
            f.wFormatTag = kTagPcm;
    }
    if (!accepted)
        return setMessage(message,
                          "unsupported audio format (should be uncompressed PCM, "
                          "8bit/16bit/24bit, mono/stereo):\n\"%s\"",
                          p);
    format = f;
    return 1;
}

// Chunk ids are four printable ASCII characters.
bool isChunkId(const char (&id)[4])
{
    for (char ch : id)
        if (ch < 0x20 || ch > 0x7E)
            return false;
    return true;
}

// Reads the next chunk id. Writers that pad an odd-sized chunk to an even size (as RIFF asks)
// and writers that do not both exist, ours among the latter: after an odd chunk, a byte that
// cannot start an id is taken as the pad and stepped over.
bool readChunkId(BinaryFile& file, bool afterOddChunk, char (&id)[4])
{
    const int64_t here = file.tell();
    if (!file.readId(id))
        return false;
    if (afterOddChunk && !isChunkId(id))
        return file.seek(here + 1) && file.readId(id);
    return true;
}

int32_t framesOf(uint32_t bytes, uint16_t blockAlign)
{
    if (blockAlign == 0)
        return 0;
    uint32_t frames = bytes / blockAlign;
    return frames > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())
               ? std::numeric_limits<int32_t>::max()
               : static_cast<int32_t>(frames);
}

// Reads the `smpl` body at the current position; a short read just ends the parse.
void readSamplerChunk(BinaryFile& file, int32_t& loopStart, int32_t& loopEnd, int32_t& rootKey)
{
    uint32_t manufacturer, product, samplePeriod, unityNote, pitchFraction, smpteFormat,
        smpteOffset, loopCount, samplerData;
    if (!file.readU32LE(manufacturer) || !file.readU32LE(product) ||
        !file.readU32LE(samplePeriod) || !file.readU32LE(unityNote))
        return;
    rootKey = static_cast<int32_t>(unityNote);
    if (!file.readU32LE(pitchFraction) || !file.readU32LE(smpteFormat) ||
        !file.readU32LE(smpteOffset) || !file.readU32LE(loopCount) || !file.readU32LE(samplerData))
        return;
    if (loopCount < 1)
        return;
    uint32_t cueId, type, start, end, fraction, playCount;
    if (!file.readU32LE(cueId) || !file.readU32LE(type) || !file.readU32LE(start))
        return;
    loopStart = static_cast<int32_t>(start);
    if (!file.readU32LE(end))
        return;
    loopEnd = static_cast<int32_t>(end);
    file.readU32LE(fraction);
    file.readU32LE(playCount);
}

} // namespace

int readWavHeader(const std::string& path, WaveFormat& format, int32_t& loopStart, int32_t& loopEnd,
                  int32_t& rootKey, int32_t& frames, std::string& message)
{
    loopStart = -1;
    loopEnd = -1;
    rootKey = -1;
    frames = 0;
    const char* p = path.c_str();
    BinaryFile file;
    if (!readPreamble(file, path, message))
        return 0;
    const int64_t afterWave = file.tell();

    char id[4];
    uint32_t size = 0;
    for (bool afterOddChunk = false;; afterOddChunk = (size & 1u) != 0) {
        if (!readChunkId(file, afterOddChunk, id))
            return setMessage(message, "read error (ID1): \"%s\"", p);
        if (!file.readU32LE(size))
            return setMessage(message, "read error (chunksize1): \"%s\"", p);
        if (sameId(id, "fmt "))
            break;
        file.skipClamped(size);
    }
    if (!readFormatFields(file, path, format, message))
        return 0;

    file.seek(afterWave);
    for (bool afterOddChunk = false;; afterOddChunk = (size & 1u) != 0) {
        if (!readChunkId(file, afterOddChunk, id))
            return setMessage(message, "read error (ID2): \"%s\"", p);
        if (!file.readU32LE(size))
            return setMessage(message, "read error (chunksize2): \"%s\"", p);
        frames = framesOf(size, format.nBlockAlign);
        if (sameId(id, "data"))
            break;
        file.skipClamped(size);
    }

    // The loop is optional: running out of chunks before a `smpl` is still success.
    file.seek(afterWave);
    for (bool afterOddChunk = false;; afterOddChunk = (size & 1u) != 0) {
        if (!readChunkId(file, afterOddChunk, id) || !file.readU32LE(size))
            return 1;
        if (sameId(id, "smpl")) {
            readSamplerChunk(file, loopStart, loopEnd, rootKey);
            return 1;
        }
        file.skipClamped(size);
    }
}

int readWav(const std::string& path, WaveFormat& format, std::vector<uint8_t>& data,
            std::string& message)
{
    data.clear();
    const char* p = path.c_str();
    BinaryFile file;
    if (!readPreamble(file, path, message))
        return 0;
    const int64_t afterWave = file.tell();

    char id[4];
    uint32_t size = 0;
    if (!file.readId(id))
        return setMessage(message, "read error (ID2): \"%s\"", p);
    for (;;) {
        if (!file.readU32LE(size))
            return setMessage(message, "read error (ID1): \"%s\"", p);
        if (sameId(id, "fmt "))
            break;
        file.skipClamped(size);
        if (!readChunkId(file, (size & 1u) != 0, id))
            return setMessage(message, "read error (ID1): \"%s\"", p);
    }
    if (!readFormatFields(file, path, format, message))
        return 0;

    // Here chunks are padded to even sizes, the data chunk included.
    file.seek(afterWave);
    for (;;) {
        if (!file.readId(id))
            return setMessage(message, "read error (ID2): \"%s\"", p);
        if (!file.readU32LE(size))
            return setMessage(message, "read error (chunksize2): \"%s\"", p);
        uint64_t padded = static_cast<uint64_t>(size) + (size & 1u);
        if (sameId(id, "data")) {
            if (padded > static_cast<uint64_t>(std::numeric_limits<int32_t>::max()))
                return setMessage(message, "unable to allocate memory for audio data: \"%s\"", p);
            // A size beyond the end of the file cannot be read; refuse before allocating.
            if (static_cast<int64_t>(padded) > file.size() - file.tell())
                return setMessage(message, "read error (audio data): \"%s\"", p);
            try {
                data.assign(static_cast<size_t>(padded), 0);
            } catch (const std::bad_alloc&) {
                return setMessage(message, "unable to allocate memory for audio data: \"%s\"", p);
            }
            if (!file.read(data.data(), data.size())) {
                data.clear();
                data.shrink_to_fit();
                return setMessage(message, "read error (audio data): \"%s\"", p);
            }
            return 1;
        }
        file.skipClamped(padded);
    }
}

} // namespace tg
