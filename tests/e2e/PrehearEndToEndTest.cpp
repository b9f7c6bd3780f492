// Prehear in the take check dialog through a real JACK graph: the output of a duplex stream
// on the dummy server's "system" device is patched into its own input, so the recorder
// captures exactly what the dialog's Note, Loop and Stop buttons played, and the duplex
// callback that records and plays is watched for allocations and locks.
#include "audiofile/WavFile.h"
#include "core/Names.h"
#include "core/Records.h"
#include "devices/AudioEngine.h"
#include "devices/Player.h"
#include "shell/dialogs/RecordingCheckDialog.h"
#include "tests/e2e/AudioThreadChecks.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/support/TempDir.h"
#include "tests/support/ToneAnalysis.h"

#include <QPushButton>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

namespace tg::test {
namespace {

constexpr int32_t kLeadFrames = 4410; // before the note (Note_In): prehear skips it
constexpr int16_t kLeadValue = 700;   // heard (above the onset threshold) if it were played

class PrehearOnJack : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::string msg;
        ASSERT_EQ(audio::initialize(msg), 1) << msg;
        ASSERT_TRUE(openPlaybackLoopback(patchbay_, msg)) << msg;
        audio::addLevelListener(&meter_); // marks the duplex callback's thread
        writeTake();
    }

    void TearDown() override
    {
        std::string msg;
        audio::closeStreams(msg);
        audio::removeLevelListener(&meter_);
        audio::terminate();
    }

    // The take of key 60 with its markers, as a recording run leaves it.
    void writeTake()
    {
        copyText(project_->name, "Prehear");
        copyText(project_->dataPath, dir_.path().c_str());
        project_->mslCount = 1;
        TGmsl& msl = project_->msl[0];
        copyText(msl.name, "Take");
        TGmsl_key& key = msl.keys[60];
        key.Note_In = kLeadFrames;
        key.Loop_In = kLeadFrames + kTakeNoteFrames;
        key.Loop_Out = key.Loop_In + kTakeLoopFrames;
        key.Release_Out = key.Loop_Out - 1;
        const std::vector<uint8_t> bytes = noteAndLoopTake(kLeadFrames, kLeadValue);
        std::string msg;
        ASSERT_EQ(writeWav(keySampleFileName(*project_, msl, 60), makeWaveFormat(44100, 2, 16),
                           bytes, msg),
                  1)
            << msg;
    }

    JackPatchbay patchbay_;
    PeakRecorder meter_;
    TempDir dir_;
    std::unique_ptr<Project> project_ = std::make_unique<Project>();
};

TEST_F(PrehearOnJack, NotePlaysTheTakeOnceFromNoteIn)
{
    shell::RecordingCheckDialog dialog(*project_, project_->msl[0], 60);
    const std::vector<double> left =
        captureFirstChannel(2.0, {{0.2, [&] { dialog.noteButton()->click(); }}});
    EXPECT_TRUE(dialog.prehearProblem().isEmpty()) << dialog.prehearProblem().toStdString();
    const int64_t onset = firstFrameAbove(left, 500.0);
    ASSERT_GT(onset, 0) << "nothing was played";
    const int64_t played = matchingFrames(left, onset, takeValue);
    EXPECT_EQ(played, kTakeNoteFrames + kTakeLoopFrames)
        << "the take from Note_In to its end, once";
    EXPECT_LE(peakBetween(left, onset + played, int64_t(left.size())), kLoopbackTolerance);
}

TEST_F(PrehearOnJack, LoopRepeatsUntilStopFadesItWithinABlock)
{
    shell::RecordingCheckDialog dialog(*project_, project_->msl[0], 60);
    const std::vector<double> left =
        captureFirstChannel(2.0, {{0.2, [&] { dialog.loopButton()->click(); }},
                                  {1.2, [&] { dialog.stopButton()->click(); }}});
    const int64_t onset = firstFrameAbove(left, 500.0);
    ASSERT_GT(onset, 0) << "nothing was played";
    const int64_t held = matchingFrames(left, onset, heldTakeValue);
    EXPECT_GT(held, kTakeNoteFrames + 5 * kTakeLoopFrames) << "the loop repeats until Stop";
    // Stop fades the next block (its shape is the player's unit test's), then silence.
    const int64_t block = int64_t(audio::inputFramesPerBuffer());
    const int64_t halfWay = onset + held + block / 2;
    EXPECT_GT(std::fabs(left[size_t(halfWay)]), 0.3 * std::fabs(heldTakeValue(halfWay - onset)))
        << "a fade, not a hard cut";
    EXPECT_LE(peakBetween(left, onset + held + block, int64_t(left.size())), kLoopbackTolerance)
        << "Stop ends it within a block";
    EXPECT_FALSE(audio::player().isPlaying());

    // Recording and playing (one duplex callback) allocated nothing and took no lock but the
    // record flag's QMutex (a futex, not counted).
    EXPECT_TRUE(audioThreadMarked());
    EXPECT_EQ(audioThreadAllocations(), 0);
    EXPECT_EQ(audioThreadMutexLocks(), 0);
}

} // namespace
} // namespace tg::test
