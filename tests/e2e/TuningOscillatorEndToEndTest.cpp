// The record dialog's tuning oscillator through a real JACK graph: the output of a duplex
// stream on the dummy server's "system" device is patched into its own input, so the recorder
// captures exactly what the dialog's controls played.
#include "core/IniKeys.h"
#include "core/Model.h"
#include "devices/AudioEngine.h"
#include "devices/DeviceTables.h"
#include "devices/TuningOscillator.h"
#include "recording/ProjectSetup.h"
#include "recording/RecordList.h"
#include "shell/IniFile.h"
#include "shell/dialogs/RecordDialog.h"
#include "shell/dialogs/TuningOscillatorBox.h"
#include "shell/tests/WidgetTestSupport.h"
#include "tests/e2e/SampledKey.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"
#include "tests/support/ToneAnalysis.h"

#include <QComboBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace tg::test {
namespace {

constexpr double kTolerance = kLoopbackTolerance;
constexpr double kRate = 44100.0;

class TuningOscillatorOnJack : public ::testing::Test {
  protected:
    void SetUp() override
    {
        qputenv("TONEGRABBER_MIDI_API", "jack");
        std::string msg;
        ASSERT_EQ(audio::initialize(msg), 1) << msg;
        ASSERT_TRUE(openPlaybackLoopback(patchbay_, msg)) << msg;
        // The preferences' output is the one open, and a Project records from it: its run
        // opens nothing new, so only the dialog itself can silence the tone.
        shell::openIniFile()->setValue(QString::fromLatin1(ini::kOutputAudioDeviceName), "system");
        std::string midiLog;
        ASSERT_EQ(buildMidiDeviceTables(deviceTables(), midiLog), 1) << midiLog;
        ProjectSetupRecord setup;
        setup.dataPath = dir_.path();
        setup.audioInDevice = "system";
        setup.midiOutDevice = kSynthMidiPort;
        ASSERT_TRUE(createProjectFromSetup(model_, setup).ok());
        dialog_ = std::make_unique<shell::RecordDialog>(model_, kRecordSelectedMultiSample, true);
        box_ = dialog_->findChild<shell::TuningOscillatorBox*>();
        ASSERT_NE(box_, nullptr);
    }

    void TearDown() override
    {
        dialog_.reset();
        std::string msg;
        audio::closeStreams(msg);
        audio::terminate();
    }

    void choose(const char* waveform, int note, int volumeDb)
    {
        box_->waveformBox()->setCurrentText(QString::fromLatin1(waveform));
        box_->noteBox()->setCurrentIndex(box_->noteBox()->findData(note));
        box_->volumeBox()->setValue(volumeDb);
    }

