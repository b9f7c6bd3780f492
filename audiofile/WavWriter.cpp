// The WAV writer: fmt, one data chunk from up to three buffers, optional smpl, the own "tngb".
#include "audiofile/WavFile.h"

#include "audiofile/BinaryFile.h"
#include "core/Message.h"

namespace tg {

namespace {

constexpr uint32_t kSamplerChunkBody = 36 + 24; // header fields plus one loop
constexpr uint32_t kOwnChunkText = 8;           // "pelnotav"

uint32_t byteCount(const uint8_t* buffer, int32_t bytes)
{
    return buffer && bytes > 0 ? static_cast<uint32_t>(bytes) : 0;
}

bool writeSamplerChunk(BinaryFile& file, const WaveFormat& format, const WavLoopInfo& loop)
{
    // Sample period in nanoseconds, as samplers expect it.
    uint32_t period = format.nSamplesPerSec ? 1000000000u / format.nSamplesPerSec : 0;
    const uint32_t fields[] = {
        0,      // manufacturer
        0,      // product
        period, // sample period
        static_cast<uint32_t>(loop.rootKey),
        0, // pitch fraction
        0, // SMPTE format
        0, // SMPTE offset
        1, // number of loops
        0, // sampler data
        0, // cue point id
        0, // loop type: forward
        static_cast<uint32_t>(loop.loopStart),
        static_cast<uint32_t>(loop.loopEnd), // inclusive
        0,                                   // fraction
        0,                                   // play count: endless
    };
    bool ok = file.writeText("smpl") && file.writeU32LE(kSamplerChunkBody);
    for (uint32_t value : fields)
        ok = ok && file.writeU32LE(value);
    return ok;
}

} // namespace

int writeWav(const std::string& path, const WaveFormat& format, const uint8_t* a, int32_t aBytes,
             const uint8_t* b, int32_t bBytes, const uint8_t* c, int32_t cBytes,
             std::string& message, const WavLoopInfo* loop)
{
    const uint32_t na = byteCount(a, aBytes), nb = byteCount(b, bBytes), nc = byteCount(c, cBytes);
    const uint32_t dataBytes = na + nb + nc;
    // Without a loop an odd data chunk gets no pad byte. With one, it does: the `smpl` chunk
    // must start on an even offset or other readers lose the loop.
    const uint32_t padBytes = loop ? (dataBytes & 1u) : 0;
    const uint32_t samplerBytes = loop ? padBytes + 8 + kSamplerChunkBody : 0;

    BinaryFile file;
    if (!file.openForWriting(path))
        return setMessage(message, "unable to open %s", path.c_str());
    bool ok = file.writeText("RIFF") && file.writeU32LE(52 + dataBytes + samplerBytes) &&
              file.writeText("WAVEfmt ") && file.writeU32LE(16) && file.writeU16LE(1) &&
              file.writeU16LE(format.nChannels) && file.writeU32LE(format.nSamplesPerSec) &&
              file.writeU32LE(format.nAvgBytesPerSec) && file.writeU16LE(format.nBlockAlign) &&
              file.writeU16LE(format.wBitsPerSample) && file.writeText("data") &&
              file.writeU32LE(dataBytes) && file.write(a, na) && file.write(b, nb) &&
              file.write(c, nc);
    if (ok && padBytes)
        ok = file.write("", 1);
    if (ok && loop)
        ok = writeSamplerChunk(file, format, *loop);
    ok = ok && file.writeText("tngb") && file.writeU32LE(kOwnChunkText) &&
         file.writeText("pelnotav");
    ok = ok && file.finish(); // a failed file is thrown away, the old one kept
    if (!ok)
        return setMessage(message, "error writing %s", path.c_str());
    return 1;
}

int writeWav(const std::string& path, const WaveFormat& format, const std::vector<uint8_t>& data,
             std::string& message, const WavLoopInfo* loop)
{
    return writeWav(path, format, data.data(), static_cast<int32_t>(data.size()), nullptr, 0,
                    nullptr, 0, message, loop);
}

} // namespace tg
