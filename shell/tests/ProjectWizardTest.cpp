// The project wizard as the user fills it in: its page checks and page order, and the project
// file it makes (compared with the command line's). Its opening at start-up is seen by the
// start-up test in ProjectFilesTest.
#include "shell/wizard/ProjectWizard.h"
#include "core/Message.h"
#include "core/Model.h"
#include "recording/RecordList.h"
#include "shell/ActionTable.h"
#include "shell/MainWindow.h"
#include "shell/dialogs/RecordDialog.h"
#include "shell/tests/WidgetTestSupport.h"
#include "shell/wizard/RecordingSetupActions.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

namespace tg::shell {
namespace {

void choose(QWizard& wizard, const char* choice, int position)
{
    test::named<RadioChoice>(wizard, choice)->button(position)->click();
}

TEST(ProjectWizardPages, NameAndFolderAreCheckedAndAutoLoopOffSkipsItsSettings)
{
    test::TempDir dir;
    Model model;
    ASSERT_TRUE(model.newProject().ok());
    copyText(model.currentProject()->name, "Taken");
    ProjectWizard wizard(model);
    wizard.show();
    test::MessageBoxAnswerer answerer;

    wizard.next(); // Introduction
    wizard.next(); // Recording Mode
    ASSERT_EQ(wizard.currentId(), ProjectWizard::ProjectName);
    auto* name = test::named<QLineEdit>(wizard, "projectName");
    EXPECT_EQ(name->text(), "MyProject");
    for (const char* refused : {"", "Taken"}) {
        name->setText(QString::fromLatin1(refused));
        wizard.next();
        EXPECT_EQ(wizard.currentId(), ProjectWizard::ProjectName);
    }
    name->setText(QStringLiteral("Fresh"));
    wizard.next();
    ASSERT_EQ(wizard.currentId(), ProjectWizard::DataPath);
    auto* path = test::named<QLineEdit>(wizard, "dataPath");
    for (const std::string& refused : {std::string(), dir.file("missing")}) {
        path->setText(QString::fromStdString(refused));
        wizard.next();
        EXPECT_EQ(wizard.currentId(), ProjectWizard::DataPath);
    }
    EXPECT_TRUE(answerer.boxes().value(1).startsWith("Error: "));
    EXPECT_EQ(answerer.texts(),
              QStringList({"Please enter a project name.",
                           "A project with that name already exists. Please enter a different "
                           "name.",
                           "Please enter a non-empty path.",
                           "This path does not exist. Please enter a valid path."}));

    path->setText(QString::fromStdString(dir.path()));
    while (wizard.currentId() != ProjectWizard::AutoLoop)
        wizard.next();
    wizard.next();
    EXPECT_EQ(wizard.currentId(), ProjectWizard::Completed);
    wizard.back();
    choose(wizard, "autoLoop", 0);
    wizard.next();
    EXPECT_EQ(wizard.currentId(), ProjectWizard::AutoLoopComplexity);
    wizard.next();
    EXPECT_EQ(wizard.currentId(), ProjectWizard::AutoLoopStart);
    wizard.next();
    EXPECT_EQ(wizard.currentId(), ProjectWizard::Completed);
}

// Fills in the open wizard: the recording mode at `mode` (2: the hosted instrument), 61 keys
// every third key, two velocity layers, auto-loop "Complex" starting at 70%.
void fillInWizard(ProjectWizard& wizard, const std::string& dataPath, int mode = 2)
{
    wizard.next();
    choose(wizard, "recordingMode", mode);
    test::named<QLineEdit>(wizard, "projectName")->setText(QStringLiteral("Wiz"));
    test::named<QLineEdit>(wizard, "dataPath")->setText(QString::fromStdString(dataPath));
    choose(wizard, "samplingRange", 2);
    test::named<QSpinBox>(wizard, "velocityLayers")->setValue(2);
    test::named<QSpinBox>(wizard, "keyStep")->setValue(3);
    choose(wizard, "autoLoop", 0);
    choose(wizard, "loopComplexity", 2);
    choose(wizard, "loopStart", 2);
    while (wizard.currentId() != ProjectWizard::Completed)
        wizard.next();
    wizard.accept();
}

// Runs the wizard from the main window as a user would: `fill` answers the wizard, the record
// dialog is started, the project is saved as `saveAs`, any message box is closed. The titles of
// the windows seen, in order (a message box with its text).
QStringList runWizardFromTheMenu(MainWindow& window,
                                 const std::function<void(ProjectWizard&)>& fill,
                                 const std::string& saveAs)
{
    QStringList seen;
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [&] {
        QWidget* modal = QApplication::activeModalWidget();
        if (modal == nullptr || !modal->isVisible())
            return;
        if (seen.isEmpty() || seen.last() != modal->windowTitle())
            seen << modal->windowTitle();
        if (auto* wizard = qobject_cast<ProjectWizard*>(modal)) {
            fill(*wizard);
        } else if (auto* record = qobject_cast<RecordDialog*>(modal)) {
            for (auto* button : record->findChildren<QPushButton*>())
                if (button->text() == QLatin1String("Start Recording") && button->isEnabled())
                    button->click();
        } else if (auto* save = qobject_cast<QFileDialog*>(modal)) {
            save->selectFile(QString::fromStdString(saveAs));
            static_cast<QDialog*>(save)->accept();
        } else {
            if (auto* box = qobject_cast<QMessageBox*>(modal))
                seen.last() += QStringLiteral(": ") + box->text();
            modal->close();
        }
    });
    user.start(10);
    QAction* wizardAction = window.actions().action(QStringLiteral("openProjectWizard"));
    EXPECT_TRUE(wizardAction->isEnabled());
    wizardAction->trigger();
    return seen;
}

TEST(ProjectWizardFlow, MakesTheSameProjectFileAsTheCommandLine)
{
    test::TempDir dir;
    const std::string guiFile = dir.file("gui/Wiz.TGprj");
    const std::string cliFile = dir.file("cli/Wiz.TGprj");
    std::filesystem::create_directories(dir.file("gui"));
    std::filesystem::create_directories(dir.file("cli"));
    std::filesystem::create_directories(dir.file("data"));
    Model model;
    MainWindow window(model);

    const QStringList seen = runWizardFromTheMenu(
        window, [&](ProjectWizard& wizard) { fillInWizard(wizard, dir.file("data")); }, guiFile);

    // The wizard hands the new Project to the record dialog, whose run refuses here (no audio
    // output for the hosted instrument), and then saves it.
    EXPECT_EQ(seen, QStringList({"Project Wizard",
                                 "Info: Please select a valid audio out device to sample your "
                                 "plugin.",
                                 "Save selected Project as"}));
    ASSERT_EQ(model.projectCount(), 1);

    std::string output;
    ASSERT_EQ(test::runCliProcess("new '" + cliFile + "' --data-path '" + dir.file("data") +
                                      "' --plugin --layers 2 --keys 61 --step 3 --autoloop complex "
                                      "--loop-start 70",
                                  &output),
              0)
        << output;
    const std::string gui = test::readFileBytes(guiFile);
    ASSERT_FALSE(gui.empty());
    EXPECT_TRUE(gui == test::readFileBytes(cliFile));
}

TEST(ProjectWizardFlow, SemiAutomaticModeReachesTheRecordDialogAndARejectedRunIsNotSaved)
{
    test::TempDir dir;
    Model model;
    int recordedCommand = 0;
    bool recordedAutomatic = true;
    bool saved = false;
    const NewProjectSteps steps{[&](int command, bool automatic) {
                                    recordedCommand = command;
                                    recordedAutomatic = automatic;
                                    return int(QDialog::Rejected);
                                },
                                [&] { return saved = true; }};
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [&] {
        if (auto* wizard = qobject_cast<ProjectWizard*>(QApplication::activeModalWidget()))
            fillInWizard(*wizard, dir.path(), 1);
    });
    user.start(10);
    EXPECT_TRUE(runProjectWizard(model, nullptr, steps));
    EXPECT_EQ(recordedCommand, kRecordSelectedProject);
    EXPECT_FALSE(recordedAutomatic);
    EXPECT_FALSE(saved);
    ASSERT_EQ(model.projectCount(), 1);
    EXPECT_STREQ(model.currentProject()->name, "Wiz");
}

} // namespace
} // namespace tg::shell