    JackPatchbay patchbay_;
    TempDir dir_;
    Model model_;
    std::unique_ptr<shell::RecordDialog> dialog_;
    shell::TuningOscillatorBox* box_ = nullptr;
};

TEST_F(TuningOscillatorOnJack, ChosenNoteLoopsSeamlesslyUntilStop)
{
    choose("Sine", 69, -12);
    const std::vector<double> left =
        captureFirstChannel(3.0, {{0.2, [&] { box_->playButton()->click(); }},
                                  {2.4, [&] { box_->playButton()->click(); }}});
    EXPECT_TRUE(box_->problem().isEmpty()) << box_->problem().toStdString();

    TuningWave wave;
    std::string msg;
    ASSERT_EQ(makeTuningWave({TuningWaveform::Sine, 69, -12}, wave, msg), 1) << msg;
    const std::vector<double> made = firstChannel(wave.data, 1, int64_t(wave.data.size() / 2));
    // The wave as it plays on: its loop over and over.
    const int64_t loopLength = wave.loopEnd - wave.loopStart;
    const auto looped = [&](int64_t i) {
        return made[size_t(i < wave.loopEnd ? i
                                            : wave.loopStart + (i - wave.loopStart) % loopLength)];
    };
    // Where it starts: among the frames just before the first sound, the one from which its
    // first 10 ms are heard unchanged.
    const int64_t onset = firstFrameAbove(left, 4 * kTolerance);
    ASSERT_GE(onset, 0) << "the tone was not heard";
    int64_t start = std::max<int64_t>(0, onset - 4);
    while (start <= onset && matchingFrames(left, start, looped) < 441)
        ++start;
    ASSERT_LE(start, onset) << "the tone was not heard as made";

    // The loop as heard, the made wave's sample for sample (whose pitch and seamless loop its
    // own unit test measures): where the capture leaves it is where Stop faded it.
    const int64_t held = matchingFrames(left, start, looped);
    EXPECT_GT(held, int64_t(1.8 * kRate)) << "the tone plays on until Stop";
    const int64_t block = int64_t(audio::outputFramesPerBuffer());
    EXPECT_LE(peakBetween(left, start + held + block, int64_t(left.size())), kTolerance)
        << "Stop ends the tone within a block";
    EXPECT_EQ(box_->playButton()->text(), "Start");
}

// A Key-Sample played from a key or by MIDI takes the output over: the button shows that the
// tone ended, and its Stop no longer cuts the Key-Sample.
TEST_F(TuningOscillatorOnJack, KeySamplePlayedOverTheToneEndsIt)
{
    box_->playButton()->click();
    ASSERT_TRUE(box_->isPlaying()) << box_->problem().toStdString();
    TuningWave keySample;
    std::string msg;
    ASSERT_EQ(makeTuningWave({TuningWaveform::Rect, 57, -20}, keySample, msg), 1) << msg;
    ASSERT_EQ(TGaudio_playSample(audio::currentOutputConfig().device, keySample.format,
                                 keySample.data.data(), keySample.data.size(), keySample.loopStart,
                                 keySample.loopEnd, nullptr, 0, msg, 0),
              1)
        << msg;
    QTest::qWait(500);
    EXPECT_FALSE(box_->isPlaying());
    EXPECT_EQ(box_->playButton()->text(), "Start");
    EXPECT_TRUE(audio::player().isPlaying()) << "the Key-Sample plays on";
    audio::player().requestStop();
}

TEST_F(TuningOscillatorOnJack, StartRecordingSilencesTheTone)
{
    choose("Rect", 57, -20);
    MessageBoxAnswerer answerer;
    const std::vector<double> left =
        captureFirstChannel(1.5, {{0.2, [&] { box_->playButton()->click(); }},
                                  {0.8, [&] { dialog_->startButton()->click(); }}});
    const int64_t onset = firstFrameAbove(left, 1000.0);
    ASSERT_GT(onset, 0) << "the tone was not heard";
    EXPECT_NEAR(pitchHz(left, onset + 2205, onset + 11025, kRate, 150.0, 300.0), 220.0, 0.2);
    const auto stopped = int64_t(1.1 * kRate); // 0.3 s after the click: room for a late period
    EXPECT_LE(peakBetween(left, stopped, int64_t(left.size())), kTolerance)
        << "the tone sounds on into the take";
    EXPECT_FALSE(box_->isEnabled()) << "the tone cannot be started during the run";
    EXPECT_TRUE(answerer.seen().empty()) << answerer.texts().join("\n").toStdString();
}

TEST(ToneCli, PlaysTheChosenNoteForTheGivenTime)
{
    TempDir dir;
    const std::string home = dir.file("home");
    chooseAudioOutput(home, "tg-e2e-tone-capture");
    JackCapture capture("tg-e2e-tone-capture", 20.0);
    ASSERT_TRUE(capture.ok());
    std::string output;
    ASSERT_EQ(runCliProcess("tone --note 57 --wave rect --volume -20 --seconds 1", &output, home),
              0)
        << output;
    const std::vector<double> left = capture.channel(0);
    const int64_t onset = firstFrameAbove(left, 1000.0);
    ASSERT_GE(onset, 0) << "nothing was heard";
    EXPECT_NEAR(pitchHz(left, onset + 2205, onset + 22050, kRate, 150.0, 300.0), 220.0, 0.2);
    int64_t last = int64_t(left.size()) - 1;
    while (last > onset && std::fabs(left[size_t(last)]) <= kTolerance)
        --last;
    EXPECT_NEAR(double(last - onset) / kRate, 1.0, 0.2) << "heard for the seconds asked";
}

} // namespace
} // namespace tg::test
