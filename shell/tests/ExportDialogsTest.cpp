// The export dialogs and the menu flow: the settings dialog's allowed values and preselection,
// and an export through menu, settings, naming and progress against the CLI's export.
#include "shell/ExportFlow.h"
#include "shell/MainWindow.h"
#include "shell/ProjectFileFlow.h"
#include "shell/dialogs/ExportNamingDialog.h"
#include "shell/dialogs/ExportSettingsDialog.h"

#include "core/Message.h"
#include "core/Model.h"
#include "export/ExportFormats.h"
#include "shell/ActionTable.h"
#include "shell/tests/WidgetTestSupport.h"
#include "tests/support/SavedProject.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

namespace tg::shell {
namespace {

QRadioButton* choice(QDialog& dialog, const char* group, uint32_t value)
{
    return dialog.findChild<QRadioButton*>(
        QStringLiteral("%1_%2").arg(QString::fromLatin1(group)).arg(value, 0, 16));
}

TEST(ExportSettingsDialogTest, ProphetXOffersOnly48kHz16BitAndStartsThere)
{
    ExportSettingsDialog first(QStringLiteral("Sequential Prophet-X (*.zip)"), false, 0, nullptr);
    EXPECT_EQ(first.windowTitle(), "Export Settings - Sequential Prophet-X (*.zip)");
    EXPECT_FALSE(choice(first, "frequency", 0x08)->isEnabled()); // no 44.1 kHz
    EXPECT_TRUE(choice(first, "frequency", 0x10)->isChecked());
    EXPECT_FALSE(choice(first, "depth", 0x800)->isEnabled());
    EXPECT_TRUE(choice(first, "channels", 0x80000)->isEnabled());
    EXPECT_EQ(first.word(), 0x20410u);
    EXPECT_NE(first.findChild<QCheckBox*>("loopAll"), nullptr);

    // After a WAV export at 44.1 kHz with the tail removed, the tail choice stays.
    ExportSettingsDialog later(QStringLiteral("Sequential Prophet-X (*.zip)"), true, 0x80020408,
                               nullptr);
    EXPECT_EQ(later.word(), 0x80020410u);
    later.findChild<QCheckBox*>("removeAfterLoopOut")->setChecked(false);
    choice(later, "channels", 0x40000)->click();
    EXPECT_EQ(later.word(), 0x40040410u);

    ExportSettingsDialog wav(QStringLiteral("WAV-Files"), false, 0, nullptr);
    EXPECT_TRUE(choice(wav, "frequency", 0x01)->isEnabled());
    EXPECT_EQ(wav.findChild<QCheckBox*>("loopAll"), nullptr);
}

std::map<std::string, std::string> tree(const std::string& folder)
{
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            files[std::filesystem::relative(entry.path(), folder).string()] =
                test::readFileBytes(entry.path().string());
    return files;
}

class ExportFlowTest : public ::testing::Test {
  protected:
    void SetUp() override
    {
        test::SineProjectShape shape;
        shape.notes = {60, 64};
        shape.frames = 6000;
        shape.noteIn = 200;
        shape.loopIn = 1500;
        shape.loopOut = 4999;
        const std::string path = test::saveSineProject(dir.path(), "Menu", shape);
        window = std::make_unique<MainWindow>(model);
        window->projectFiles().openFiles({QString::fromStdString(path)});
        ASSERT_EQ(model.projectCount(), 1);
    }

