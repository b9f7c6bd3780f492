// The record dialog opened from the Recording menu, bouncing a Project from the General MIDI
// SoundFont: the automatic run records every key and logs each step, and the semi-automatic
// run offers each take for checking and a discarded key again.
#include "shell/dialogs/RecordDialog.h"

#include "core/IniKeys.h"
#include "core/Message.h"
#include "core/Model.h"
#include "core/NoteNames.h"
#include "devices/InstrumentSpec.h"
#include "recording/ProjectSetup.h"
#include "shell/ActionTable.h"
#include "shell/IniFile.h"
#include "shell/MainWindow.h"
#include "shell/dialogs/RecordingCheckDialog.h"
#include "shell/tests/WidgetTestSupport.h"
#include "tests/support/ProjectFileAccess.h"
#include "tests/support/TempDir.h"

#include <QAction>
#include <QCheckBox>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

namespace tg::shell {
namespace {

constexpr const char* kFont = "/usr/share/sounds/sf2/FluidR3_GM.sf2";
constexpr int kKeys[] = {48, 66, 84};
constexpr int kRunTimeoutMs = 300 * 1000;

// A Project of three keys sampled from the hosted SoundFont piano, saved in `dir` after
// every take; no audio output is chosen, so bouncing is the way to sample it.
void makeHostedProject(Model& model, const test::TempDir& dir, bool automatic, int keyStep = 18)
{
    ProjectSetupRecord setup;
    setup.name = "Keys";
    setup.dataPath = dir.path();
    setup.audioInDevice = kPluginDeviceName;
    setup.midiOutDevice = kPluginDeviceName;
    setup.pluginRecording = true;
    setup.automatic = automatic;
    setup.sampleFormat = "44.1KHz, Mono, 16bit";
    setup.keyStep = keyStep; // 18: keys 48, 66 and 84
    setup.noteLength = 0.8;
    setup.releaseLength = 0.3f;
    setup.autoLoop = true;
    ASSERT_TRUE(createProjectFromSetup(model, setup).ok());
    copyText(model.currentProject()->projectDir, dir.path().c_str());
    std::string msg;
    ASSERT_EQ(storeInstrumentSpec(std::string(kFont) + "?preset=0", msg), 1) << msg;
}

RecordDialog* openFromMenu(MainWindow& window, const char* action)
{
    window.actions().action(QString::fromLatin1(action))->trigger();
    return window.findChild<RecordDialog*>();
}

class RecordDialogTest : public ::testing::Test {
  protected:
    test::TempDir dir;
    Model model;
};

TEST_F(RecordDialogTest, OfflineRunFromTheMenuRecordsEveryKeyAndLogsItsSteps)
{
    makeHostedProject(model, dir, true);
    openIniFile()->setValue(QString::fromLatin1(ini::kCloseDialogAfterRecording), false);

    MainWindow window(model);
    RecordDialog* dialog = openFromMenu(window, "recordSelectedProject");
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowTitle(), "Record selected Project (Automatic Mode)");
    EXPECT_EQ(dialog->logText(), "Press 'Start'");
    // Without an audio output the hosted instrument can only be bounced: that is offered.
    ASSERT_TRUE(dialog->offlineBouncingBox()->isEnabled());
    EXPECT_TRUE(dialog->offlineBouncingBox()->isChecked());

    QTest::mouseClick(dialog->startButton(), Qt::LeftButton);
    EXPECT_EQ(dialog->startButton()->text(), "Stop Recording");
    QTRY_VERIFY_WITH_TIMEOUT(dialog->runEnded(), kRunTimeoutMs);
    ASSERT_FALSE(dialog->run()->failed()) << dialog->logText().toStdString();

    EXPECT_EQ(dialog->windowTitle(), "Record selected Project (Automatic Mode) - 3 keys (3 done)");
    EXPECT_EQ(dialog->progressBar()->value(), 3);
    EXPECT_EQ(dialog->progressBar()->maximum(), 3);
    // The run's log lines (their texts and order are the run's tests') with the run's line
    // breaks as the dialog's; verbose mode is on by default.
    const QString log = dialog->logText();
    EXPECT_TRUE(
        log.contains("Opening Audio In Device \"-Vst Plugin-\"\nwith \"44.1KHz, Mono, 16bit\""))
        << log.toStdString();
    EXPECT_FALSE(log.contains('\r'));
    EXPECT_TRUE(log.trimmed().endsWith("Finished recording.")) << log.toStdString();
    // "Close Dialog after Recording" was read as off.
    EXPECT_TRUE(dialog->isVisible());

