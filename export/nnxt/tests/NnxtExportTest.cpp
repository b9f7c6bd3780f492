// NN-XT patches read back by a reader written from the format note: every zone's sample file,
// root, keys, velocities and loop, and libsndfile finds the rendered audio in each file.
#include "export/nnxt/NnxtExport.h"

#include "export/tests/FurtherFormatsFixture.h"
#include "tests/clients/SndfileView.h"

#include <gtest/gtest.h>

#include <set>

namespace tg {
namespace {

// Big-endian fields of `bytes` from `pos` up to `end`; a read past `end` clears `ok`.
struct Cursor {
    const std::string& bytes;
    size_t pos, end;
    bool ok = true;

    uint32_t number(size_t width)
    {
        ok = ok && width <= end - pos;
        uint32_t value = 0;
        for (size_t i = 0; ok && i < width; ++i)
            value = value << 8 | uint8_t(bytes[pos++]);
        return value;
    }
    // A version mark: 0xBC, major, minor, revision 0, 0.
    void version(uint32_t major, uint32_t minor)
    {
        ok = ok && number(1) == 0xBC && number(1) == major && number(1) == minor && number(2) == 0;
    }
    std::string text()
    {
        const uint32_t size = number(4);
        ok = ok && size <= end - pos;
        pos += ok ? size : 0;
        return ok ? bytes.substr(pos - size, size) : "";
    }
    // The next chunk's id and a cursor over its data; `pos` moves past the padded data.
    Cursor chunk(std::string& id)
    {
        id = bytes.substr(pos, 4);
        number(4);
        const uint32_t size = number(4);
        ok = ok && size <= end - pos;
        Cursor data{bytes, pos, ok ? pos + size : pos};
        pos = std::min(end, pos + size + size % 2);
        return data;
    }
};

struct ReadZone {
    uint32_t group, lowKey, highKey, lowVelocity, highVelocity, root;
    uint32_t playEnd, loopStart, loopEnd, frames, playMode, sustain, reference;
};

struct ReadPatch {
    bool ok = false;
    std::string name;               // DESC
    std::vector<std::string> files; // in REFE order
    uint32_t groups = 0;
    std::vector<ReadZone> zones;
};

void readReferences(Cursor c, ReadPatch& patch)
{
    std::string id;
    for (c.pos += 4; c.ok && c.pos < c.end;) { // after "REFS"
        Cursor ref = c.chunk(id);
        ref.version(1, 1);
        ref.version(1, 1);
        patch.ok = patch.ok && id == "REFE" && ref.number(1) == 1 && ref.number(4) == 0;
        std::string path;
        for (uint32_t n = ref.number(4); n > 0 && ref.ok; --n)
            path += (path.empty() ? "" : "/") + ref.text();
        patch.files.push_back(path);
        patch.ok = patch.ok && ref.ok;
    }
}

void readBody(Cursor c, ReadPatch& patch)
{
    c.version(1, 0);
    c.version(2, 0);
    patch.groups = c.number(4);
    c.pos += 7 * size_t(patch.groups);
    c.version(2, 2);
    const uint32_t count = c.number(4);
    for (uint32_t z = 0; z < count && c.ok; ++z) {
        const size_t start = c.pos;
        auto at = [&](size_t offset, size_t width) {
            c.pos = start + offset;
            return c.number(width);
        };
        patch.zones.push_back({at(0, 4), at(4, 1), at(5, 1), at(6, 1), at(7, 1), at(8, 1),
                               at(15, 4), at(19, 4), at(23, 4), at(27, 4), at(31, 1), at(216, 4),
                               0});
        c.pos = start + 241;
    }
    for (ReadZone& zone : patch.zones) {
        patch.ok = patch.ok && c.number(1) == 1;
        c.version(4, 1);
        c.number(1);
        zone.reference = c.number(4);
    }
    patch.ok = patch.ok && c.ok;
}

ReadPatch readPatch(const std::string& bytes)
{
    ReadPatch patch;
    Cursor file{bytes, 0, bytes.size()};
    std::string id;
    Cursor form = file.chunk(id);
    patch.ok = id == "FORM" && form.number(4) == 0x50544348; // "PTCH"
    while (patch.ok && form.ok && form.pos < form.end) {
        Cursor c = form.chunk(id);
        if (id == "CAT ")
            readReferences(c, patch);
        else if (id == "DESC") {
            c.version(1, 3);
            patch.ok = patch.ok && c.number(1) == 0x12;
            patch.name = c.text();
            patch.ok = patch.ok && c.ok;
        } else if (id == "BODY")
            readBody(c, patch);
    }
    patch.ok = patch.ok && form.ok;
    return patch;
}

class NnxtExport : public ::testing::Test {
  protected:
    // The fixture records what was rendered by the key's place in the Project, which keys
    // rendered ahead on workers (copies) do not have.
    void SetUp() override { recorded.services.renderThreads = 1; }

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
        EXPECT_EQ(patch.groups, 2u);
        ASSERT_EQ(patch.zones.size(), 4u);
        ASSERT_EQ(patch.files.size(), 4u);

