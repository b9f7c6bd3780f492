// Key-Samples played in the desktop program, started the way its start-up starts it (the
// real device layer, the preferences' output and MIDI input) on the offscreen platform: a
// mouse press on the keyboard dock's key, and a Note On arriving through JACK MIDI on the
// program's MIDI input, each captured on a JACK client of the test's own; with Through the
// same Note On plays the synth instead.
#include "core/IniKeys.h"
#include "core/Model.h"
#include "core/ProjectFile.h"
#include "core/Startup.h"
#include "devices/AudioEngine.h"
#include "devices/DeviceTables.h"
#include "devices/MidiPorts.h"
#include "recording/StartupWiring.h"
#include "shell/IniFile.h"
#include "shell/KeyPlayback.h"
#include "shell/MainWindow.h"
#include "shell/QtPlatformLeaks.h"
#include "shell/panels/InputOutputWidget.h"
#include "shell/panels/KeyboardWidget.h"
#include "tests/e2e/SampledKey.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/support/TempDir.h"
#include "tests/support/ToneAnalysis.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QTest>

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace tg::test {
namespace {

constexpr const char* kCaptureClient = "tg-e2e-key-capture";
constexpr const char* kMidiKeysClient = "tg-e2e-midi-keys";
constexpr double kHoldSeconds = 3.0;
constexpr int kPlaybackLimitMs = 20000;

class KeyPlaybackEndToEnd : public ::testing::Test {
  protected:
    void SetUp() override
    {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        setenv("TONEGRABBER_MIDI_API", "jack", 1);
        home = std::getenv("TONEGRABBER_HOME");
        std::string failure;
        ASSERT_TRUE(makeSampledKey(dir.path(), home, sampled, failure)) << failure;
        chooseAudioOutput(home, kCaptureClient);
        shell::openIniFile()->setValue(QString::fromLatin1(ini::kInputMidiDeviceName),
                                       QString::fromStdString(midiKeys.portName()));
        ASSERT_TRUE(capture.ok());
        ASSERT_TRUE(midiKeys.ok());

        static int argc = 1;
        static char name[] = "tonegrabber";
        static char* argv[] = {name, nullptr};
        app = std::make_unique<QApplication>(argc, argv);
        // As the desktop start-up does: the core with the real device layer, the main
        // window, the devices the preferences name.
        ASSERT_EQ(initializeCore(model, determineCoreFolders(), deviceStartupHooks(deviceTables()),
                                 failure),
                  1)
            << failure;
        window = std::make_unique<shell::MainWindow>(model);
        window->keyPlayback().openDevices();
        window->show();
        ProjectLoadOutcome outcome;
        ASSERT_EQ(loadProjects(model, dir.path(), {"Organ.TGprj"}, ProjectLoadOptions{}, outcome,
                               failure),
                  1)
            << failure;
        model.selectProject(outcome.loaded.at(0));
        ASSERT_TRUE(audio::outputOpen()) << window->keyPlayback().audio().lastMessage();
    }

    void TearDown() override
    {
        window.reset();
        std::string message;
        audio::closeStreams(message);
        audio::terminate();
        // The MIDI ports are JACK clients too: closed here, their threads cannot outlive the
        // process's teardown.
        midi::destroyMidi();
    }

    // Waits with the event loop running until the player has stopped; false if it did not.
    static bool waitUntilSilent()
    {
        return QTest::qWaitFor([] { return !audio::player().isPlaying(); }, kPlaybackLimitMs);
    }

    TempDir dir;
    std::string home;
    SampledKey sampled;
    JackCapture capture{kCaptureClient, 60.0};
    JackMidiKeys midiKeys{kMidiKeysClient};
    std::unique_ptr<QApplication> app;
    Model model;
    std::unique_ptr<shell::MainWindow> window;
};

TEST_F(KeyPlaybackEndToEnd, KeyHeldOnTheKeyboardPlaysNoteLoopAndRelease)
{
    shell::KeyboardWidget* keyboard = window->keyboard();
    const QPoint key = keyboard->keyRect(SampledKey::kNote).center();
    expectKeyHeardRight(capture, sampled, kHoldSeconds, LetGo::Release, [&] {
        QTest::mousePress(keyboard, Qt::LeftButton, {}, key);
        EXPECT_TRUE(audio::player().isPlaying());
        EXPECT_EQ(window->keyPlayback().keys().lastNote(), SampledKey::kNote);
        QTest::qWait(int(kHoldSeconds * 1000));
        QTest::mouseRelease(keyboard, Qt::LeftButton, {}, key);
        ASSERT_TRUE(waitUntilSilent());
    });
}

TEST_F(KeyPlaybackEndToEnd, NoteOnFromMidiInputPlaysTheKeyUntilNoteOff)
{
    expectKeyHeardRight(capture, sampled, kHoldSeconds, LetGo::FadeOut, [&] {
        midiKeys.send(0x90, SampledKey::kNote, 100);
        QTest::qWait(int(kHoldSeconds * 1000));
        EXPECT_EQ(window->keyPlayback().keys().lastNote(), SampledKey::kNote);
        midiKeys.send(0x80, SampledKey::kNote, 0);
        ASSERT_TRUE(waitUntilSilent());
    });
}

TEST_F(KeyPlaybackEndToEnd, ThroughLetsTheMidiKeyboardPlayTheSynthInsteadOfTheKeys)
{
    auto* devices = window->findChild<shell::InputOutputWidget*>();
    ASSERT_NE(devices, nullptr);
    QComboBox* midiOut = devices->midiOutDevice();
    ASSERT_GE(midiOut->findText(kSynthMidiPort), 0);
    midiOut->setCurrentText(kSynthMidiPort);
    emit midiOut->textActivated(midiOut->currentText());
    devices->midiThrough()->setChecked(true);

    // The synth's audio reaches the capture client beside the program's output.
    JackPatchbay patchbay;
    ASSERT_TRUE(patchbay.ok());
    int patched = 0;
    for (const std::string& port : patchbay.ports("^fluidsynth:"))
        if (port.find("midi") == std::string::npos)
            patched += patchbay.connect(port, std::string(kCaptureClient) + ":in_" +
                                                  std::to_string(patched + 1));
    ASSERT_EQ(patched, 2);

    capture.restart();
    midiKeys.send(0x90, 69, 110);
    QTest::qWait(1500);
    EXPECT_FALSE(audio::player().isPlaying());
    midiKeys.send(0x80, 69, 0);
    QTest::qWait(300);
    const std::vector<double> heard = capture.channel(0);
    const int rate = capture.sampleRate();
    ASSERT_GT(heard.size(), size_t(rate * 1.5));
    // Heard while held, at the pitch of the key (A4), whatever the synth's program.
    EXPECT_GT(rmsBetween(heard, rate / 2, rate), 100.0);
    EXPECT_NEAR(pitchHz(heard, rate / 2, rate, rate, 300.0, 600.0), 440.0, 5.0);
    EXPECT_NE(window->keyPlayback().keys().lastNote(), 69);
}

} // namespace
} // namespace tg::test
