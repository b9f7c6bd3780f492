// Start-up without the GUI: the initialization log, the steps and their order, the fatal audio
// step, the user data folder, and the start-up projects.
#include "core/Startup.h"
#include "core/Model.h"
#include "core/Paths.h"
#include "core/Preferences.h"
#include "core/ProjectFile.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>

namespace {

const std::string kLogHead = "(first line)\r\n\r\n******* initialization log of ******* "
                             "initialization log of  (Release)\r\n\r\n";
const std::string kLogEnd = "\r\n\r\n\r\n\r\n******* initialization finished.\r\n\r\n";

bool endsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// Each test starts in an empty user data folder of its own, whatever ran before it.
class Startup : public ::testing::Test {
  protected:
    tg::test::TempDir home;
    tg::Model model;
    tg::CoreFolders folders;
    tg::StartupHooks hooks;
    std::vector<std::string> steps;
    std::string message;

    void SetUp() override
    {
        setenv("TONEGRABBER_HOME", home.path().c_str(), 1);
        folders = tg::determineCoreFolders();
        hooks.progress = [this](const std::string& step) { steps.push_back(step); };
    }
    std::string log()
    {
        return tg::test::readFileBytes(folders.userDataFolder + "/tg_init_log.txt");
    }
};

TEST_F(Startup, GoodStartWritesTheWholeLogAndRunsEveryStep)
{
    ASSERT_TRUE(tg::test::writeFileBytes(folders.userDataFolder + "/tg_init_log.txt",
                                         "an old log that must go"));
    hooks.buildMidiDeviceLists = [](long& in, long& out, std::string&) {
        in = 2;
        out = 3;
        return 1;
    };
    hooks.buildAudioDeviceLists = [](int& inputs, std::string&) {
        inputs = 4;
        return 1;
    };
    int measured = 0;
    hooks.measureProcessingSpeed = [&] {
        ++measured;
        EXPECT_EQ(steps.size(), 4u); // after "Loading Startup Projects"
    };
    ASSERT_TRUE(tg::initializeCore(model, folders, hooks, message)) << message;

    const std::string text = log();
    EXPECT_EQ(text, kLogHead +
                        "\r\n\t-found 2 MIDI In Device(s)\r\n\t-found 3 MIDI Out Device(s)"
                        "\r\n\r\n-initializing Audio Stuff (step 1):"
                        "\r\n\r\n-loading the projects contained in the folder "
                        "\"Data\\StartupProjects\":" +
                        kLogEnd);
    EXPECT_EQ(steps,
              (std::vector<std::string>{"Start Initialization ...", "Initializing MIDI Devices",
                                        "Initialize Audio (Step 1)", "Loading Startup Projects"}));
    EXPECT_EQ(measured, 1);
    EXPECT_EQ(model.audioInputDeviceCount(), 4);
}

TEST_F(Startup, WithoutDeviceLayersTheLogSaysSoAndCountsNothing)
{
    ASSERT_TRUE(tg::initializeCore(model, folders, hooks, message));
    const std::string text = log();
    EXPECT_EQ(text.rfind(kLogHead, 0), 0u);
    EXPECT_NE(text.find("\r\n\t-found 0 MIDI In Device(s)\r\n\t-found 0 MIDI Out Device(s)"),
              std::string::npos);
    EXPECT_NE(text.find("without a MIDI device layer"), std::string::npos);
    EXPECT_NE(text.find("without an audio device layer"), std::string::npos);
    EXPECT_TRUE(endsWith(text, kLogEnd));
}

TEST_F(Startup, MidiFailureIsLoggedAndStartGoesOnButAudioFailureEndsIt)
{
    hooks.buildMidiDeviceLists = [](long&, long&, std::string& m) {
        m = "unable to allocate memory for the MIDI input devices";
        return 0;
    };
    hooks.buildAudioDeviceLists = [](int&, std::string& m) {
        m = "unable to allocate memory for the Audio input devices";
        return 0;
    };
    tg::copyText(model.preferences().instrumentName, "untouched");
    EXPECT_FALSE(tg::initializeCore(model, folders, hooks, message));
    EXPECT_EQ(message, "unable to allocate memory for the Audio input devices");
    const std::string text = log();
    EXPECT_NE(text.find("\r\n\r\nERROR: unable to allocate memory for the MIDI input devices"),
              std::string::npos);
    EXPECT_TRUE(endsWith(text, "-initializing Audio Stuff (step 1):\r\n\r\nERROR: unable to "
                               "allocate memory for the Audio input devices"));
    EXPECT_STREQ(model.preferences().instrumentName, "untouched"); // preferences not loaded
}

TEST(StartupFolders, UserDataFolderFollowsTonegrabberHomeAndIsCreatedWithItsParents)
{
    const std::string testHome = tg::userDataFolder();
    tg::test::TempDir base;
    const std::string home = base.path() + "/Documents/Corvane/Tonegrabber6";
    setenv("TONEGRABBER_HOME", home.c_str(), 1);
    const tg::CoreFolders folders = tg::determineCoreFolders();
    EXPECT_EQ(folders.userDataFolder, home);
    EXPECT_TRUE(std::filesystem::is_directory(home));
    EXPECT_EQ(folders.programFolder, std::filesystem::current_path().string());
    // Without the variable the folder lies in the user's documents.
    unsetenv("TONEGRABBER_HOME");
    EXPECT_NE(tg::userDataFolder().find("/Corvane/Tonegrabber6"), std::string::npos);
    setenv("TONEGRABBER_HOME", testHome.c_str(), 1);
}

class StartupProjects : public Startup {
  protected:
    void writeStartupProject(const std::string& name)
    {
        auto p = std::make_unique<tg::Project>();
        tg::copyText(p->dataPath, folders.userDataFolder.c_str());
        const std::string folder = tg::startupProjectFolder(folders);
        std::filesystem::create_directories(folder);
        ASSERT_TRUE(tg::saveProject(*p, folder, name, message)) << message;
    }
    int load()
    {
        outcome = {};
        return tg::loadStartupProjects(model, folders, {}, outcome, message);
    }
    tg::ProjectLoadOutcome outcome;
};

TEST_F(StartupProjects, AreLoadedOnlyWhenThePreferencesAskForItFromAFolderThatMayBeMissing)
{
    model.preferences().loadPrjAtStartup = 1;
    EXPECT_TRUE(load()); // no folder yet: nothing to load, nothing to say
    EXPECT_EQ(model.projectCount(), 0);
    EXPECT_TRUE(message.empty());

    writeStartupProject("First");
    writeStartupProject("Second");
    ASSERT_TRUE(tg::test::writeFileBytes(tg::startupProjectFolder(folders) + "/notes.txt", "x"));

    model.preferences().loadPrjAtStartup = 0;
    EXPECT_TRUE(load());
    EXPECT_EQ(model.projectCount(), 0);

    model.preferences().loadPrjAtStartup = 1;
    ASSERT_TRUE(load()) << message;
    ASSERT_EQ(model.projectCount(), 2);
    std::vector<std::string> names{model.project(0).name, model.project(1).name};
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"First", "Second"}));
}

} // namespace