        const auto mapped = recorded.zones();
        std::set<std::pair<int, int>> seen;
        for (const ReadZone& zone : patch.zones) {
            ASSERT_LT(zone.reference, patch.files.size());
            SCOPED_TRACE(patch.files[zone.reference]);
            const std::pair<int, int> key{int(zone.group), int(zone.root)};
            ASSERT_TRUE(mapped.count(key));
            seen.insert(key);
            EXPECT_EQ(int(zone.lowKey), mapped.at(key).first);
            EXPECT_EQ(int(zone.highKey), mapped.at(key).second);
            EXPECT_EQ(zone.lowVelocity, key.first == 0 ? 1u : 65u);
            EXPECT_EQ(zone.highVelocity, key.first == 0 ? 64u : 127u);

            const RenderedKey& rendered = recorded.rendered.at(key);
            const bool looped = key != std::pair<int, int>{1, 67};
            EXPECT_EQ(zone.playMode, looped ? 1u : 0u);
            EXPECT_EQ(zone.sustain, 1000u);
            EXPECT_EQ(int32_t(zone.loopStart), looped ? rendered.loopStart : 0);
            EXPECT_EQ(int32_t(zone.loopEnd), looped ? rendered.loopEnd : 0);

            const test::SndfileView wav =
                test::viewWithSndfile(recorded.out + "/" + patch.files[zone.reference]);
            ASSERT_TRUE(wav.file) << sf_strerror(nullptr);
            EXPECT_EQ(wav.info.format & SF_FORMAT_SUBMASK, sndfileSubtype);
            EXPECT_EQ(wav.info.channels, key.first + 1);
            EXPECT_EQ(wav.info.frames, int64_t(zone.frames));
            EXPECT_EQ(zone.playEnd, zone.frames);
            // The recordings are 16 bit: at the 32-bit scale libsndfile reads, a 24-bit copy
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

TEST_F(NnxtExport, ALayerWithoutKeySamplesInItsKeyRangeGetsNoGroup)
{
    recorded.project->msl[0].KBrangeIn = 80;
    recorded.project->msl[0].KBrangeOut = 90;
    std::string message;
    ASSERT_EQ(TGexport_NNXT(recorded.out, "Strings", recorded.project.get(), {0, 1}, 0x91010408,
                            false, message, recorded.services),
              1)
        << message;
    const ReadPatch patch = readPatch(test::readFileBytes(recorded.out + "/Strings.sxt"));
    ASSERT_TRUE(patch.ok);
    EXPECT_EQ(patch.groups, 1u);
    ASSERT_EQ(patch.zones.size(), 2u);
    for (const ReadZone& zone : patch.zones) {
        EXPECT_EQ(zone.group, 0u);
        EXPECT_EQ(zone.lowVelocity, 65u); // the "Loud" layer's
    }
}

} // namespace
} // namespace tg
