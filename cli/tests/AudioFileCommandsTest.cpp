// wav-info, aiff-info and convert as a user runs them: output, JSON keys and exit statuses.
#include "cli/CliApp.h"
#include "cli/Commands.h"

#include "audiofile/AiffFile.h"
#include "audiofile/WavFile.h"
#include "cli/tests/CommandRunner.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/Pcm16.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace tg;

namespace {

using tg::test::CommandRun;
constexpr auto run = tg::test::runCli;

std::vector<uint8_t> tone(size_t frames, int channels)
{
    // Never crosses zero.
    return test::pcm16(frames, channels,
                       [](size_t i, int) { return int16_t((i * 37) % 2000 + 100); });
}

} // namespace

TEST(WavInfoCommand, PrintsTheHeaderAsJson)
{
    test::TempDir dir;
    const std::string path = dir.file("a.wav");
    std::string message;
    WavLoopInfo loop{10, 99, 48};
    ASSERT_EQ(writeWav(path, makeWaveFormat(44100, 2, 16), tone(200, 2), message, &loop), 1);
    CommandRun r = run({"wav-info", path, "--json"});
    ASSERT_EQ(r.status, 0);
    // What the header holds is the reader's business (WavRoundTrip); every field is shown.
    const auto j = nlohmann::json::parse(r.out);
    for (const char* field : {"wFormatTag", "nChannels", "nSamplesPerSec", "nAvgBytesPerSec",
                              "nBlockAlign", "wBitsPerSample", "cbSize"})
        EXPECT_TRUE(j.contains(field)) << field;
    EXPECT_EQ(j.at("nSamplesPerSec"), 44100);
    EXPECT_EQ(j.at("frames"), 200);
    EXPECT_EQ(j.at("loopStart"), 10);
    EXPECT_EQ(j.at("loopEnd"), 99);
    EXPECT_EQ(j.at("rootKey"), 48);

    CommandRun text = run({"wav-info", path});
    EXPECT_EQ(text.status, 0);
    EXPECT_NE(text.out.find("frames:      200"), std::string::npos);
}

TEST(WavInfoCommand, FailureGivesTheReadersMessageAndStatusOne)
{
    test::TempDir dir;
    const std::string path = dir.file("missing.wav");
    CommandRun r = run({"wav-info", path, "--json"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(nlohmann::json::parse(r.out).at("error"), "unable to open " + path);
    EXPECT_EQ(run({"wav-info"}).status, 2);
}

TEST(AiffInfoCommand, ReportsLoopAndBaseNote)
{
    test::TempDir dir;
    const std::string path = dir.file("a.aif");
    const auto audio = tone(300, 1);
    std::string message;
    ASSERT_EQ(writeAiff(path, makeWaveFormat(48000, 1, 16), audio.data(),
                        static_cast<int32_t>(audio.size()), 20, 250, {71, 70, 72, 1, 127, "x"},
                        message),
              1);
    CommandRun r = run({"aiff-info", path, "--json"});
    ASSERT_EQ(r.status, 0);
    const auto j = nlohmann::json::parse(r.out);
    EXPECT_EQ(j.at("frames"), 300);
    EXPECT_EQ(j.at("nSamplesPerSec"), 48000);
    EXPECT_EQ(j.at("loopStart"), 20);
    EXPECT_EQ(j.at("loopEnd"), 250);
    EXPECT_EQ(j.at("rootKey"), 71);
    EXPECT_EQ(run({"aiff-info", dir.file("none.aif")}).status, 1);
}

TEST(ConvertCommand, ConvertsWithLoopAndRejectsBadArguments)
{
    test::TempDir dir;
    const std::string in = dir.file("in.wav"), out = dir.file("out.wav");
    std::string message;
    WavLoopInfo loop{100, 299, 60};
    ASSERT_EQ(writeWav(in, makeWaveFormat(44100, 2, 16), tone(400, 2), message, &loop), 1);

    CommandRun r = run({"convert", in, out, "--format", "22.05KHz, Mono, 8bit", "--resample", "hq",
                        "--channel-mode", "left"});
    ASSERT_EQ(r.status, 0);
    WaveFormat f;
    int32_t loopStart, loopEnd, rootKey, frames;
    ASSERT_EQ(readWavHeader(out, f, loopStart, loopEnd, rootKey, frames, message), 1);
    EXPECT_EQ(f.nSamplesPerSec, 22050u);
    EXPECT_EQ(f.nChannels, 1u);
    EXPECT_EQ(f.wBitsPerSample, 8u);
    EXPECT_EQ(loopEnd - loopStart, 99); // the loop comes along, at the new rate

    // An AIFF input works the same way.
    const std::string aif = dir.file("in.aif");
    const auto audio = tone(400, 2);
    ASSERT_EQ(writeAiff(aif, makeWaveFormat(44100, 2, 16), audio.data(),
                        static_cast<int32_t>(audio.size()), 0, 0, {}, message),
              1);
    EXPECT_EQ(run({"convert", aif, out, "--format", "48KHz, Stereo, 24bit"}).status, 0);
    ASSERT_EQ(readWavHeader(out, f, loopStart, loopEnd, rootKey, frames, message), 1);
    EXPECT_EQ(f.wBitsPerSample, 24u);

    EXPECT_EQ(run({"convert", in, out, "--format", "44.1KHz, Quad, 16bit"}).status, 2);
    EXPECT_EQ(
        run({"convert", in, out, "--format", "44.1KHz, Mono, 16bit", "--resample", "best"}).status,
        2);
    EXPECT_EQ(
        run({"convert", dir.file("none.wav"), out, "--format", "44.1KHz, Mono, 16bit"}).status, 1);
}

TEST(ConvertCommand, ConvertingAFileOntoItselfOnAFullDiskKeepsTheSource)
{
    test::TempDir dir;
    const std::string file = dir.file("take.wav");
    std::string message;
    ASSERT_EQ(writeWav(file, makeWaveFormat(44100, 1, 16), tone(20000, 1), message), 1);
    const std::string source = test::readFileBytes(file);

    CommandRun r;
    {
        // Room for the source, not for the 24-bit stereo file it becomes.
        test::FileSizeLimit full(64 * 1024);
        ASSERT_TRUE(full.active());
        r = run({"convert", file, file, "--format", "48KHz, Stereo, 24bit"});
    }
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "error writing " + file + "\n");
    EXPECT_EQ(test::readFileBytes(file), source);
}
