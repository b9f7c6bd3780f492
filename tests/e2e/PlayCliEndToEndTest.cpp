// `play` as a user runs it: a Key-Sample sampled from the General MIDI organ, auto-noted and
// auto-looped, held for three seconds on an output that is a JACK client of the test's own.
// What arrived there must be the rendered note once, its loop over and over while the key
// was held, then the release, sample for sample, with no wrap that clicks.
#include "analysis/Renderer.h"
#include "audiofile/WavFile.h"
#include "core/IniKeys.h"
#include "core/Model.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "tests/e2e/LoopWraps.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/e2e/ToneAnalysis.h"
#include "tests/support/TempDir.h"

#include <QSettings>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include <sys/wait.h>

namespace tg::test {
namespace {

constexpr const char* kCaptureClient = "tg-e2e-play-capture";
constexpr int kKey = 84;
constexpr double kHoldSeconds = 3.0;
// Samples go out as 16-bit values turned into JACK's floats; allow a step for rounding.
constexpr double kTolerance = 2.0;

int runCli(const std::string& home, const std::string& arguments, std::string& output)
{
    output.clear();
    const std::string command =
        "TONEGRABBER_HOME='" + home + "' '" + TG_CLI_PATH + "' " + arguments + " 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        return -1;
    char buffer[4096];
    size_t got = 0;
    while ((got = fread(buffer, 1, sizeof buffer, pipe)) > 0)
        output.append(buffer, got);
    const int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Channel `channel` of interleaved 16-bit stereo frames [from, to).
std::vector<double> channelOf(const std::vector<uint8_t>& bytes, int channel, size_t from,
                              size_t to)
{
    std::vector<double> out;
    for (size_t frame = from; frame < to; ++frame) {
        int16_t value;
        std::memcpy(&value, bytes.data() + frame * 4 + size_t(channel) * 2, 2);
        out.push_back(value);
    }
    return out;
}

// How many frames from `at` on match `expected` (from its start) within the tolerance.
int64_t matchingFrames(const std::vector<double>& heard, int64_t at,
                       const std::vector<double>& expected)
{
    int64_t n = 0;
    while (n < int64_t(expected.size()) && at + n < int64_t(heard.size()) &&
           std::fabs(heard[size_t(at + n)] - expected[size_t(n)]) <= kTolerance)
        ++n;
    return n;
}

TEST(PlayCli, HeldKeyPlaysNoteOnceLoopUntilLetGoThenRelease)
{
    TempDir dir;
    const std::string home = dir.file("home");
    std::filesystem::create_directories(home);
    std::filesystem::create_directories(dir.file("data"));
    const std::string project = dir.file("Organ.TGprj");
    std::string output;
    ASSERT_EQ(runCli(home,
                     "new '" + project + "' --data-path '" + dir.file("data") +
                         "' --audio-in -Vst\\ Plugin- --midi-out -Vst\\ Plugin- --plugin --keys 37 "
                         "--step 36 --note-length 2.0 --release-length 0.5 --format '44.1KHz, "
                         "Stereo, 16bit'",
                     output),
              0)
        << output;
    ASSERT_EQ(runCli(home,
                     "record '" + project +
                         "' --offline --quiet --instrument "
                         "'/usr/share/sounds/sf2/FluidR3_GM.sf2?preset=19'",
                     output),
              0)
        << output;
    ASSERT_EQ(runCli(home, "auto '" + project + "' --note --loop", output), 0) << output;

    // The key's note ends where the recording let the key go, and its release is on.
    Model model;
    ProjectLoadOptions loadOptions;
    ProjectLoadOutcome outcome;
    std::string msg;
    ASSERT_EQ(loadProjects(model, dir.path(), {"Organ.TGprj"}, loadOptions, outcome, msg), 1)
        << msg;
    Project& loaded = *model.currentProject();
    TGmsl_key& key = loaded.msl[0].keys[kKey];
    ASSERT_EQ(key.loopMode, 1);
    key.Note_Out = key.Release_In;
    key.releaseOn = 1;
    ASSERT_LT(key.Loop_Out, key.Note_Out) << "the loop must lie in the held note";
    ASSERT_EQ(saveProjectAgain(loaded, msg), 1) << msg;

    // What the key should sound like: the renderer's note and loop, the recording's release.
    WaveFormat format;
    std::vector<uint8_t> recording;
    ASSERT_EQ(readWav(keySampleFileName(loaded, loaded.msl[0], kKey), format, recording, msg), 1)
        << msg;
    ASSERT_EQ(format.nChannels, 2);
    RenderOptions fades;
    fades.clickPopFadeIn = Preferences{}.ClickPopRedFade_in;
    fades.clickPopFadeOut = Preferences{}.ClickPopRedFade_out;
    RenderedNote rendered;
    const size_t bytes = recording.size();
    ASSERT_EQ(renderKeySample(&key, &format, recording.data(), &bytes, fades, &rendered, msg), 1)
        << msg;
    const int64_t loopStart = rendered.loopStart;
    const int64_t loopLength = rendered.loopEnd + 1 - loopStart;

    ::setenv("TONEGRABBER_HOME", home.c_str(), 1);
    {
        QSettings ini(QString::fromStdString(ini::iniFilePath()), QSettings::IniFormat);
        ini.setValue(ini::kOutputAudioDeviceName, QString::fromLatin1(kCaptureClient));
    }
    JackCapture capture(kCaptureClient, 30.0);
    ASSERT_TRUE(capture.ok());
    ASSERT_EQ(capture.sampleRate(), int(format.nSamplesPerSec));
    ASSERT_EQ(runCli(home,
                     "play '" + project + "' --key " + std::to_string(kKey) + " --hold " +
                         std::to_string(kHoldSeconds),
                     output),
              0)
        << output;

    for (int ch = 0; ch < 2; ++ch) {
        const std::vector<double> heard = capture.channel(ch);
        std::vector<double> held = channelOf(rendered.note, ch, 0, size_t(rendered.loopEnd + 1));
        const size_t releaseIn = size_t(key.Note_Out + 1);
        const std::vector<double> release =
            channelOf(recording, ch, releaseIn, size_t(key.Release_Out + 1));
        // Where the note starts: its first clear sample, in both.
        const int64_t heardOnset = firstFrameAbove(heard, 300.0);
        const int64_t noteOnset = firstFrameAbove(held, 300.0);
        ASSERT_GT(heardOnset, 0) << "nothing was heard on channel " << ch;
        ASSERT_GE(noteOnset, 0);
        const int64_t start = heardOnset - noteOnset;
        ASSERT_GE(start, 0);

        // While held: the note once, then the loop over and over.
        for (int pass = 0; pass < 8; ++pass)
            held.insert(held.end(), held.begin() + loopStart,
                        held.begin() + loopStart + loopLength);
        const int64_t heldFrames = matchingFrames(heard, start, held);
        const int64_t passes = (heldFrames - loopStart) / loopLength;
        const double heldSeconds = double(heldFrames) / capture.sampleRate();
        std::fprintf(stderr,
                     "channel %d: note at %lld, %.3f s held (%lld loop passes of %lld frames)\n",
                     ch, (long long)start, heldSeconds, (long long)passes, (long long)loopLength);
        EXPECT_GE(heldSeconds, kHoldSeconds - 0.2) << "the loop must repeat while held";
        EXPECT_LE(heldSeconds, kHoldSeconds + double(loopLength) / capture.sampleRate() + 0.5);
        ASSERT_GE(passes, 2);

        // Let go: the loop plays to its end, then the release follows, then silence.
        const int64_t releaseAt = start + loopStart + passes * loopLength;
        EXPECT_EQ(matchingFrames(heard, releaseAt, release), int64_t(release.size()))
            << "channel " << ch << ": the release must follow the last loop pass";
        const int64_t after = releaseAt + int64_t(release.size());
        EXPECT_LE(peakBetween(heard, after, int64_t(heard.size())), kTolerance);
        EXPECT_LE(peakBetween(heard, 0, start), kTolerance) << "nothing before the note";

        const LoopWraps wraps =
            measureLoopWraps(heard, start + loopStart, start + rendered.loopEnd, releaseAt);
        std::fprintf(stderr, "channel %d: %d wraps, %d clicking, worst seam step %.1fx median\n",
                     ch, wraps.wraps, wraps.clickingWraps, wraps.worstRatio);
        EXPECT_EQ(wraps.wraps, passes - 1);
        EXPECT_EQ(wraps.clickingWraps, 0);
    }
}

} // namespace
} // namespace tg::test
