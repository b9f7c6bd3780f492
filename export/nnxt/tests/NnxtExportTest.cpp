// NN-XT patches read back by a reader written from the format note: every zone's sample file,
// root, keys, velocities and loop, and libsndfile finds the rendered audio in each file.
#include "export/nnxt/NnxtExport.h"

#include "export/tests/FurtherFormatsFixture.h"
#include "tests/clients/SndfileView.h"

#include <gtest/gtest.h>

#include <set>

namespace tg {
namespace {

// Big-endian fields of a byte string, bounded by `end`; a read past it clears `ok`.
struct Cursor {
    const std::string& bytes;
    size_t pos = 0;
    size_t end = 0;
    bool ok = true;

    uint32_t number(int width)
    {
        uint32_t value = 0;
        for (int i = 0; i < width; ++i) {
            ok = ok && pos < end;
            value = value << 8 | (ok ? uint8_t(bytes[pos++]) : 0u);
        }
        return value;
    }
    void version()
    {
        ok = ok && number(1) == 0xBC;
        number(4);
    }
    std::string text()
    {
        const uint32_t size = number(4);
        ok = ok && size <= end - pos;
        if (!ok)
            return {};
        pos += size;
        return bytes.substr(pos - size, size);
    }
    // The next chunk: its id, and a cursor over its data; `pos` moves past the padded data.
    Cursor chunk(std::string& id)
    {
        ok = ok && end - pos >= 8;
        id = ok ? bytes.substr(pos, 4) : "";
        pos += ok ? 4 : 0;
        const uint32_t size = number(4);
        ok = ok && size <= end - pos;
        Cursor data{bytes, pos, ok ? pos + size : pos};
        pos = std::min(end, pos + size + size % 2);
        return data;
    }
};

struct ReadZone {
    uint32_t group, lowKey, highKey, lowVelocity, highVelocity, root;
    uint32_t playEnd, loopStart, loopEnd, frames, playMode, reference;
};

struct ReadPatch {
    bool ok = false;
    std::string name, device;
    std::vector<std::string> files; // REFE order
    uint32_t groups = 0;
    std::vector<ReadZone> zones;
};

ReadPatch readPatch(const std::string& bytes)
{
    ReadPatch patch;
    Cursor file{bytes, 0, bytes.size()};
    std::string id;
    Cursor form = file.chunk(id);
    bool ok = id == "FORM" && bytes.compare(8, 4, "PTCH") == 0;
    form.pos += 4;
    while (ok && form.ok && form.pos < form.end) {
        Cursor c = form.chunk(id);
        if (id == "CAT ") {
            c.pos += 4; // "REFS"
            while (c.ok && c.pos < c.end) {
                Cursor ref = c.chunk(id);
                ref.version();
                ref.version();
                ok = ok && ref.number(1) == 1 && ref.number(4) == 0;
                std::string path;
                for (uint32_t n = ref.number(4); n > 0 && ref.ok; --n)
                    path += (path.empty() ? "" : "/") + ref.text();
                patch.files.push_back(path);
                ok = ok && id == "REFE" && ref.ok;
            }
        } else if (id == "DESC") {
            c.version();
            c.number(1);
            patch.name = c.text();
            patch.device = c.text();
        } else if (id == "BODY") {
            c.version();
            c.version();
            patch.groups = c.number(4);
            c.pos += 7 * size_t(patch.groups);
            c.version();
            const uint32_t count = c.number(4);
            for (uint32_t z = 0; z < count && c.ok; ++z) {
                const size_t start = c.pos;
                auto at = [&](size_t offset, int width) {
                    c.pos = start + offset;
                    return c.number(width);
                };
                patch.zones.push_back({at(0, 4), at(4, 1), at(5, 1), at(6, 1), at(7, 1), at(8, 1),
                                       at(15, 4), at(19, 4), at(23, 4), at(27, 4), at(31, 1), 0});
                c.pos = start + 241;
            }
            for (ReadZone& zone : patch.zones) {
                ok = ok && c.number(1) == 1;
                c.version();
                c.number(1);
                zone.reference = c.number(4);
            }
        }
        ok = ok && c.ok;
    }
    patch.ok = ok && form.ok;
    return patch;
}

class NnxtExport : public ::testing::Test {
  protected:
    test::RecordedProject recorded;

