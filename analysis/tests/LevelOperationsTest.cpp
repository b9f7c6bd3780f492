// Level jobs and batch auto-note/auto-loop over real Key-Sample files in a temporary project.
// The clipping question and Cancel in the middle of a batch are checked where the user meets
// them: LevelDialogs (ClippingQuestionAnsweredNoChangesNothing, CancelStopsALongBatchWithinOneKey)
// and the gain command (AnalysisCommands.GainWithClippingAheadIsRefusedWithoutYes).
#include "analysis/LevelOperations.h"
#include "analysis/BatchAuto.h"
#include "analysis/BatchJob.h"
#include "analysis/Renderer.h"
#include "analysis/tests/TestSignals.h"
#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "core/Names.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace tg {
namespace {

using test::makeSignal;

class KeySampleFiles : public testing::Test {
  protected:
    void SetUp() override
    {
        project = std::make_unique<Project>();
        copyText(project->name, "Levels");
        copyText(project->dataPath, dir.path().c_str());
        project->mslCount = 2;
        copyText(project->msl[0].name, "Piano");
        copyText(project->msl[1].name, "Organ");
    }

    // Writes a stereo 16-bit Key-Sample peaking at `peak` (fraction of full scale).
    void addKey(int msl, int note, double peak, int64_t frames = 2000)
    {
        const WaveFormat format = makeWaveFormat(44100, 2, 16);
        const int32_t value = static_cast<int32_t>(std::lround(peak * 32767));
        const auto data = makeSignal(format, frames, [=](int64_t f, int ch) {
            const int32_t v = static_cast<int32_t>(value * std::sin(2 * M_PI * f / 100.0));
            return f == 25 ? (ch ? -value / 2 : value) : (ch ? v / 2 : v);
        });
        ASSERT_TRUE(writeWav(path(msl, note), format, data, message)) << message;
        project->msl[msl].keys[note].hasAudio = 1;
    }

    // A mono 16-bit key of the first Multi-Sample: silence, a tone on frames on..off - 1,
    // silence; the silence markers measure the quiet start.
    void addToneKey(int note, int64_t frames, int64_t on, int64_t off)
    {
        const WaveFormat format = makeWaveFormat(44100, 1, 16);
        const auto data = makeSignal(format, frames, [=](int64_t f, int) {
            return f >= on && f < off ? static_cast<int32_t>(12000 * std::sin(2 * M_PI * f / 200.0))
                                      : 0;
        });
        ASSERT_TRUE(writeWav(path(0, note), format, data, message)) << message;
        project->msl[0].keys[note].hasAudio = 1;
        project->msl[0].keys[note].Silence_Out = 3000;
    }

    std::string path(int msl, int note) const
    {
        return keySampleFileName(*project, project->msl[msl], note);
    }

    ChannelLevels levelsOf(int msl, int note) const
    {
        WaveFormat format;
        std::vector<uint8_t> data;
        std::string message;
        EXPECT_TRUE(readWav(path(msl, note), format, data, message)) << message;
        return measureLevels(format, data.data(), data.size());
    }

