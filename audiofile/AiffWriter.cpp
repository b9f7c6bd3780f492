// The AIFF writer: COMM, MARK and INST for a loop, NAME, SSND with big-endian signed samples.
#include "audiofile/AiffChunks.h"
#include "audiofile/AiffFile.h"

#include "core/Message.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tg {

namespace {

using namespace aiff;

constexpr size_t kSampleBlock = 65536; // bytes converted and written at a time

// Writes the samples big-endian, 8-bit ones signed, then the pad byte of an odd chunk.
bool writeSamples(BinaryFile& file, const uint8_t* data, uint32_t count, int bytesPerSample)
{
    std::vector<uint8_t> block;
    for (uint32_t done = 0; done < count;) {
        const uint32_t n = static_cast<uint32_t>(
            std::min<size_t>(count - done, kSampleBlock - kSampleBlock % bytesPerSample));
        block.assign(data + done, data + done + n);
        for (uint32_t i = 0; i + bytesPerSample <= n; i += bytesPerSample) {
            uint8_t* s = &block[i];
            for (int a = 0, b = bytesPerSample - 1; a < b; ++a, --b)
                std::swap(s[a], s[b]);
            if (bytesPerSample == 1)
                s[0] ^= 0x80;
        }
        if (!file.write(block.data(), n))
            return false;
        done += n;
    }
    return (count & 1u) == 0 || file.write("", 1);
}

} // namespace

int writeAiff(const std::string& path, const WaveFormat& format, const uint8_t* data,
              int32_t byteCount, int32_t loopStart, int32_t loopEnd, const AiffKeyRecord& key,
              std::string& message)
{
    if (format.wBitsPerSample % 8 != 0 || format.wBitsPerSample == 0 ||
        format.wBitsPerSample > 24 || format.nBlockAlign == 0)
        return setMessage(message, "Bit depth not supported.");
    const char* q = path.c_str();

    const uint32_t frames = data && byteCount > 0 ? byteCount / format.nBlockAlign : 0;
    const uint32_t sampleBytes = frames * format.nBlockAlign;

    CommonChunk common;
    common.channels = static_cast<int16_t>(format.nChannels);
    common.frames = frames;
    common.bits = static_cast<int16_t>(format.wBitsPerSample);
    common.sampleRate = format.nSamplesPerSec;

    const bool looped = loopEnd > 0;
    MarkerChunk markers;
    InstrumentChunk instrument;
    if (looped) {
        markers.markers = {{1, static_cast<uint32_t>(loopStart < 0 ? 0 : loopStart), "beg loop"},
                           {2, static_cast<uint32_t>(loopEnd), "end loop"}};
        instrument.baseNote = key.baseNote;
        instrument.detune = 0;
        instrument.lowNote = key.lowNote;
        instrument.highNote = key.highNote;
        instrument.lowVelocity = key.lowVelocity;
        instrument.highVelocity = key.highVelocity;
        instrument.gain = 0;
        instrument.sustainLoop = {1, 1, 2}; // forward, as the program plays loops
    }
    NameChunk name;
    name.text = key.name;
    SoundDataChunk sound;
    sound.dataBytes = sampleBytes;

    uint32_t formSize =
        4 + chunkSpan(common.bodySize()) + chunkSpan(name.bodySize()) + chunkSpan(sound.bodySize());
    if (looped)
        formSize += chunkSpan(markers.bodySize()) + chunkSpan(instrument.bodySize());

    BinaryFile file;
    if (!file.openForWriting(path))
        return setMessage(message, "Unable to open \"%s\"", q);
    bool ok = file.writeText("FORM") && file.writeU32BE(formSize) && file.writeText("AIFF") &&
              common.write(file);
    if (ok && looped)
        ok = markers.write(file) && instrument.write(file);
    ok = ok && name.write(file) && sound.writeHeader(file);
    if (!ok)
        return setMessage(message, "Error writing chunk data to file (\"%s\")", q);
    ok = writeSamples(file, data, sampleBytes, format.wBitsPerSample / 8) && file.finish();
    if (!ok)
        return setMessage(message, "Error writing sound data to file (\"%s\")", q);
    return 1;
}

} // namespace tg