    test::TempDir dir;
    Model model;
    std::unique_ptr<MainWindow> window;
};

TEST_F(ExportFlowTest, BothSubmenusListEveryFormatInOrder)
{
    const std::vector<std::string> texts = exportMenuTexts();
    for (const char* name : {kExportSelectedMenu, kExportAllMenu}) {
        const QList<QAction*> actions =
            window->actions().submenu(QString::fromLatin1(name))->actions();
        ASSERT_EQ(actions.size(), int(texts.size())) << name;
        for (int i = 0; i < actions.size(); ++i) {
            EXPECT_EQ(actions[i]->text().toStdString(), texts[i]) << name;
            // Formats with an exporter are enabled, the others wait for theirs.
            EXPECT_EQ(actions[i]->isEnabled(), hasExporter(findExportFormat(texts[i])->format))
                << texts[i];
        }
    }
}

TEST_F(ExportFlowTest, MenuExportWritesWhatTheCliWrites)
{
    const std::string guiOut = dir.file("gui");
    const std::string cliOut = dir.file("cli");
    std::filesystem::create_directories(guiOut);
    std::filesystem::create_directories(cliOut);
    const QString naming = QStringLiteral("<#ms#>-<#mn#>-<#n#>");

    // The user: 22.05 kHz, 8 Bit, levels adjusted; the naming and folder; OK to every message.
    QStringList seen;
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [&] {
        QWidget* modal = QApplication::activeModalWidget();
        if (modal == nullptr || !modal->isVisible())
            return;
        if (auto* settings = qobject_cast<ExportSettingsDialog*>(modal)) {
            seen << settings->objectName();
            choice(*settings, "frequency", 0x04)->click();
            choice(*settings, "depth", 0x200)->click();
            settings->findChild<QCheckBox*>("adjustLevels")->setChecked(true);
            settings->findChild<QDialogButtonBox*>("buttons")
                ->button(QDialogButtonBox::Ok)
                ->click();
        } else if (auto* namingDialog = qobject_cast<ExportNamingDialog*>(modal)) {
            seen << namingDialog->objectName();
            namingDialog->setNamingScheme(naming);
            namingDialog->setDestination(QString::fromStdString(guiOut));
            namingDialog->findChild<QPushButton*>("export")->click();
        } else if (auto* box = qobject_cast<QMessageBox*>(modal)) {
            seen << box->text();
            box->button(QMessageBox::Ok)->click();
        }
    });
    user.start(10);
    window->actions().action(QStringLiteral("exportSelected0"))->trigger(); // "WAV-Files"
    user.stop();

    EXPECT_EQ(seen, QStringList({"ExportSettingsDialog", "ExportNamingDialog",
                                 QStringLiteral("Exported \"Menu\" as WAV-Files to %1")
                                     .arg(QString::fromStdString(guiOut))}));

    // The same word: the defaults with 22.05 kHz, 8 Bit and levels adjusted.
    std::string output;
    ASSERT_EQ(test::runCliProcess("export '" + dir.file("Menu.TGprj") +
                                      "' --format WAV-Files --dest '" + cliOut + "' --naming '" +
                                      naming.toStdString() + "' --settings 0x20020204 --quiet",
                                  &output),
              0)
        << output;
    const auto gui = tree(guiOut);
    EXPECT_EQ(gui.size(), 4u);
    EXPECT_TRUE(gui == tree(cliOut)) << "the menu's files differ from the CLI's";
}

TEST(ExportNamingDialogTest, EmptyFolderIsRefusedAndWarningsAskToContinue)
{
    test::TempDir dir;
    auto project = std::make_unique<Project>();
    copyText(project->name, "P");
    project->mslCount = 1;
    copyText(project->msl[0].name, "L");
    project->msl[0].keys[60].keyState = 1;
    project->msl[0].keys[60].hasAudio = 1;
    ExportNamingDialog dialog(*project, QStringLiteral("AIFF-Files (Loop only)"), nullptr);
    EXPECT_EQ(dialog.windowTitle(), "Aiff Export (Loop Only)");
    dialog.findChild<QPushButton*>("shortDefault")->click();
    auto* preview = dialog.findChild<QListWidget*>("preview");
    ASSERT_EQ(preview->count(), 1);
    EXPECT_EQ(preview->item(0)->text(), "noname-00-060");

    dialog.show();
    {
        test::MessageBoxAnswerer answerer;
        dialog.tryExport();
        EXPECT_EQ(answerer.texts(), QStringList{"Please enter a valid export directory!"});
    }
    dialog.setDestination(QString::fromStdString(dir.path()));
    dialog.setNamingScheme(QStringLiteral("<#prj#>"));
    {
        test::MessageBoxAnswerer no(QMessageBox::No);
        dialog.tryExport();
        ASSERT_EQ(no.seen().size(), 1u);
        EXPECT_EQ(no.seen()[0].title, "Continue?");
        EXPECT_TRUE(no.seen()[0].text.endsWith("Do you want to continue anyhow?"));
        EXPECT_TRUE(no.seen()[0].text.contains("WARNING: the AIFF - Name"));
        EXPECT_TRUE(dialog.isVisible());
    }
    test::MessageBoxAnswerer yes(QMessageBox::Yes);
    dialog.tryExport();
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

} // namespace
} // namespace tg::shell
