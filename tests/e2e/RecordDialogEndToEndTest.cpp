// The record dialog on the real sound chain, its Multi-Sample recording the synth's JACK ports.
// Semi-automatic: the test plays each note on the synth's MIDI port while the take runs, stops
// it with the dialog's button, then keeps or discards it in the check dialog. Automatic: the
// program is killed in the middle of the run.
#include "audiofile/WavFile.h"
#include "core/Model.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "devices/AudioEngine.h"
#include "devices/DeviceTables.h"
#include "devices/MidiPorts.h"
#include "recording/ProjectSetup.h"
#include "recording/StartupWiring.h"
#include "shell/dialogs/RecordDialog.h"
#include "shell/dialogs/RecordingCheckDialog.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/e2e/ToneAnalysis.h"
#include "tests/support/TempDir.h"

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tg::test {
namespace {

constexpr int kKeys[] = {48, 66, 84}; // 37 keys from C3, every 18th
constexpr int kWaitMs = 60 * 1000;

// Opens the devices and makes a project "Synth" in `data` that records the synth's JACK ports
// from C3, every `keyStep`th key of 37, notes of 0.6 s with 0.3 s of release. False, with
// the reason, when something is missing.
bool openSynthProject(Model& model, const std::string& home, const std::string& data,
                      bool automatic, int keyStep, std::string& msg)
{
    CoreFolders folders;
    folders.programFolder = home;
    folders.userDataFolder = home;
    if (initializeWithDevices(model, folders, msg) != 1 || !openMidiOutByName(kSynthMidiPort, msg))
        return false;
    ProjectSetupRecord setup;
    setup.name = "Synth";
    setup.dataPath = data;
    setup.audioInDeviceRow = audioInTableIndex(deviceTables(), kSynthAudioDevice);
    if (setup.audioInDeviceRow < 0) {
        msg = "no audio input " + std::string(kSynthAudioDevice);
        return false;
    }
    setup.audioInDevice = kSynthAudioDevice;
    setup.midiOutDevice = kSynthMidiPort;
    setup.automatic = automatic;
    setup.sampleFormat = "44.1KHz, Stereo, 16bit";
    setup.keyStep = keyStep;
    setup.noteLength = 0.6;
    setup.releaseLength = 0.3f;
    const Result made = createProjectFromSetup(model, setup);
    if (!made.ok()) {
        msg = made.message;
        return false;
    }
    Project& project = *model.currentProject();
    copyText(project.projectDir, data.c_str());
    project.msl[0].recordsettings.recpause = 0.3;
    return true;
}

void closeDevices()
{
    std::string msg;
    audio::closeStreams(msg);
    audio::terminate();
    midi::destroyMidi();
}

// A message box would wait for a user: `note` gets its text and the box is closed.
void closeMessageBoxes(QTimer& timer, const std::function<void(const QString&)>& note)
{
    QObject::connect(&timer, &QTimer::timeout, [note] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            note(box->text());
            box->reject();
        }
    });
    timer.start(100);
}

class RecordDialogOnTheSynth : public ::testing::Test {
  protected:
    void SetUp() override
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        app_ = std::make_unique<QApplication>(argc_, argv_);
        std::string msg;
        ASSERT_TRUE(openSynthProject(model_, home_.path(), data_.path(), false, 18, msg)) << msg;

        closeMessageBoxes(boxCloser_, [this](const QString& text) { boxes_ += text + "\n"; });
    }

    void TearDown() override
    {
        dialog_.reset();
        closeDevices();
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

    int argc_ = 1;
    char name_[8] = "recdlg";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> app_;
    TempDir home_;
    TempDir data_;
    Model model_;
    std::unique_ptr<shell::RecordDialog> dialog_;
    QTimer boxCloser_;
    QString boxes_;
};

