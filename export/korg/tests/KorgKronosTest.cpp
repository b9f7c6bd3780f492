// The Kronos files read back big-endian: script, KMP zones with gaps, KSF data and names.
#include "export/korg/KorgKronos.h"
#include "export/korg/KorgNames.h"

#include "export/tests/SyntheticProject.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

namespace tg {
namespace {

using test::addKey;
using test::addLayer;

// A bounded big-endian chunk reader over a file image.
struct ChunkReader {
    std::string bytes;
    size_t at = 0;

    uint32_t u8() { return at < bytes.size() ? static_cast<uint8_t>(bytes[at++]) : 0xFFFFFFFF; }
    uint32_t u32()
    {
        uint32_t value = 0;
        for (int i = 0; i < 4; ++i)
            value = (value << 8) | (u8() & 0xFF);
        return value;
    }
    // The next `count` bytes or 32-bit words, to check a run of fields at once.
    std::vector<uint32_t> u8s(int count) { return many(count, &ChunkReader::u8); }
    std::vector<uint32_t> u32s(int count) { return many(count, &ChunkReader::u32); }
    std::vector<uint32_t> many(int count, uint32_t (ChunkReader::*read)())
    {
        std::vector<uint32_t> values;
        for (int i = 0; i < count; ++i)
            values.push_back((this->*read)());
        return values;
    }
    std::string text(size_t width)
    {
        std::string out = at + width <= bytes.size() ? bytes.substr(at, width) : std::string();
        at += width;
        return out;
    }
    // Reads a chunk header, checks its id and returns its size.
    uint32_t chunk(const char* id)
    {
        EXPECT_EQ(text(4), id);
        return u32();
    }
    bool done() const { return at == bytes.size(); }
};

struct KmpZoneRead {
    uint32_t original, top;
    std::string file;
    bool operator==(const KmpZoneRead& o) const
    {
        return original == o.original && top == o.top && file == o.file;
    }
};

void PrintTo(const KmpZoneRead& z, std::ostream* os)
{
    *os << z.original << "-" << z.top << " " << z.file;
}

std::vector<KmpZoneRead> readKmp(const std::string& path, std::string& name16, std::string& name24,
                                 uint32_t& number)
{
    ChunkReader r{test::readFileBytes(path)};
    std::vector<KmpZoneRead> zones;
    EXPECT_EQ(r.chunk("MSP1"), 18u);
    name16 = r.text(16);
    const uint32_t count = r.u8();
    EXPECT_EQ(r.u8(), 0u);
    EXPECT_EQ(r.chunk("NAME"), 24u);
    name24 = r.text(24);
    EXPECT_EQ(r.chunk("RLP1"), 18u * count);
    for (uint32_t i = 0; i < count; ++i) {
        KmpZoneRead zone{r.u8(), r.u8(), ""};
        EXPECT_EQ(r.u8s(4), (std::vector<uint32_t>{0, 0, 64, 0})); // tune, level, pan, filter
        zone.file = r.text(12);
        zones.push_back(zone);
    }
    EXPECT_EQ(r.chunk("MNO1"), 4u);
    number = r.u32();
    EXPECT_TRUE(r.done()) << path;
    return zones;
}

struct KronosRun {
    std::unique_ptr<Project> project = test::makeProject("Grand Piano Deluxe");
    test::TempDir dir;
    test::SyntheticSource source;
    std::string folder;

    KronosRun()
    {
        const int a = addLayer(*project, "Felt", 0, 127, 36, 96);
        addKey(*project, a, 40, 36, 47, 1); // first zone starts at 36: gap 0-35
        addKey(*project, a, 50, 48, 55);
        addKey(*project, a, 62, 60, 70); // gap 56-59
        const int b = addLayer(*project, "Strings Ensemble", 0, 127, 0, 127);
        addKey(*project, b, 0, 0, 127); // covers everything: no gap
        source.frames = 300;
        source.loopedNotes[40] = true;
        folder = dir.file("Grand 07");
    }

