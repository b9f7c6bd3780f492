// The sampled organ key and the held-key check.
#include "tests/e2e/SampledKey.h"

#include "audiofile/WavFile.h"
#include "core/IniKeys.h"
#include "core/Model.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "tests/e2e/LoopWraps.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/e2e/ToneAnalysis.h"

#include <QSettings>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include <sys/wait.h>

namespace tg::test {

namespace {

// Samples go out as 16-bit values turned into JACK's floats; allow a step for rounding.
constexpr double kTolerance = 2.0;
// The longest output block a stop may fade over (PortAudio's JACK blocks are far shorter).
constexpr int64_t kLongestBlock = 4096;

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

} // namespace

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

bool makeSampledKey(const std::string& folder, const std::string& home, SampledKey& out,
                    std::string& failure)
{
    std::filesystem::create_directories(home);
    std::filesystem::create_directories(folder + "/data");
    out.project = folder + "/Organ.TGprj";
    const std::string steps[] = {
        "new '" + out.project + "' --data-path '" + folder +
            "/data' --audio-in -Vst\\ Plugin- --midi-out -Vst\\ Plugin- --plugin --keys 37 "
            "--step 36 --note-length 2.0 --release-length 0.5 --format '44.1KHz, Stereo, 16bit'",
        "record '" + out.project +
            "' --offline --quiet --instrument '/usr/share/sounds/sf2/FluidR3_GM.sf2?preset=19'",
        "auto '" + out.project + "' --note --loop"};
    for (const std::string& step : steps)
        if (runCli(home, step, failure) != 0)
            return false;

    // The key's note ends where the recording let the key go, and its release is on.
    Model model;
    ProjectLoadOptions loadOptions;
    ProjectLoadOutcome outcome;
    if (!loadProjects(model, folder, {"Organ.TGprj"}, loadOptions, outcome, failure))
        return false;
    Project& project = *model.currentProject();
    TGmsl_key& key = project.msl[0].keys[SampledKey::kNote];
    key.Note_Out = key.Release_In;
    key.releaseOn = 1;
    if (key.loopMode != 1 || key.Loop_Out >= key.Note_Out) {
        failure = "the sampled key has no loop inside its held note";
        return false;
    }
    if (!saveProjectAgain(project, failure) ||
        !readWav(keySampleFileName(project, project.msl[0], SampledKey::kNote), out.format,
                 out.recording, failure))
        return false;
    out.key = key;
    RenderOptions fades;
    fades.clickPopFadeIn = Preferences{}.ClickPopRedFade_in;
    fades.clickPopFadeOut = Preferences{}.ClickPopRedFade_out;
    const size_t bytes = out.recording.size();
    return renderKeySample(&out.key, &out.format, out.recording.data(), &bytes, fades,
                           &out.rendered, failure) == 1;
}

int playUntilWhole(JackCapture& capture, int attempts, const std::function<void()>& play)
{
    int go = 0;
    while (go < attempts) {
        capture.restart();
        play();
        ++go;
        if (capture.xruns() == 0)
            break;
        std::fprintf(stderr, "go %d: the server missed %d periods while capturing\n", go,
                     capture.xruns());
    }
    return go;
}

void chooseAudioOutput(const std::string& home, const std::string& device)
{
    QSettings ini(QString::fromStdString(home + "/Tonegrabber.ini"), QSettings::IniFormat);
    ini.setValue(ini::kOutputAudioDeviceName, QString::fromStdString(device));
}

void expectHeldKey(const std::vector<double>& heard, int channel, int rate,
                   const SampledKey& sampled, double holdSeconds, LetGo letGo)
{
    const RenderedNote& rendered = sampled.rendered;
    const int64_t loopStart = rendered.loopStart;
    const int64_t loopLength = rendered.loopEnd + 1 - loopStart;
    std::vector<double> held = channelOf(rendered.note, channel, 0, size_t(rendered.loopEnd + 1));
    // Where the note starts: its first clear sample, in both.
    const int64_t heardOnset = firstFrameAbove(heard, 300.0);
    const int64_t noteOnset = firstFrameAbove(held, 300.0);
    ASSERT_GT(heardOnset, 0) << "nothing was heard on channel " << channel;
    ASSERT_GE(noteOnset, 0);
    const int64_t start = heardOnset - noteOnset;
    ASSERT_GE(start, 0);
    EXPECT_LE(peakBetween(heard, 0, start), kTolerance) << "nothing before the note";

    // While held: the note once, then the loop over and over.
    const int64_t passesHeld = int64_t(holdSeconds * rate) / loopLength + 2;
    for (int64_t pass = 0; pass < passesHeld; ++pass)
        held.insert(held.end(), held.begin() + loopStart, held.begin() + loopStart + loopLength);
    const int64_t heldFrames = matchingFrames(heard, start, held);
    const int64_t passes = (heldFrames - loopStart) / loopLength;
    const double heldSeconds = double(heldFrames) / rate;
    std::fprintf(stderr,
                 "channel %d: note at %lld, %.3f s held (%lld loop passes of %lld frames)\n",
                 channel, (long long)start, heldSeconds, (long long)passes, (long long)loopLength);
    EXPECT_GE(heldSeconds, holdSeconds - 0.2) << "the loop must repeat while held";
    EXPECT_LE(heldSeconds, holdSeconds + double(loopLength) / rate + 0.5);
    ASSERT_GE(passes, 2);

    int64_t silentFrom = start + heldFrames + kLongestBlock;
    if (letGo == LetGo::Release) {
        // The loop plays to its end, then the release follows.
        const int64_t releaseAt = start + loopStart + passes * loopLength;
        const std::vector<double> release =
            channelOf(sampled.recording, channel, size_t(sampled.key.Note_Out + 1),
                      size_t(sampled.key.Release_Out + 1));
        EXPECT_EQ(matchingFrames(heard, releaseAt, release), int64_t(release.size()))
            << "channel " << channel << ": the release must follow the last loop pass";
        silentFrom = releaseAt + int64_t(release.size());
    }
    EXPECT_LE(peakBetween(heard, silentFrom, int64_t(heard.size())), kTolerance)
        << "channel " << channel << ": silence after the key";

    const LoopWraps wraps =
        measureLoopWraps(heard, start + loopStart, start + rendered.loopEnd, start + heldFrames);
    std::fprintf(stderr, "channel %d: %d wraps, %d clicking, worst seam step %.1fx median\n",
                 channel, wraps.wraps, wraps.clickingWraps, wraps.worstRatio);
    EXPECT_GE(wraps.wraps, passes - 1);
    EXPECT_EQ(wraps.clickingWraps, 0);
}

} // namespace tg::test