    // Exports both layers at 44.1 kHz (the recordings' rate) and `depth`, then checks every
    // zone against what the pipeline rendered.
    void exportAndReadBack(uint32_t depth, int sndfileSubtype)
    {
        std::string message;
        ASSERT_EQ(TGexport_NNXT(recorded.out, "Strings", recorded.project.get(), {0, 1},
                                0x91010008 | depth, false, message, recorded.services),
                  1)
            << message;
        const ReadPatch patch = readPatch(test::readFileBytes(recorded.out + "/Strings.sxt"));
        ASSERT_TRUE(patch.ok);
        EXPECT_EQ(patch.name, "Strings");
        EXPECT_EQ(patch.device, "NNXT Digital Sampler");
        EXPECT_EQ(patch.groups, 2u);
        ASSERT_EQ(patch.zones.size(), 4u);
        ASSERT_EQ(patch.files.size(), 4u);

        const auto mapped = recorded.zones();
        std::set<std::pair<int, int>> seen;
        for (const ReadZone& zone : patch.zones) {
            ASSERT_LT(zone.reference, patch.files.size());
            const std::string& file = patch.files[zone.reference];
            SCOPED_TRACE(file);
            const int layer = int(zone.group);
            const int note = int(zone.root);
            ASSERT_TRUE(mapped.count({layer, note}));
            seen.insert({layer, note});
            EXPECT_EQ(int(zone.lowKey), mapped.at({layer, note}).first);
            EXPECT_EQ(int(zone.highKey), mapped.at({layer, note}).second);
            EXPECT_EQ(zone.lowVelocity, layer == 0 ? 1u : 65u);
            EXPECT_EQ(zone.highVelocity, layer == 0 ? 64u : 127u);

            const RenderedKey& rendered = recorded.rendered.at({layer, note});
            const test::SndfileView wav = test::viewWithSndfile(recorded.out + "/" + file);
            ASSERT_TRUE(wav.file) << sf_strerror(nullptr);
            EXPECT_EQ(wav.info.format & SF_FORMAT_SUBMASK, sndfileSubtype);
            EXPECT_EQ(wav.info.channels, layer + 1);
            EXPECT_EQ(wav.info.samplerate, 44100);
            EXPECT_EQ(wav.info.frames, int64_t(zone.frames));
            EXPECT_EQ(zone.playEnd, zone.frames);
            // The recordings are 16 bit; at the 32-bit scale libsndfile reads, a 24-bit copy
            // holds the very same values.
            std::vector<int32_t> samples(size_t(wav.info.frames) * size_t(wav.info.channels));
            ASSERT_EQ(sf_readf_int(wav.file.get(), samples.data(), wav.info.frames),
                      wav.info.frames);
            ASSERT_EQ(rendered.note.size(), samples.size() * 2);
            for (size_t i = 0; i < samples.size(); ++i)
                ASSERT_EQ(
                    samples[i],
                    int32_t(uint32_t(rendered.note[2 * i] | rendered.note[2 * i + 1] << 8) << 16))
                    << "sample " << i;

            const bool looped = !(layer == 1 && note == 67);
            EXPECT_EQ(zone.playMode, looped ? 1u : 0u);
            EXPECT_EQ(wav.hasInstrument, looped);
            if (looped) {
                EXPECT_EQ(int32_t(zone.loopStart), rendered.loopStart);
                EXPECT_EQ(int32_t(zone.loopEnd), rendered.loopEnd);
                ASSERT_GE(wav.instrument.loop_count, 1);
                EXPECT_EQ(wav.instrument.loops[0].start, zone.loopStart);
                EXPECT_EQ(wav.instrument.loops[0].end, zone.loopEnd + 1); // one past the last
            }
        }
        EXPECT_EQ(seen.size(), 4u);
    }
};

TEST_F(NnxtExport, EveryZoneComesBackWithItsSampleKeysVelocitiesAndLoop)
{
    exportAndReadBack(0x400, SF_FORMAT_PCM_16);
}

TEST_F(NnxtExport, TwentyFourBitSamplesHoldTheRenderedAudio)
{
    exportAndReadBack(0x800, SF_FORMAT_PCM_24);
}

} // namespace
} // namespace tg
