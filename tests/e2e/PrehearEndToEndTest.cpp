// Prehear in the take check dialog through a real JACK graph: the output of a duplex stream
// on the dummy server's "system" device is patched into its own input, so the recorder
// captures exactly what the dialog's Note, Loop and Stop buttons played.
#include "audiofile/WavFile.h"
#include "core/Names.h"
#include "core/Records.h"
#include "devices/AudioEngine.h"
#include "devices/Player.h"
#include "shell/QtPlatformLeaks.h"
#include "shell/dialogs/RecordingCheckDialog.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/e2e/ToneAnalysis.h"
#include "tests/support/TempDir.h"

#include <QApplication>
#include <QPushButton>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace tg::test {
namespace {

constexpr int32_t kLeadFrames = 4410;  // before the note (Note_In): prehear skips it
constexpr int32_t kNoteFrames = 13230; // Note_In up to Loop_In
constexpr int32_t kLoopFrames = 4410;  // Loop_In up to Loop_Out
constexpr double kTolerance = 3.0;     // JACK's float round trip moves a 16-bit value a step
constexpr int16_t kLeadValue = 700;    // heard (above the onset threshold) if it were played

// The take after its Note_In: a positive note part, then a negative loop part.
double takeValue(int64_t frame)
{
    return frame < kNoteFrames ? 1000.0 + double(frame % 100) * 50.0
                               : -2000.0 - double((frame - kNoteFrames) % 50) * 40.0;
}

// What the output carries `frame` frames after the note started, the loop repeating.
double loopedValue(int64_t frame)
{
    return frame < kNoteFrames ? takeValue(frame)
                               : takeValue(kNoteFrames + (frame - kNoteFrames) % kLoopFrames);
}

// Frames from `onset` on that match `expected` (within the tolerance).
int64_t matchingFrames(const std::vector<double>& left, int64_t onset, double (*expected)(int64_t))
{
    int64_t frame = onset;
    while (frame < int64_t(left.size()) &&
           std::fabs(left[size_t(frame)] - expected(frame - onset)) <= kTolerance)
        ++frame;
    return frame - onset;
}

class PrehearOnJack : public ::testing::Test {
  protected:
    void SetUp() override
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        app_ = std::make_unique<QApplication>(argc_, argv_);
        std::string msg;
        ASSERT_EQ(audio::initialize(msg), 1) << msg;
        ASSERT_TRUE(openPlaybackLoopback(patchbay_, msg)) << msg;
        writeTake();
    }

    void TearDown() override
    {
        std::string msg;
        audio::closeStreams(msg);
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
        key.Loop_In = kLeadFrames + kNoteFrames;
        key.Loop_Out = key.Loop_In + kLoopFrames;
        key.Release_Out = key.Loop_Out - 1;
        std::vector<uint8_t> bytes(size_t(key.Loop_Out) * 4, 0);
        for (int64_t frame = 0; frame < key.Loop_Out; ++frame) {
            const int16_t left =
                frame < kLeadFrames ? kLeadValue : int16_t(takeValue(frame - kLeadFrames));
            const int16_t right = int16_t(left / 2);
            std::memcpy(&bytes[size_t(frame) * 4], &left, 2);
            std::memcpy(&bytes[size_t(frame) * 4 + 2], &right, 2);
        }
        std::string msg;
        ASSERT_EQ(writeWav(keySampleFileName(*project_, msl, 60), makeWaveFormat(44100, 2, 16),
                           bytes.data(), int32_t(bytes.size()), nullptr, 0, nullptr, 0, msg),
                  1)
            << msg;
    }

    std::vector<double> capture(std::vector<TimedAction> actions)
    {
        return captureFirstChannel(2.0, std::move(actions));
    }

    int argc_ = 1;
    char name_[8] = "prehear";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> app_;
    JackPatchbay patchbay_;
    TempDir dir_;
    std::unique_ptr<Project> project_ = std::make_unique<Project>();
};

TEST_F(PrehearOnJack, NotePlaysTheTakeOnceFromNoteIn)
{
    shell::RecordingCheckDialog dialog(*project_, project_->msl[0], 60);
    const std::vector<double> left = capture({{0.2, [&] { dialog.noteButton()->click(); }}});
    EXPECT_TRUE(dialog.prehearProblem().isEmpty()) << dialog.prehearProblem().toStdString();
    const int64_t onset = firstFrameAbove(left, 500.0);
    ASSERT_GT(onset, 0) << "nothing was played";
    const int64_t played = matchingFrames(left, onset, takeValue);
    EXPECT_EQ(played, kNoteFrames + kLoopFrames) << "the take from Note_In to its end, once";
    EXPECT_LE(peakBetween(left, onset + played, int64_t(left.size())), kTolerance);
}

TEST_F(PrehearOnJack, LoopRepeatsUntilStop)
{
    shell::RecordingCheckDialog dialog(*project_, project_->msl[0], 60);
    const std::vector<double> left = capture({{0.2, [&] { dialog.loopButton()->click(); }},
                                              {1.2, [&] { dialog.stopButton()->click(); }}});
    const int64_t onset = firstFrameAbove(left, 500.0);
    ASSERT_GT(onset, 0) << "nothing was played";
    const int64_t held = matchingFrames(left, onset, loopedValue);
    EXPECT_GT(held, kNoteFrames + 5 * kLoopFrames) << "the loop repeats until Stop";
    const int64_t block = int64_t(audio::inputFramesPerBuffer());
    EXPECT_LE(peakBetween(left, onset + held + block, int64_t(left.size())), kTolerance)
        << "Stop ends it within a block";
    EXPECT_FALSE(audio::player().isPlaying());
}

} // namespace
} // namespace tg::test
