// The import, preset, copier, quick help, about and update windows as a user works them: real
// widgets, real files, the model changing behind them.
#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "core/Model.h"
#include "extras/Presets.h"
#include "extras/UpdateCheck.h"
#include "shell/ActionTable.h"
#include "shell/dialogs/AboutDialog.h"
#include "shell/dialogs/ImportAudioDialog.h"
#include "shell/dialogs/InstrumentCopierDialog.h"
#include "shell/dialogs/PresetManagerDialog.h"
#include "shell/dialogs/QuickHelpDialog.h"
#include "shell/dialogs/UpdateCheckDialog.h"
#include "shell/tests/WidgetTestSupport.h"
#include "tests/support/Pcm16.h"
#include "tests/support/TempDir.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QSignalSpy>
#include <QTableWidget>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <memory>

namespace tg::shell {
namespace {

class ExtrasDialogs : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::filesystem::create_directories(dir.file("data"));
        copyText(model->preferences().AudioInFormat, "44.1KHz, Mono, 16bit");
        ASSERT_TRUE(model->newProject().ok());
        copyText(model->currentProject()->name, "Piano");
        copyText(model->currentProject()->dataPath, dir.file("data").c_str());
        ASSERT_TRUE(model->addMultiSample().ok());
        copyText(model->currentProject()->msl[0].name, "Soft");
    }

    std::string sample(const std::string& name)
    {
        const auto data = test::pcm16(
            4000, 1, [](size_t i, int) { return int16_t(8000 * std::sin(double(i) * 0.05)); });
        std::string message;
        EXPECT_TRUE(writeWav(dir.file(name), makeWaveFormat(44100, 1, 16), data, message));
        return dir.file(name);
    }

    test::TempDir dir;
    std::unique_ptr<Model> model = std::make_unique<Model>();
};

TEST_F(ExtrasDialogs, ImportShowsWhereFilesGoAndAsksForMissingKeys)
{
    ImportAudioDialog dialog(*model, ImportFileTypes::Audio);
    dialog.addPaths({QString::fromStdString(sample("Piano C#3.wav")),
                     QString::fromStdString(sample("Texture.wav"))});
    QTableWidget* table = dialog.table();
    ASSERT_EQ(table->rowCount(), 2);
    const auto key = [&](int row) { return qobject_cast<QComboBox*>(table->cellWidget(row, 1)); };
    EXPECT_EQ(key(0)->currentText(), "C#3 (49)");
    EXPECT_EQ(table->item(0, 2)->text(), "file name");
    EXPECT_EQ(table->item(1, 2)->text(), "none: choose a key");
    {
        test::MessageBoxAnswerer answerer;
        dialog.accept();
        ASSERT_EQ(answerer.seen().size(), 1u);
        EXPECT_TRUE(answerer.seen()[0].text.startsWith("No key was found for"));
    }
    EXPECT_FALSE(model->currentProject()->msl[0].keys[49].hasAudio);

    key(1)->setCurrentIndex(key(1)->findData(60));
    EXPECT_EQ(table->item(1, 2)->text(), "chosen");
    QSignalSpy accepted(&dialog, &QDialog::accepted);
    dialog.accept();
    EXPECT_EQ(accepted.count(), 1);
    EXPECT_EQ(model->currentProject()->msl[0].keys[49].hasAudio, 1);
    EXPECT_EQ(model->currentProject()->msl[0].keys[60].hasAudio, 1);
}

TEST_F(ExtrasDialogs, PresetManagerRenamesAndAppliesPresets)
{
    std::string message;
    ASSERT_TRUE(savePreset(*model->currentProject(), "Warm", message)) << message;
    PresetManagerDialog dialog(*model);
    ASSERT_EQ(dialog.presets()->count(), 1);
    dialog.presets()->item(0)->setText("Warm Pad");
    EXPECT_EQ(listPresets(), std::vector<std::string>{"Warm Pad"});

    dialog.projectName()->setText("Evening");
    dialog.dataFolder()->setText(QString::fromStdString(dir.file("data")));
    dialog.applySelected();
    EXPECT_EQ(model->projectCount(), 2);
    EXPECT_STREQ(model->currentProject()->name, "Evening");
    EXPECT_STREQ(model->currentProject()->msl[0].name, "Soft");
}

TEST_F(ExtrasDialogs, InstrumentCopierCopiesIntoANewProject)
{
    InstrumentCopierDialog dialog(*model);
    dialog.target()->setCurrentIndex(dialog.target()->findText("New Project"));
    dialog.newProjectName()->setText("Library");
    ASSERT_EQ(dialog.multiSamples()->item(0)->checkState(), Qt::Checked);
    dialog.accept();
    ASSERT_EQ(model->projectCount(), 2);
    EXPECT_STREQ(model->project(1).name, "Library");
    EXPECT_EQ(model->project(1).mslCount, 1);
    EXPECT_STREQ(model->project(1).msl[0].name, "Soft");
}

TEST_F(ExtrasDialogs, QuickHelpListsEveryShortcutOfTheMenus)
{
    std::unique_ptr<QuickHelpDialog> help(QuickHelpDialog::keyCommands(nullptr));
    QTableWidget* table = help->table();
    int shortcuts = 0;
    for (const MenuEntry& entry : menuEntries())
        shortcuts += entry.shortcut[0] != '\0' ? 1 : 0;
    int listed = 0;
    bool wizard = false;
    for (int row = 0; row < table->rowCount(); ++row) {
        const QTableWidgetItem* keys = table->item(row, 1);
        listed += keys && !keys->text().isEmpty() ? 1 : 0;
        wizard = wizard || (table->item(row, 0)->text() == "Project Wizard" &&
                            keys->text() == QKeySequence("Ctrl+W").toString());
    }
    EXPECT_EQ(listed, shortcuts);
    EXPECT_GT(shortcuts, 20);
    EXPECT_TRUE(wizard);
}

TEST_F(ExtrasDialogs, AboutBoxAndUpdateCheckWithoutAddress)
{
    AboutDialog about;
    ASSERT_GE(about.libraries()->rowCount(), 6);
    EXPECT_EQ(about.libraries()->item(0, 0)->text(), "Qt");
    EXPECT_EQ(about.libraries()->item(0, 1)->text(), qVersion());
    // Every library names the version that is loaded (the audio and MIDI ones included).
    for (int row = 0; row < about.libraries()->rowCount(); ++row)
        EXPECT_FALSE(about.libraries()->item(row, 1)->text().isEmpty())
            << about.libraries()->item(row, 0)->text().toStdString();
    EXPECT_EQ(about.libraries()->findItems("JACK", Qt::MatchExactly).size(), 1);

    UpdateCheckDialog updates;
    QSignalSpy finished(&updates.checker(), &UpdateChecker::finished);
    ASSERT_TRUE(finished.wait(5000));
    EXPECT_TRUE(updates.status()->text().startsWith("No address to check for updates is set"));
}

} // namespace
} // namespace tg::shell
