// The record dialog's semi-automatic run on the real sound chain: the Multi-Sample records the
// synth's JACK ports, the test plays each note on the synth's MIDI port while the take runs and
// stops it with the dialog's button, then keeps or discards it in the check dialog.
#include "audiofile/WavFile.h"
#include "core/Model.h"
#include "core/Names.h"
#include "devices/AudioEngine.h"
#include "devices/DeviceTables.h"
#include "devices/MidiPorts.h"
#include "recording/ProjectSetup.h"
#include "recording/StartupWiring.h"
#include "shell/dialogs/RecordDialog.h"
#include "shell/dialogs/RecordingCheckDialog.h"
#include "shell/tests/WidgetTestSupport.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/support/ProjectFileAccess.h"
#include "tests/support/TempDir.h"
#include "tests/support/ToneAnalysis.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace tg::test {
namespace {

constexpr int kKeys[] = {48, 66, 84}; // 37 keys from C3, every 18th
constexpr int kWaitMs = 60 * 1000;

class RecordDialogOnTheSynth : public ::testing::Test {
  protected:
    // Opens the devices and makes a semi-automatic project "Synth" that records the synth's
    // JACK ports at keys 48, 66 and 84, notes of 0.6 s with 0.3 s of release.
    void SetUp() override
    {
        CoreFolders folders;
        folders.programFolder = folders.userDataFolder = home_.path();
        std::string msg;
        ASSERT_EQ(initializeWithDevices(model_, folders, msg), 1) << msg;
        ASSERT_TRUE(openMidiOutByName(kSynthMidiPort, msg)) << msg;
        ProjectSetupRecord setup;
        setup.name = "Synth";
        setup.dataPath = data_.path();
        setup.audioInDeviceRow = audioInTableIndex(deviceTables(), kSynthAudioDevice);
        ASSERT_GE(setup.audioInDeviceRow, 0);
        setup.audioInDevice = kSynthAudioDevice;
        setup.midiOutDevice = kSynthMidiPort;
        setup.automatic = false;
        setup.keyStep = 18;
        setup.noteLength = 0.6;
        setup.releaseLength = 0.3f;
        const Result made = createProjectFromSetup(model_, setup);
        ASSERT_TRUE(made.ok()) << made.message;
        Project& project = *model_.currentProject();
        copyText(project.projectDir, data_.path().c_str());
        project.msl[0].recordsettings.recpause = 0.3;
    }

    void TearDown() override
    {
        dialog_.reset();
        std::string msg;
        audio::closeStreams(msg);
        audio::terminate();
        midi::destroyMidi();
    }

    // Starts the countdown, plays `note` on the synth once the take runs, stops the take
    // with the button and returns the check dialog. A take with dropped frames (a loaded
    // machine) is not kept and the run offers the same key again: it is played again, as
    // often as the run allows.
    shell::RecordingCheckDialog* playTake(int note)
    {
        QPushButton* button = dialog_->startButton();
        for (int take = 0; take < 4; ++take) {
            if (button->text() != "Start Countdown")
                return nullptr;
            QTest::mouseClick(button, Qt::LeftButton);
            if (!QTest::qWaitFor(
                    [&] { return dialog_->run()->state() == RecordingRun::State::Recording; },
                    kWaitMs))
                return nullptr;
            QTest::qWait(300);
            sendBytes({0x90, uint8_t(note), 100});
            QTest::qWait(600);
            sendBytes({0x80, uint8_t(note), 0});
            QTest::qWait(400);
            QTest::mouseClick(button, Qt::LeftButton); // "Stop Recording"
            if (!QTest::qWaitFor(
                    [&] {
                        return dialog_->checkDialog() != nullptr ||
                               dialog_->run()->state() != RecordingRun::State::Recording;
                    },
                    kWaitMs))
                return nullptr;
            if (dialog_->checkDialog() != nullptr ||
                dialog_->run()->state() != RecordingRun::State::Waiting)
                break;
        }
        return dialog_->checkDialog();
    }

    TempDir home_;
    TempDir data_;
    Model model_;
    std::unique_ptr<shell::RecordDialog> dialog_;
    MessageBoxAnswerer boxes_{QMessageBox::Cancel}; // a box would wait for a user: noted, closed
};

TEST_F(RecordDialogOnTheSynth, SemiAutomaticTakesAreKeptDiscardedAndRecordedAgain)
{
    dialog_ = std::make_unique<shell::RecordDialog>(model_, kRecordSelectedMultiSample, false);
    QTest::mouseClick(dialog_->startButton(), Qt::LeftButton);
    ASSERT_FALSE(dialog_->runEnded()) << dialog_->logText().toStdString();

    const char* names[] = {"Low", "Middle", "High"};
    for (int i = 0; i < 3; ++i) {
        shell::RecordingCheckDialog* check = playTake(kKeys[i]);
        ASSERT_NE(check, nullptr) << dialog_->logText().toStdString()
                                  << boxes_.texts().join("\n").toStdString();
        if (i == 1) { // the first take of the second key goes, and the key comes again
            QTest::mouseClick(check->discardButton(), Qt::LeftButton);
            ASSERT_EQ(dialog_->run()->currentKey(), kKeys[1]);
            check = playTake(kKeys[1]);
            ASSERT_NE(check, nullptr) << dialog_->logText().toStdString();
        }
        check->keyNameEdit()->setText(names[i]);
        QTest::mouseClick(check->keepButton(), Qt::LeftButton);
    }
    ASSERT_TRUE(dialog_->runEnded());
    EXPECT_FALSE(dialog_->run()->failed()) << dialog_->logText().toStdString();
    EXPECT_TRUE(boxes_.seen().empty()) << boxes_.texts().join("\n").toStdString();

    // Read back from disk: every key recorded under its name, its take the note played.
    const Project& project = *model_.currentProject();
    const auto reread = loadProjectFile(std::string(project.projectDir) + "/" + project.fileName);
    ASSERT_EQ(reread->projectCount(), 1);
    const Project& loaded = reread->project(0);
    std::string msg;
    for (int i = 0; i < 3; ++i) {
        const TGmsl_key& key = loaded.msl[0].keys[kKeys[i]];
        EXPECT_STREQ(key.name, names[i]);
        WaveFormat format;
        std::vector<uint8_t> data;
        ASSERT_EQ(readWav(keySampleFileName(loaded, loaded.msl[0], kKeys[i]), format, data, msg), 1)
            << msg;
        const std::vector<double> left =
            firstChannel(data, format.nChannels, int64_t(data.size() / format.nBlockAlign));
        EXPECT_GT(peakBetween(left, 0, int64_t(left.size())), 2000.0) << "the synth's note";
        // The note was played no sooner than 0.3 s into the take.
        EXPECT_GT(key.Note_In, int32_t(format.nSamplesPerSec / 5)) << names[i];
        EXPECT_GT(key.Note_Out, key.Note_In) << names[i];
    }
}

} // namespace
} // namespace tg::test