    test::TempDir dir;
    std::unique_ptr<Project> project;
    std::string message;
};

TEST_F(KeySampleFiles, NormalizeToAValueRewritesEveryKeyOfTheScope)
{
    addKey(0, 60, 0.25);
    addKey(0, 62, 0.8);
    addKey(1, 60, 0.1);
    std::vector<std::string> texts;
    NormalizeOptions options;
    options.targetDb = -1.0;
    ASSERT_EQ(normalizeKeySamples(
                  *project, KeyScope::MultiSample, 0, 0, options,
                  [&](const std::string& text, double) {
                      texts.push_back(text);
                      return true;
                  },
                  message),
              1);
    EXPECT_EQ(message, "Normalizing done.");
    EXPECT_NEAR(levelsOf(0, 60).left, std::pow(10.0, -1.0 / 20), 1e-4);
    EXPECT_NEAR(levelsOf(0, 62).left, std::pow(10.0, -1.0 / 20), 1e-4);
    EXPECT_NEAR(levelsOf(0, 62).right, std::pow(10.0, -1.0 / 20), 1e-4); // not equal L/R
    EXPECT_NEAR(levelsOf(1, 60).left, 0.1, 1e-4);                        // other Multi-Sample
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_EQ(texts[0], "Normalizing... (47 % done)");
    EXPECT_EQ(texts[1], "Normalizing... (49 % done)");
}

TEST_F(KeySampleFiles, SilentKeyAndLoneKeyStayUntouched)
{
    addKey(0, 60, 0.0);
    addKey(1, 50, 0.3);
    const std::string silentBefore = test::readFileBytes(path(0, 60));
    const std::string loneBefore = test::readFileBytes(path(1, 50));
    NormalizeOptions options;
    ASSERT_EQ(normalizeKeySamples(*project, KeyScope::Sample, 0, 60, options, {}, message), 1);
    EXPECT_EQ(test::readFileBytes(path(0, 60)), silentBefore);
    options.toMultiSampleMaximum = true;
    ASSERT_EQ(normalizeKeySamples(*project, KeyScope::MultiSample, 1, 0, options, {}, message), 1);
    EXPECT_EQ(test::readFileBytes(path(1, 50)), loneBefore);
    EXPECT_EQ(normalizeKeySamples(*project, KeyScope::Sample, 0, 61, options, {}, message), 0);
    EXPECT_EQ(message, "No Key-Sample selected!");
}

TEST_F(KeySampleFiles, MultiSampleMaximumBringsEveryKeyToTheLoudest)
{
    addKey(0, 60, 0.2);
    addKey(0, 64, 0.6);
    addKey(0, 67, 0.4);
    NormalizeOptions options;
    options.toMultiSampleMaximum = true;
    options.equalLeftRight = true;
    ASSERT_EQ(normalizeKeySamples(*project, KeyScope::Project, 0, 0, options, {}, message), 1);
    for (int note : {60, 64, 67}) {
        EXPECT_NEAR(levelsOf(0, note).left, 0.6, 1e-3) << note;
        EXPECT_NEAR(levelsOf(0, note).right, 0.3, 1e-3) << note; // equal factor keeps the balance
    }
}

TEST_F(KeySampleFiles, GainOnOneChannelWithoutClipping)
{
    addKey(0, 60, 0.25);
    GainOptions options;
    options.gainDb = -6.0;
    options.channels = GainChannels::Right;
    bool asked = false;
    ASSERT_EQ(changeGainOfKeySamples(
                  *project, KeyScope::MultiSample, 0, 0, options,
                  [&](const std::string&) { return asked = true; }, {}, message),
              1);
    EXPECT_FALSE(asked);
    EXPECT_NEAR(levelsOf(0, 60).left, 0.25, 1e-4);
    EXPECT_NEAR(levelsOf(0, 60).right, 0.125 * std::pow(10.0, -6.0 / 20), 1e-4);
}

TEST_F(KeySampleFiles, HighestLevelIsReportedAndCancelStops)
{
    addKey(0, 60, 0.5);
    addKey(1, 61, 0.25);
    ChannelLevels levels;
    ASSERT_EQ(findHighestLevel(*project, KeyScope::Project, 0, 0, false, {}, levels, message), 1);
    EXPECT_EQ(message, "Maximum level in Project: -6.02 dB (= 50.00 %)");
    ASSERT_EQ(findHighestLevel(*project, KeyScope::MultiSample, 1, 0, false, {}, levels, message),
              1);
    EXPECT_EQ(message, "Maximum level in Multi-Sample: -12.04 dB (= 25.00 %)");
    EXPECT_EQ(findHighestLevel(
                  *project, KeyScope::Project, 0, 0, false,
                  [](const std::string&, double) { return false; }, levels, message),
              kJobCancelled);
}

TEST_F(KeySampleFiles, UnreadableFileIsReportedWithTheReadersMessage)
{
    addKey(0, 60, 0.5);
    ASSERT_TRUE(test::writeFileBytes(path(0, 60), "RIFF...."));
    NormalizeOptions options;
    EXPECT_EQ(normalizeKeySamples(*project, KeyScope::Sample, 0, 60, options, {}, message), 0);
    EXPECT_FALSE(message.empty());
    BatchAutoOptions autoOptions;
    EXPECT_EQ(batchAutoNoteLoop(*project, KeyScope::MultiSample, 0, autoOptions, {}, message), 0);
    EXPECT_EQ(message.rfind("Error reading data from disk:\n", 0), 0u) << message;
}

TEST_F(KeySampleFiles, BatchAutoSetsNoteAndLoopMarkers)
{
    for (int note : {60, 72}) {
        addToneKey(note, 40000, 5000, 35000);
        project->msl[0].keys[note].releaseOn = 1;
    }
    project->msl[0].recordsettings.zerocrossing = 0;
    BatchAutoOptions options;
    options.autoLoop = true;
    options.releaseOff = true;
    std::vector<std::string> texts;
    ASSERT_EQ(batchAutoNoteLoop(
                  *project, KeyScope::MultiSample, 0, options,
                  [&](const std::string& text, double) {
                      texts.push_back(text);
                      return true;
                  },
                  message),
              1);
    const TGmsl_key& key = project->msl[0].keys[60];
    EXPECT_NEAR(key.Note_In, 5000, 60);
    EXPECT_NEAR(key.Note_Out, 35000, 60);
    EXPECT_EQ(key.loopMode, 1);
    EXPECT_GT(key.Loop_Out, key.Loop_In);
    EXPECT_EQ(key.releaseOn, 0);
    ASSERT_FALSE(texts.empty());
    EXPECT_EQ(texts.front(), "Multi-Sample: Piano  Working on Key: C4");
}

TEST_F(KeySampleFiles, AutoJobChangesOnlyItsSnapshotUntilTheMarkersAreApplied)
{
    for (int note : {60, 72})
        addToneKey(note, 20000, 4000, 20000);
    BatchAutoOptions options;
    {
        BatchJob cancelled(*project);
        cancelled.cancel();
        cancelled.start(autoNoteLoopWork(KeyScope::MultiSample, 0, options));
        cancelled.wait();
        EXPECT_EQ(cancelled.result(), kJobCancelled);
        EXPECT_TRUE(cancelled.applyMarkers(*project).empty());
        EXPECT_EQ(project->modified, 0);
    }
    BatchJob job(*project);
    job.start(autoNoteLoopWork(KeyScope::MultiSample, 0, options));
    job.wait();
    ASSERT_EQ(job.result(), 1) << job.message();
    EXPECT_EQ(project->msl[0].keys[60].Note_In, 0); // the live Project is not touched yet
    ASSERT_EQ(job.keysDone().size(), 2u);
    EXPECT_EQ(job.applyMarkers(*project), std::vector<int>{0});
    EXPECT_NEAR(project->msl[0].keys[60].Note_In, 4000, 60);
    EXPECT_EQ(project->msl[0].keys[72].Note_Out, job.snapshot().msl[0].keys[72].Note_Out);
    EXPECT_EQ(project->modified, 1);
}

TEST_F(KeySampleFiles, RenderWritesTheNoteOrJustTheLoop)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 8);
    const auto data =
        makeSignal(format, 1001, [](int64_t f, int) { return static_cast<int32_t>(f % 100) - 50; });
    ASSERT_TRUE(writeWav(path(0, 60), format, data, message));
    TGmsl_key& key = project->msl[0].keys[60];
    key.Note_In = 100;
    key.Note_Out = 900;
    key.Loop_In = 300;
    key.Loop_Out = 700;
    key.loopMode = 1;
    key.clickpopred = 0;
    const std::string out = dir.file("rendered");
    ASSERT_EQ(renderKeySampleToFiles(project.get(), &project->msl[0], &key, path(0, 60).c_str(),
                                     out.c_str(), {}, false, message),
              1)
        << message;
    WaveFormat readFormat;
    int32_t loopStart, loopEnd, rootKey, frames;
    ASSERT_TRUE(
        readWavHeader(out + ".wav", readFormat, loopStart, loopEnd, rootKey, frames, message))
        << message;
    EXPECT_EQ(frames, 601);
    EXPECT_EQ(loopStart, 200);
    EXPECT_EQ(loopEnd, 600);
    EXPECT_EQ(rootKey, 60);
    ASSERT_EQ(renderKeySampleToFiles(project.get(), &project->msl[0], &key, path(0, 60).c_str(),
                                     out.c_str(), {}, true, message),
              1);
    ASSERT_TRUE(
        readWavHeader(out + ".wav", readFormat, loopStart, loopEnd, rootKey, frames, message));
    EXPECT_EQ(frames, 401);
    EXPECT_EQ(renderKeySampleToFiles(project.get(), &project->msl[0], &key, "/nonexistent.wav",
                                     out.c_str(), {}, false, message),
              0);
    EXPECT_EQ(message, "unable to open \"/nonexistent.wav\"");
}

} // namespace
} // namespace tg
