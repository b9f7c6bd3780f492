// wav-info, aiff-info and convert as a user runs them: output, JSON keys and exit statuses.
#include "cli/CliApp.h"

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
constexpr auto runOk = tg::test::runOk;

std::vector<uint8_t> tone(size_t frames, int channels)
{
    // Never crosses zero.
    return test::pcm16(frames, channels,
                       [](size_t i, int) { return int16_t((i * 37) % 2000 + 100); });
}

} // namespace

// wav-info and aiff-info print what their reader found (the header fields themselves are the
// readers' business), and a file they cannot read ends with the reader's message and status 1.
TEST(AudioInfoCommands, PrintTheHeaderLoopAndRootAsJsonOrText)
{
    test::TempDir dir;
    std::string message;
    WavLoopInfo loop{10, 99, 48};
    ASSERT_EQ(
        writeWav(dir.file("a.wav"), makeWaveFormat(44100, 2, 16), tone(200, 2), message, &loop), 1);
    const auto audio = tone(300, 1);
    ASSERT_EQ(writeAiff(dir.file("a.aif"), makeWaveFormat(48000, 1, 16), audio.data(),
                        static_cast<int32_t>(audio.size()), 20, 250, {71, 70, 72, 1, 127, "x"},
                        message),
              1);
    struct Case {
        const char *command, *file;
        int rate, frames, loopStart, loopEnd, rootKey;
    };
    for (const Case& c : {Case{"wav-info", "a.wav", 44100, 200, 10, 99, 48},
                          Case{"aiff-info", "a.aif", 48000, 300, 20, 250, 71}}) {
        SCOPED_TRACE(c.command);
        CommandRun r = runOk({c.command, dir.file(c.file), "--json"});
        const auto j = nlohmann::json::parse(r.out);
        EXPECT_EQ(j.at("nSamplesPerSec"), c.rate);
        EXPECT_EQ(j.at("frames"), c.frames);
        EXPECT_EQ(j.at("loopStart"), c.loopStart);
        EXPECT_EQ(j.at("loopEnd"), c.loopEnd);
        EXPECT_EQ(j.at("rootKey"), c.rootKey);
        r = run({c.command, dir.file(c.file)});
        EXPECT_EQ(r.status, 0);
        EXPECT_NE(r.out.find("frames:      " + std::to_string(c.frames)), std::string::npos)
            << r.out;

        const std::string missing = dir.file("missing");
        r = run({c.command, missing, "--json"});
        EXPECT_EQ(r.status, 1);
        EXPECT_EQ(nlohmann::json::parse(r.out).at("error"), "unable to open " + missing);
        EXPECT_EQ(run({c.command}).status, 2);
    }
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