TEST_F(RecordDialogOnTheSynth, SemiAutomaticTakesAreKeptDiscardedAndRecordedAgain)
{
    dialog_ = std::make_unique<shell::RecordDialog>(model_, kRecordSelectedMultiSample, false);
    QTest::mouseClick(dialog_->startButton(), Qt::LeftButton);
    ASSERT_FALSE(dialog_->runEnded()) << dialog_->logText().toStdString();

    const char* names[] = {"Low", "Middle", "High"};
    for (int i = 0; i < 3; ++i) {
        shell::RecordingCheckDialog* check = playTake(kKeys[i]);
        ASSERT_NE(check, nullptr) << dialog_->logText().toStdString() << boxes_.toStdString();
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
    EXPECT_TRUE(boxes_.isEmpty()) << boxes_.toStdString();

    // Read back from disk: every key recorded under its name, its take the note played.
    const Project& project = *model_.currentProject();
    Model reread;
    ProjectLoadOutcome outcome;
    std::string msg;
    ASSERT_EQ(loadProjects(reread, project.projectDir, {project.fileName}, {}, outcome, msg), 1)
        << msg;
    const Project& loaded = *reread.currentProject();
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

// The program with its record dialog in an automatic run on the synth, in a process of its
// own: it writes the number of finished takes to `doneFd` as each one is saved (the progress
// bar moves once the take and the project are on disk). Returns only if the run ends.
int recordInAProcessOfItsOwn(const std::string& home, const std::string& data, int doneFd)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int argc = 1;
    char name[] = "recdlg";
    char* argv[] = {name, nullptr};
    QApplication app(argc, argv);
    Model model;
    std::string msg;
    if (!openSynthProject(model, home, data, true, 6, msg)) {
        std::fprintf(stderr, "%s\n", msg.c_str());
        return 2;
    }
    shell::RecordDialog dialog(model, kRecordSelectedMultiSample, true);
    QObject::connect(dialog.progressBar(), &QProgressBar::valueChanged, [doneFd](int done) {
        const std::string line = std::to_string(done) + "\n";
        (void)!write(doneFd, line.data(), line.size());
    });
    // A refusal (takes that keep dropping frames on a loaded machine) ends the run instead of
    // waiting for a user to close its box.
    QTimer boxCloser;
    closeMessageBoxes(boxCloser, [](const QString& text) {
        std::fprintf(stderr, "%s\n", text.toStdString().c_str());
    });
    dialog.show();
    QTest::mouseClick(dialog.startButton(), Qt::LeftButton);
    const bool ended = QTest::qWaitFor([&] { return dialog.runEnded(); }, 5 * kWaitMs);
    std::fprintf(stderr, "%s\n", dialog.logText().toStdString().c_str());
    return ended ? 0 : 3;
}

// Reads the take counts of the process on `fd` until it reports `wanted`, or nothing more
// comes within a minute; returns the last count read.
int readDoneCount(int fd, int wanted)
{
    int done = 0;
    std::string pending;
    while (done < wanted) {
        pollfd ready{fd, POLLIN, 0};
        char bytes[64];
        if (poll(&ready, 1, kWaitMs) <= 0)
            break;
        const ssize_t count = read(fd, bytes, sizeof bytes);
        if (count <= 0)
            break;
        pending.append(bytes, size_t(count));
        for (size_t end; (end = pending.find('\n')) != std::string::npos; pending.erase(0, end + 1))
            done = std::stoi(pending.substr(0, end));
    }
    return done;
}

// Killed outright (no handler, no clean-up) in the middle of an automatic run: the project
// loads, and every take the dialog counted as finished is on disk with its markers.
TEST(RecordDialogKilled, ProjectLoadsWithEveryTakeTheDialogFinished)
{
    TempDir home;
    TempDir data;
    int pipeFds[2];
    ASSERT_EQ(pipe(pipeFds), 0);
    const pid_t child = fork();
    if (child == 0) {
        close(pipeFds[0]);
        _exit(recordInAProcessOfItsOwn(home.path(), data.path(), pipeFds[1]));
    }
    close(pipeFds[1]);
    int done = readDoneCount(pipeFds[0], 1);
    if (done == 1)
        QTest::qSleep(700); // into the second take
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    done = std::max(done, readDoneCount(pipeFds[0], kKeyCount)); // counted before it died
    close(pipeFds[0]);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the run ended before it was killed";
    ASSERT_GE(done, 1) << "the dialog finished no take";

    Model model;
    ProjectLoadOutcome outcome;
    std::string msg;
    ASSERT_EQ(loadProjects(model, data.path(), {"Synth.TGprj"}, {}, outcome, msg), 1) << msg;
    const Project& project = *model.currentProject();
    const TGmsl& msl = project.msl[0];
    int recorded = 0;
    for (int note = 48; note <= 84 && recorded < done; note += 6, ++recorded) {
        SCOPED_TRACE(note);
        const TGmsl_key& key = msl.keys[note];
        EXPECT_EQ(key.hasAudio, 1);
        EXPECT_GT(key.Note_Out, key.Note_In);
        WaveFormat format;
        std::vector<uint8_t> audio;
        ASSERT_EQ(readWav(keySampleFileName(project, msl, note), format, audio, msg), 1) << msg;
        EXPECT_EQ(int64_t(audio.size() / format.nBlockAlign), int64_t(44100 * 14 / 10));
    }
}

} // namespace
} // namespace tg::test