    // The takes' markers and loops are checked by RecordOnTheSynth (tests/e2e).
    for (int note : kKeys)
        EXPECT_EQ(model.currentProject()->msl[0].keys[note].hasAudio, 1) << note;
}

TEST_F(RecordDialogTest, ClosingDuringARunKeepsEveryFinishedTake)
{
    makeHostedProject(model, dir, true, 1); // 37 keys from 48
    MainWindow window(model);
    RecordDialog* dialog = openFromMenu(window, "recordSelectedProject");
    ASSERT_NE(dialog, nullptr);
    QTest::mouseClick(dialog->startButton(), Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(dialog->progressBar()->value() >= 2, kRunTimeoutMs);
    QPointer<RecordDialog> watched(dialog);
    QTest::mouseClick(dialog->closeButton(), Qt::LeftButton);
    QTRY_VERIFY(watched.isNull());

    // The Project on disk lists every take finished before the close, and no other.
    const Project& project = *model.currentProject();
    const auto reread =
        test::loadProjectFile(std::string(project.projectDir) + "/" + project.fileName);
    ASSERT_EQ(reread->projectCount(), 1);
    const Project& loaded = reread->project(0);
    int recorded = 0;
    for (int note = 48; note <= 84; ++note) {
        const TGmsl_key& key = loaded.msl[0].keys[note];
        if (key.hasAudio == 0)
            continue;
        ++recorded;
        EXPECT_EQ(note, 47 + recorded) << "takes are made in key order";
        EXPECT_GT(key.Note_Out, key.Note_In) << note;
    }
    EXPECT_GE(recorded, 2);
    EXPECT_LT(recorded, 37) << "the run went on after the close";
}

TEST_F(RecordDialogTest, OptionsAreReadFromAndWrittenToTheSettings)
{
    makeHostedProject(model, dir, true);
    const QString verboseKey = QString::fromLatin1(ini::kEnableVerboseMode);
    openIniFile()->setValue(verboseKey, false);

    RecordDialog dialog(model, kRecordSelectedProject, true);
    QCheckBox* verboseBox = nullptr;
    for (QCheckBox* box : dialog.findChildren<QCheckBox*>())
        if (box->text() == "Enable Verbose Mode")
            verboseBox = box;
    ASSERT_NE(verboseBox, nullptr);
    EXPECT_FALSE(verboseBox->isChecked());
    verboseBox->setChecked(true);
    EXPECT_TRUE(openIniFile()->value(verboseKey).toBool());
}

TEST_F(RecordDialogTest, ARefusedRunIsExplainedAndTheDialogCloses)
{
    makeHostedProject(model, dir, true);
    for (TGmsl_key& key : model.currentProject()->msl[0].keys)
        key.keyState = 0; // no key selected for recording

    MainWindow window(model);
    test::MessageBoxAnswerer answerer;
    RecordDialog* dialog = openFromMenu(window, "recordSelectedMultisample");
    ASSERT_NE(dialog, nullptr);
    QPointer<RecordDialog> watched(dialog);
    QTRY_VERIFY(watched.isNull()); // closed and deleted once shown
    ASSERT_EQ(answerer.boxes().size(), 1);
    EXPECT_TRUE(answerer.boxes()[0].startsWith("Error: There aren't any Keys that need to be"))
        << answerer.boxes()[0].toStdString();
}

// The dialog's side of a semi-automatic run: its title, the next key it names, the check
// dialog after a take, and the same key offered again after a discard. Takes kept, named and
// saved are proven on the real sound chain (RecordDialogOnTheSynth).
TEST_F(RecordDialogTest, SemiAutomaticTakesAreCheckedAndADiscardedKeyIsOfferedAgain)
{
    makeHostedProject(model, dir, false);
    MainWindow window(model);
    RecordDialog* dialog = openFromMenu(window, "semiAutoRecordSelectedProject");
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowTitle(), "Record selected Project (Semi Automatic Mode)");
    QTest::mouseClick(dialog->startButton(), Qt::LeftButton);
    const QString firstKey = "Next Key: " + QString::fromStdString(noteName(48));
    EXPECT_EQ(dialog->nextKeyLabel()->text(), firstKey);

    ASSERT_EQ(dialog->startButton()->text(), "Start Countdown");
    QTest::mouseClick(dialog->startButton(), Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return dialog->checkDialog() != nullptr; }, kRunTimeoutMs));
    RecordingCheckDialog* check = dialog->checkDialog();
    EXPECT_EQ(check->windowTitle(), "Check recorded Keysample");
    EXPECT_FALSE(dialog->startButton()->isEnabled()) << "the take is being checked";
    QTest::mouseClick(check->discardButton(), Qt::LeftButton);
    EXPECT_EQ(dialog->nextKeyLabel()->text(), firstKey);
    EXPECT_EQ(dialog->startButton()->text(), "Start Countdown");
    EXPECT_EQ(dialog->run()->currentKey(), 48);
}

} // namespace
} // namespace tg::shell
