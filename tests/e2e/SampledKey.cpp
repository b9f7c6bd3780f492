// The sampled organ key and the held-key check.
#include "tests/e2e/SampledKey.h"

#include "audiofile/WavFile.h"
#include "core/IniKeys.h"
#include "core/Model.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "tests/e2e/LoopWraps.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/support/Pcm16.h"
#include "tests/support/ProjectFileAccess.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/ToneAnalysis.h"

#include <QSettings>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>

namespace tg::test {

namespace {

// Samples go out as 16-bit values turned into JACK's floats; allow a step for rounding.
constexpr double kTolerance = 2.0;
// The longest output block a stop may fade over (PortAudio's JACK blocks are far shorter).
constexpr int64_t kLongestBlock = 4096;
// On a loaded machine the chain now and then loses a period of what the program sent (the
// dummy server catches up late periods in a burst); a fault of the program shows in every go.
constexpr int kGoes = 5;

// Channel `channel` of interleaved 16-bit stereo frames [from, to).
std::vector<double> channelOf(const std::vector<uint8_t>& bytes, int channel, size_t from,
                              size_t to)
{
    std::vector<double> out;
    for (size_t frame = from; frame < to; ++frame)
        out.push_back(pcm16At(bytes, 2 * frame + size_t(channel)));
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
        if (runCliProcess(step, &failure, home) != 0)
            return false;

    // The key's note ends where the recording let the key go, and its release is on.
    const std::unique_ptr<Model> model = loadProjectFile(out.project);
    if (model->projectCount() != 1)
        return false;
    Project& project = model->project(0);
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

void chooseAudioOutput(const std::string& home, const std::string& device)
{
    QSettings ini(QString::fromStdString(home + "/Tonegrabber.ini"), QSettings::IniFormat);
    ini.setValue(ini::kOutputAudioDeviceName, QString::fromStdString(device));
}

namespace {

// What one channel of a capture of the held key showed.
struct Hearing {
    int64_t start = -1;       // frame of the capture where the note starts
    double peakBefore = 0.0;  // before the note
    double heldSeconds = 0.0; // the note and then the loop, sample for sample
    int64_t passes = 0;       // whole loop passes in that
    int64_t releaseFrames = 0;
    int64_t releaseMatched = 0; // release frames heard, sample for sample, after the last pass
    double peakAfter = 0.0;     // after the key ended
    LoopWraps wraps;
};

Hearing hear(const std::vector<double>& heard, int channel, int rate, const SampledKey& sampled,
             double holdSeconds, LetGo letGo)
{
    Hearing h;
    const RenderedNote& rendered = sampled.rendered;
    const int64_t loopStart = rendered.loopStart;
    const int64_t loopLength = rendered.loopEnd + 1 - loopStart;
    std::vector<double> held = channelOf(rendered.note, channel, 0, size_t(rendered.loopEnd + 1));
    // Where the note starts: its first clear sample, in both.
    const int64_t heardOnset = firstFrameAbove(heard, 300.0);
    const int64_t noteOnset = firstFrameAbove(held, 300.0);
    if (heardOnset < 0 || noteOnset < 0 || heardOnset < noteOnset)
        return h;
    h.start = heardOnset - noteOnset;
    h.peakBefore = peakBetween(heard, 0, h.start);

    // While held: the note once, then the loop over and over.
    const int64_t passesHeld = int64_t(holdSeconds * rate) / loopLength + 2;
    for (int64_t pass = 0; pass < passesHeld; ++pass)
        held.insert(held.end(), held.begin() + loopStart, held.begin() + loopStart + loopLength);
    const int64_t heldFrames = matchingFrames(heard, h.start, held);
    h.passes = std::max<int64_t>(0, (heldFrames - loopStart) / loopLength);
    h.heldSeconds = double(heldFrames) / rate;

    int64_t silentFrom = h.start + heldFrames + kLongestBlock;
    if (letGo == LetGo::Release) {
        // The loop plays to its end, then the release follows.
        const int64_t releaseAt = h.start + loopStart + h.passes * loopLength;
        const std::vector<double> release =
            channelOf(sampled.recording, channel, size_t(sampled.key.Note_Out + 1),
                      size_t(sampled.key.Release_Out + 1));
        h.releaseFrames = int64_t(release.size());
        h.releaseMatched = matchingFrames(heard, releaseAt, release);
        silentFrom = releaseAt + h.releaseFrames;
    }
    h.peakAfter = peakBetween(heard, silentFrom, int64_t(heard.size()));
    h.wraps = measureLoopWraps(heard, h.start + loopStart, h.start + rendered.loopEnd,
                               h.start + heldFrames);
    std::fprintf(stderr,
                 "channel %d: note at %lld, %.3f s held (%lld loop passes of %lld frames), "
                 "release %lld of %lld frames, %d wraps, %d clicking (worst seam step %.1fx "
                 "median)\n",
                 channel, (long long)h.start, h.heldSeconds, (long long)h.passes,
                 (long long)loopLength, (long long)h.releaseMatched, (long long)h.releaseFrames,
                 h.wraps.wraps, h.wraps.clickingWraps, h.wraps.worstRatio);
    return h;
}

// The limits a hearing must keep; `expectations` adds a gtest failure for each one broken.
bool heardRight(const Hearing& h, double holdSeconds, double loopSeconds, bool expectations)
{
    bool right = true;
    auto check = [&](bool ok, const char* what) {
        right = right && ok;
        EXPECT_TRUE(ok || !expectations) << what;
    };
    check(h.start >= 0, "the note was heard");
    if (h.start < 0)
        return false;
    check(h.peakBefore <= kTolerance, "nothing before the note");
    check(h.heldSeconds >= holdSeconds - 0.2, "the loop repeats while the key is held");
    check(h.heldSeconds <= holdSeconds + loopSeconds + 0.5, "the loop ends when let go");
    check(h.passes >= 2 && h.wraps.wraps >= h.passes - 1, "the loop wraps while held");
    check(h.releaseMatched == h.releaseFrames, "the release follows the last loop pass");
    check(h.peakAfter <= kTolerance, "silence after the key");
    check(h.wraps.clickingWraps == 0, "no wrap clicks");
    return right;
}

} // namespace

void expectKeyHeardRight(JackCapture& capture, const SampledKey& sampled, double holdSeconds,
                         LetGo letGo, const std::function<void()>& play)
{
    const int rate = capture.sampleRate();
    const double loopSeconds =
        double(sampled.rendered.loopEnd + 1 - sampled.rendered.loopStart) / rate;
    Hearing hearings[2];
    for (int go = 1; go <= kGoes; ++go) {
        capture.restart();
        play();
        bool right = true;
        for (int ch = 0; ch < 2; ++ch) {
            hearings[ch] = hear(capture.channel(ch), ch, rate, sampled, holdSeconds, letGo);
            right = right && heardRight(hearings[ch], holdSeconds, loopSeconds, false);
        }
        if (right)
            return;
        std::fprintf(stderr, "go %d: not right, the server missed %d periods meanwhile\n", go,
                     capture.xruns());
    }
    for (int ch = 0; ch < 2; ++ch) {
        SCOPED_TRACE("channel " + std::to_string(ch));
        heardRight(hearings[ch], holdSeconds, loopSeconds, true);
    }
}

} // namespace tg::test
