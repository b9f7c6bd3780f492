// The bank's layout read back field by field.
#include "export/SoundFont2File.h"

#include "export/tests/Sf2Reader.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/Pcm16.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

std::vector<uint8_t> ramp16(size_t frames, int channels, int step)
{
    return tg::test::pcm16(frames, channels, [step](size_t i, int c) {
        return int16_t(int(i) * step * (c ? -1 : 1));
    });
}

tg::Sf2KeySample keySample(const std::vector<uint8_t>& data, int channels, int note)
{
    tg::Sf2KeySample s;
    s.ordinal = 1;
    s.note = note;
    s.format = tg::makeWaveFormat(48000, uint16_t(channels), 16);
    s.data = &data;
    s.lowKey = uint8_t(note - 2);
    s.highKey = uint8_t(note + 3);
    s.lowVelocity = 1;
    s.highVelocity = 64;
    return s;
}

} // namespace

TEST(SoundFont2File, LayoutRecordsLinksAndTerminals)
{
    tg::test::TempDir dir;
    const std::string path = dir.file("bank.sf2");
    const auto mono = ramp16(100, 1, 3);
    const auto stereo = ramp16(50, 2, 5);
    std::string message;
    tg::SoundFont2File bank;
    ASSERT_EQ(bank.open(path, "A bank name longer than nineteen", 2, message), 1) << message;
    auto looped = keySample(mono, 1, 60);
    looped.hasLoop = true;
    looped.loopStart = 10;
    looped.loopEnd = 89;
    ASSERT_EQ(bank.add(looped, message), 1) << message;
    ASSERT_EQ(bank.add(keySample(stereo, 2, 61), message), 1) << message;
    ASSERT_EQ(bank.finish(message), 1) << message;

    const tg::test::Sf2Bank sf2 = tg::test::readSf2(tg::test::readFileBytes(path));
    ASSERT_TRUE(sf2.ok) << sf2.error;
    EXPECT_EQ(tg::test::fieldName(sf2.chunks.at("INAM"), 0, 48),
              "A bank name longer than nineteen");

    // Points: 100 + 128 zeros, then 50 + 128 for each stereo half.
    ASSERT_EQ(sf2.points.size(), 100u + 128 + 2 * (50 + 128));
    EXPECT_EQ(sf2.points[99], 297);
    for (size_t i = 100; i < 228; ++i)
        ASSERT_EQ(sf2.points[i], 0) << i;
    EXPECT_EQ(sf2.points[228 + 49], 245);        // left half
    EXPECT_EQ(sf2.points[228 + 178 + 49], -245); // right half

    // Rate, root key, stereo links, pan and loop mode are what FluidSynth plays by:
    // SoundFontInFluidSynth in tests/clients hears them. Here: names and points. The loop end
    // lies one past the last loop point; without a loop the points rest on the start.
    std::vector<std::string> headers;
    for (const auto& header : sf2.samples)
        headers.push_back(header.text());
    EXPECT_EQ(headers, (std::vector<std::string>{
                           "S_001_060_C4 0-100 loop 10-90", "S_001_061_C#4_L 228-278 loop 228-228",
                           "S_001_061_C#4_R 406-456 loop 406-406", "EOS 0-0 loop 0-0"}));

    // Pan, loop mode and the zones' key ranges are what FluidSynth plays by
    // (SoundFontInFluidSynth); here: the order the format demands (key range first, velocity
    // range next, the sample last), the velocities, and the terminals.
    const std::vector<uint16_t> zoneStarts = {0, 4, 9, 14};
    ASSERT_EQ(sf2.igen.size(), 15u);
    for (uint16_t zone = 0; zone < 3; ++zone) {
        EXPECT_EQ(sf2.igen[zoneStarts[zone]].oper, 43);
        EXPECT_EQ(sf2.igen[zoneStarts[zone] + 1].oper, 44);
        EXPECT_EQ(sf2.igen[zoneStarts[zone + 1] - 1].oper, 53);
        EXPECT_EQ(sf2.igen[zoneStarts[zone + 1] - 1].amount, zone);
    }
    EXPECT_EQ(sf2.igen[1].low(), 1);
    EXPECT_EQ(sf2.igen[1].high(), 64);
    EXPECT_EQ(sf2.igen[14].oper, 0);
    const std::string& phdr = sf2.chunks.at("phdr");
    EXPECT_EQ(tg::test::fieldName(phdr, 0, 20), "A bank name longer ");
    EXPECT_EQ(phdr[19], '\0');
    EXPECT_EQ(tg::test::fieldName(phdr, 38, 20), "EOP");
    EXPECT_EQ(tg::test::fieldName(sf2.chunks.at("inst"), 22, 20), "EOI");
}

TEST(SoundFont2File, LoopPointsStayInsideTheSample)
{
    tg::test::TempDir dir;
    const auto mono = ramp16(100, 1, 3);
    std::string message;
    tg::SoundFont2File bank;
    ASSERT_EQ(bank.open(dir.file("b.sf2"), "b", 2, message), 1) << message;
    auto past = keySample(mono, 1, 60);
    past.hasLoop = true;
    past.loopStart = -5;
    past.loopEnd = 250; // past the last frame
    ASSERT_EQ(bank.add(past, message), 1);
    auto empty = keySample(mono, 1, 62);
    empty.hasLoop = true;
    empty.loopStart = 120; // starts after the sample
    empty.loopEnd = 130;
    ASSERT_EQ(bank.add(empty, message), 1);
    ASSERT_EQ(bank.finish(message), 1) << message;
    const tg::test::Sf2Bank sf2 = tg::test::readSf2(tg::test::readFileBytes(dir.file("b.sf2")));
    ASSERT_EQ(sf2.samples.size(), 3u);
    EXPECT_EQ(sf2.samples[0].text(), "S_001_060_C4 0-100 loop 0-100");
    EXPECT_EQ(sf2.igen[2].amount, 1);
    EXPECT_EQ(sf2.samples[1].text(), "S_001_062_D4 228-328 loop 228-228");
    EXPECT_EQ(sf2.igen[6].amount, 0); // nothing left to loop
}

TEST(SoundFont2File, FailedOrUnfinishedBankLeavesTheFileItWouldReplace)
{
    tg::test::TempDir dir;
    const std::string path = dir.file("bank.sf2");
    ASSERT_TRUE(tg::test::writeFileBytes(path, "the bank from before"));
    const auto big = ramp16(100000, 1, 1);
    std::string message;
    {
        tg::test::FileSizeLimit full(65536);
        ASSERT_TRUE(full.active());
        tg::SoundFont2File bank;
        ASSERT_EQ(bank.open(path, "b", 1, message), 1) << message;
        EXPECT_EQ(bank.add(keySample(big, 1, 60), message), 0);
    }
    EXPECT_EQ(message, "write error (audio data)\"" + path + "\"");
    {
        tg::SoundFont2File bank;
        ASSERT_EQ(bank.open(path, "b", 1, message), 1) << message;
        ASSERT_EQ(bank.add(keySample(ramp16(1000, 2, 3), 2, 60), message), 1) << message;
    } // abandoned, as by an abort
    EXPECT_EQ(tg::test::readFileBytes(path), "the bank from before");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()),
                            std::filesystem::directory_iterator()),
              1);
}
