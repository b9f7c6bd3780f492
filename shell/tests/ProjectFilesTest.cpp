// Opening and saving projects as the user does it: through the File menu's flow and the
// command line of the start-up, with the messages the user sees.
#include "core/Model.h"
#include "shell/GuiStartup.h"
#include "shell/MainWindow.h"
#include "shell/ProjectFileFlow.h"
#include "shell/panels/ProjectsWidget.h"
#include "shell/tests/WidgetTestSupport.h"
#include "tests/support/PlainProject.h"
#include "tests/support/ProjectFileAccess.h"
#include "tests/support/TempDir.h"

#include <QApplication>
#include <QListWidget>
#include <QTimer>
#include <QWizard>
#include <gtest/gtest.h>

#include <filesystem>

namespace tg::shell {
namespace {

class ProjectFilesTest : public ::testing::Test {
  protected:
    QStringList openProjectNames() const
    {
        QStringList names;
        for (int i = 0; i < model.projectCount(); ++i)
            names << QString::fromUtf8(model.project(i).name);
        return names;
    }

    test::TempDir dir;
    Model model;
};

TEST_F(ProjectFilesTest, ASecondFileWithTheSameNameIsRefused)
{
    const std::string first = test::writeProjectFile(dir.file("a"), "Piano", {"Soft"});
    const std::string second = test::writeProjectFile(dir.file("b"), "Piano", {"Loud"});
    const std::string other = test::writeProjectFile(dir.file("b"), "Organ", {"Full"});
    MainWindow window(model);

    test::MessageBoxAnswerer answerer;
    window.projectFiles().openFiles({QString::fromStdString(first), QString::fromStdString(second),
                                     QString::fromStdString(other)});
    EXPECT_EQ(
        answerer.boxes(),
        QStringList{"Error: Cannot open this project. There is already a project with that name."});
    EXPECT_EQ(openProjectNames(), QStringList({"Piano", "Organ"}));
    EXPECT_STREQ(model.project(0).msl[0].name, "Soft");

    auto* projects = window.findChild<ProjectsWidget*>();
    ASSERT_EQ(projects->list()->count(), 2);
    EXPECT_EQ(projects->list()->item(1)->text(), "Organ");
    EXPECT_EQ(projects->list()->currentRow(), model.currentProjectIndex());

    // Once open, the same file again is refused by its name as well.
    window.projectFiles().openFiles({QString::fromStdString(first)});
    EXPECT_EQ(answerer.seen().size(), 2u);
    EXPECT_EQ(model.projectCount(), 2);
    EXPECT_EQ(window.projectFiles().recentProjects().first(), QString::fromStdString(other));
}

TEST_F(ProjectFilesTest, RecordedKeysThatCannotBeFoundOfferToRelocate)
{
    const std::string path = test::writeProjectFile(dir.file("p"), "Bass", {"Finger"});
    // The project once had a take on key 60; its audio is not where the file says.
    test::changeProjectFile(path, [&](Project& project) {
        project.msl[0].keys[60].Note_Out = 4000;
        copyText(project.dataPath, dir.file("gone").c_str());
    });
    MainWindow window(model);
    test::MessageBoxAnswerer answerer(QMessageBox::Cancel);
    window.projectFiles().openFiles({QString::fromStdString(path)});
    ASSERT_FALSE(answerer.seen().empty());
    EXPECT_EQ(answerer.seen().back().title, "Relocation Option");
    EXPECT_EQ(answerer.seen().back().text,
              "No key could be found for project \"Bass\". Do you want to relocate your keys?");
    EXPECT_EQ(model.projectCount(), 1) << "the project stays open";
}

TEST_F(ProjectFilesTest, SaveAsSavesUnderTheNewNameAndAFailedSaveSaysSo)
{
    const std::string path = test::writeProjectFile(dir.file("p"), "Strings", {"Arco"});
    MainWindow window(model);
    window.projectFiles().openFiles({QString::fromStdString(path)});
    ASSERT_EQ(model.projectCount(), 1);

    const QString copy = QString::fromStdString(dir.file("saved/Violins.TGprj"));
    std::filesystem::create_directories(dir.file("saved"));
    ASSERT_TRUE(window.projectFiles().saveSelectedAs(copy));
    EXPECT_TRUE(std::filesystem::exists(copy.toStdString()));
    EXPECT_STREQ(model.project(0).name, "Violins");
    EXPECT_EQ(window.projectFiles().recentProjects().first(), copy);

    // The folder it was saved to disappears: saving again fails and says so.
    std::filesystem::remove_all(dir.file("saved"));
    test::MessageBoxAnswerer answerer;
    EXPECT_FALSE(window.projectFiles().saveSelected());
    EXPECT_EQ(answerer.texts(), QStringList{"Error saving selected project."});
}

TEST_F(ProjectFilesTest, ADamagedProjectOnTheCommandLineIsReportedAndTheRestOpens)
{
    const std::string good = test::writeProjectFile(dir.file("p"), "Keys", {"Soft"});
    const std::string damaged = dir.file("p/Broken.TGprj");
    ASSERT_TRUE(test::writeFileBytes(damaged, std::string("Tonegrabber Project\0 short", 26)));

    GuiStartup startup(*qApp, model);
    startup.setHooks(StartupHooks{});
    startup.setSplashDelay(0, 0);
    test::MessageBoxAnswerer answerer;
    // The fresh preferences open the project wizard at start; cancelled, it adds no project.
    QString wizardTitle;
    QTimer wizardCanceller;
    QObject::connect(&wizardCanceller, &QTimer::timeout, [&] {
        if (auto* wizard = qobject_cast<QWizard*>(QApplication::activeModalWidget())) {
            wizardTitle = wizard->windowTitle();
            wizard->reject();
        }
    });
    wizardCanceller.start(10);
    ASSERT_TRUE(startup.start({QString::fromStdString(good), QString::fromStdString(damaged)}));
    EXPECT_EQ(wizardTitle, "Project Wizard");
    EXPECT_EQ(answerer.texts(), QStringList{QString::fromStdString("read error: " + damaged +
                                                                   "\n\nmaybe wrong format?")});
    EXPECT_EQ(openProjectNames(), QStringList({"Keys"}));

    // The program goes on: the next open works.
    const std::string next = test::writeProjectFile(dir.file("q"), "Drums", {"Kit"});
    startup.window()->projectFiles().openFiles({QString::fromStdString(next)});
    EXPECT_EQ(openProjectNames(), QStringList({"Keys", "Drums"}));
    EXPECT_TRUE(startup.window()->isVisible());
}

TEST_F(ProjectFilesTest, AFailedAudioStepEndsTheStartWithTheFatalBox)
{
    StartupHooks hooks;
    hooks.buildAudioDeviceLists = [](int&, std::string& message) {
        message = "unable to allocate memory for the Audio input devices";
        return 0;
    };
    GuiStartup startup(*qApp, model);
    startup.setHooks(hooks);
    test::MessageBoxAnswerer answerer;
    EXPECT_FALSE(startup.start({}));
    EXPECT_EQ(answerer.boxes(),
              QStringList{"Fatal Error: Could not initialize application. Shutting down."});
    EXPECT_EQ(startup.window(), nullptr);
}

} // namespace
} // namespace tg::shell