    int run(uint32_t settings, std::string& message)
    {
        return TGexport_KORGKRONOS(dir.path(), *project, {0, 1}, settings, 7, source, message);
    }
};

TEST(KorgKronos, NamesFollowTheirFormatsCutAndPadded)
{
    // The folder and KMP file names, and names as short as the exports below write, are read
    // back there.
    EXPECT_EQ(kmpNameField("A name of sixteen+", 1), "A name of sixtee");
    EXPECT_EQ(ksfSampleName("Grand Piano Deluxe", 40, false, 0), "Grand Piano -040");
    EXPECT_EQ(ksfSampleName("Grand Piano Deluxe", 40, true, 1), "Grand Pian-040-R");
    EXPECT_EQ(ksfNameChunk("Grand Piano Deluxe Concert", 40, false, 0), "Grand Piano Deluxe C-040");
    EXPECT_EQ(ksfNameChunk("Felt", 127, true, 0), "Felt-127              -L");
}

TEST(KorgKronos, MonoExportWritesScriptGapZonesAndSamplesThatReadBack)
{
    KronosRun run;
    std::string message;
    ASSERT_EQ(run.run(0x40400, message), 1) << message; // mono mix, 16 bit

    EXPECT_EQ(test::readFileBytes(run.folder + ".KSC"),
              "#KORG Script Version 1.0\r\nFelt000.KMP\r\nStrin010.KMP\r\n");

    std::string name16, name24;
    uint32_t number = 0;
    const auto zones = readKmp(run.folder + "/Felt000.KMP", name16, name24, number);
    EXPECT_EQ(name16, "Felt          -L");
    EXPECT_EQ(name24, "Felt                  -L");
    EXPECT_EQ(number, 1u);
    // Gaps below and between the zones are filled with skipped samples.
    ASSERT_EQ(zones, (std::vector<KmpZoneRead>{{0, 35, "SKIPPEDSAMPL"},
                                               {40, 47, "MS001001.KSF"},
                                               {50, 55, "MS001002.KSF"},
                                               {56, 59, "SKIPPEDSAMPL"},
                                               {62, 70, "MS001003.KSF"}}));

    const auto full = readKmp(run.folder + "/Strin010.KMP", name16, name24, number);
    ASSERT_EQ(full.size(), 1u);
    EXPECT_EQ(full[0].file, "MS002004.KSF");

    // The looped sample at key 40.
    ChunkReader ksf{test::readFileBytes(run.folder + "/" + zones[1].file)};
    EXPECT_EQ(ksf.chunk("SMP1"), 32u);
    EXPECT_EQ(ksf.text(16), "Felt-040        ");
    // Start, start address 2 (= loop start, 300 / 4), loop start, loop end (last loop frame).
    EXPECT_EQ(ksf.u32s(4), (std::vector<uint32_t>{0, 75, 75, 290}));
    EXPECT_EQ(ksf.chunk("SMD1"), 300u * 2 + 12);
    EXPECT_EQ(ksf.u32(), 48000u);
    EXPECT_EQ(ksf.u8s(4), (std::vector<uint32_t>{0, 0, 1, 16})); // looped, tune, channels, bits
    EXPECT_EQ(ksf.u32(), 300u);
    // 16-bit frames read back big-endian, channel by channel: TemplateFormatsInPipeline.
    ksf.text(300 * 2);
    EXPECT_EQ(ksf.chunk("SNO1"), 4u);
    EXPECT_EQ(ksf.u32(), 1u);
    EXPECT_EQ(ksf.chunk("NAME"), 24u);
    EXPECT_EQ(ksf.text(24), "Felt-040                ");
    EXPECT_TRUE(ksf.done());

    // A one-shot: loop start 0, end at the last frame, attributes 128.
    ChunkReader once{test::readFileBytes(run.folder + "/MS001002.KSF")};
    once.chunk("SMP1");
    once.text(16);
    EXPECT_EQ(once.u32s(4), (std::vector<uint32_t>{0, 0, 0, 299}));
    once.chunk("SMD1");
    once.u32();
    EXPECT_EQ(once.u8(), 128u);
}

TEST(KorgKronos, StereoGivesLeftAndRightKmpsOfMonoSamples)
{
    KronosRun run;
    run.source.bits = 8;
    std::string message;
    ASSERT_EQ(run.run(0x20200, message), 1) << message; // stereo, 8 bit
    EXPECT_EQ(test::readFileBytes(run.folder + ".KSC"),
              "#KORG Script Version 1.0\r\nFelt000.KMP\r\nFelt001.KMP\r\nStrin010.KMP\r\n"
              "Strin011.KMP\r\n");
    std::string name16, name24;
    uint32_t number = 0;
    const auto right = readKmp(run.folder + "/Felt001.KMP", name16, name24, number);
    EXPECT_EQ(name16, "Felt          -R");
    EXPECT_EQ(name24, "Felt                  -R");
    EXPECT_EQ(number, 2u);
    ASSERT_EQ(right.size(), 5u);
    EXPECT_EQ(right[1].file, "MS002004.KSF"); // sample numbers run on over KMPs

    ChunkReader ksf{test::readFileBytes(run.folder + "/MS002004.KSF")};
    ksf.chunk("SMP1");
    EXPECT_EQ(ksf.text(16), "Felt-040      -R");
    ksf.text(16);
    EXPECT_EQ(ksf.chunk("SMD1"), 300u + 12);
    ksf.u32();
    EXPECT_EQ(ksf.u8s(4), (std::vector<uint32_t>{0, 0, 1, 8})); // looped, tune, channels, bits
    EXPECT_EQ(ksf.u32(), 300u);
    const RenderedSample input = test::syntheticSample(0, 40, 300, 2, 8, true);
    for (int frame = 0; frame < 300; ++frame)
        ASSERT_EQ(ksf.u8(), static_cast<uint32_t>(input.audio[frame * 2 + 1] ^ 0x80))
            << "frame " << frame; // right channel, signed
}

TEST(KorgKronos, FailuresCarryTheNameLineAndThePath)
{
    KronosRun run;
    std::string message;
    test::writeFileBytes(run.folder, "a file where the folder should go");
    EXPECT_EQ(run.run(0x40400, message), 0);
    EXPECT_EQ(message,
              "TGexport_KORGKRONOS():\n\nunable to create directory \"" + run.folder + "\"");

    KronosRun failing;
    failing.source.failAfterFirst = true;
    EXPECT_EQ(failing.run(0x40400, message), 0);
    EXPECT_EQ(message, "TGexport_KORGKRONOS():\n\nExport aborted.");
}

} // namespace
} // namespace tg
