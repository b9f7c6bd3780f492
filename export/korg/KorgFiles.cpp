// KMP and KSF chunk layouts, written field by field.
#include "export/korg/KorgFiles.h"

#include "export/korg/BigEndian.h"

namespace tg {

std::vector<KmpZone> kmpZones(const TGmsl& msl)
{
    std::vector<KmpZone> zones;
    int previousTop = -1; // no zone yet: keys from 0 on are uncovered
    for (int note : exportedKeys(msl)) {
        const TGmsl_key& key = msl.keys[note];
        if (key.mapLow > previousTop + 1) {
            KmpZone gap;
            gap.gap = true;
            gap.originalKey = previousTop + 1;
            gap.topKey = key.mapLow - 1;
            gap.sampleFile = "SKIPPEDSAMPL";
            zones.push_back(gap);
        }
        KmpZone zone;
        zone.originalKey = note;
        zone.topKey = key.mapHigh;
        zones.push_back(zone);
        previousTop = key.mapHigh;
    }
    return zones;
}

std::vector<uint8_t> buildKmp(const std::string& nameField16, const std::string& nameChunk24,
                              const std::vector<KmpZone>& zones, uint32_t kmpNumber)
{
    std::vector<uint8_t> out;
    be::putChunkHeader(out, "MSP1", 18);
    be::putText(out, nameField16, 16);
    be::put8(out, static_cast<uint32_t>(zones.size()));
    be::put8(out, 0);

    be::putChunkHeader(out, "NAME", 24);
    be::putText(out, nameChunk24, 24);

    be::putChunkHeader(out, "RLP1", static_cast<uint32_t>(18 * zones.size()));
    for (const KmpZone& zone : zones) {
        be::put8(out, static_cast<uint32_t>(zone.originalKey));
        be::put8(out, static_cast<uint32_t>(zone.topKey));
        be::put8(out, 0);  // tune
        be::put8(out, 0);  // level
        be::put8(out, 64); // pan centre
        be::put8(out, 0);  // filter
        be::putText(out, zone.sampleFile, 12);
    }

    be::putChunkHeader(out, "MNO1", 4);
    be::put32(out, kmpNumber);
    return out;
}

namespace {

// Sample `index` of the WAV byte image as a 24-bit signed value.
int32_t sampleAt24(const RenderedSample& sample, size_t offset)
{
    const uint8_t* p = sample.audio.data() + offset;
    switch (sample.format.wBitsPerSample) {
    case 8: return (static_cast<int32_t>(p[0]) - 128) * 65536;
    case 16: return static_cast<int16_t>(p[0] | (p[1] << 8)) * 256;
    default: {
        const int32_t value = p[0] | (p[1] << 8) | (p[2] << 16);
        return value & 0x800000 ? value - 0x1000000 : value;
    }
    }
}

} // namespace

std::vector<uint8_t> ksfSampleData(const RenderedSample& sample, int channel, int bits)
{
    std::vector<uint8_t> out;
    const int channels = sample.format.nChannels;
    const int bytesPerSample = sample.format.wBitsPerSample / 8;
    if (channels < 1 || bytesPerSample < 1 || bytesPerSample > 3)
        return out;
    if (channel >= channels)
        channel = 0;
    const size_t frames = static_cast<size_t>(sample.frames());
    out.reserve(frames * (bits == 8 ? 1 : 2));
    for (size_t frame = 0; frame < frames; ++frame) {
        const size_t offset = frame * sample.format.nBlockAlign + static_cast<size_t>(channel * bytesPerSample);
        const int32_t value = sampleAt24(sample, offset);
        if (bits == 8)
            be::put8(out, static_cast<uint32_t>(value >> 16) & 0xFF); // signed 8-bit
        else
            be::put16(out, static_cast<uint32_t>(value >> 8) & 0xFFFF);
    }
    return out;
}

std::vector<uint8_t> buildKsf(const std::string& sampleName16, const std::string& nameChunk24,
                              const RenderedSample& sample, int channel, int bits,
                              uint32_t sampleNumber)
{
    const std::vector<uint8_t> data = ksfSampleData(sample, channel, bits);
    const uint32_t frames = static_cast<uint32_t>(data.size() / (bits == 8 ? 1 : 2));
    // A looped sample starts its second start and its loop at the loop start and ends at the
    // last loop frame. A one-shot gets loop start 0 and the last frame as its end, and the
    // attributes byte 128 (not looped), so the instrument plays it through once.
    const bool looped = sample.hasLoop && sample.loopStart >= 0 &&
                        sample.loopEnd >= sample.loopStart &&
                        static_cast<uint32_t>(sample.loopEnd) < frames;
    const uint32_t lastFrame = frames > 0 ? frames - 1 : 0;
    const uint32_t loopStart = looped ? static_cast<uint32_t>(sample.loopStart) : 0;
    const uint32_t loopEnd = looped ? static_cast<uint32_t>(sample.loopEnd) : lastFrame;

    std::vector<uint8_t> out;
    be::putChunkHeader(out, "SMP1", 32);
    be::putText(out, sampleName16, 16);
    be::put32(out, 0);         // default bank and start address
    be::put32(out, loopStart); // start address 2
    be::put32(out, loopStart);
    be::put32(out, loopEnd);

    be::putChunkHeader(out, "SMD1", static_cast<uint32_t>(data.size() + 12));
    be::put32(out, sample.format.nSamplesPerSec);
    be::put8(out, looped ? 0 : 128);
    be::put8(out, 0); // loop tune
    be::put8(out, 1); // channels
    be::put8(out, static_cast<uint32_t>(bits));
    be::put32(out, frames);
    out.insert(out.end(), data.begin(), data.end());

    be::putChunkHeader(out, "SNO1", 4);
    be::put32(out, sampleNumber);

    be::putChunkHeader(out, "NAME", 24);
    be::putText(out, nameChunk24, 24);
    return out;
}

} // namespace tg
