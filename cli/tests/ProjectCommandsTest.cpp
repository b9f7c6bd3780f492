// new, info and set on project files as a user runs them: what is created, the JSON shape,
// the wizard's messages, and Multi-Sample settings saved back in place.
#include "cli/CliApp.h"
#include "cli/tests/CommandRunner.h"
#include "core/Model.h"
#include "tests/support/ProjectFileAccess.h"
#include "tests/support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>
#include <vector>

using testing::HasSubstr;

namespace {

using tg::test::CommandRun;
using tg::test::Exit;
using tg::test::exitOf;
constexpr auto run = tg::test::runCli;
constexpr auto runOk = tg::test::runOk;

class ProjectCommands : public ::testing::Test {
  protected:
    tg::test::TempDir dir;
    std::string path() { return dir.file("Strings.TGprj"); }

    nlohmann::json info() { return tg::test::infoJson(path()); }
    void create(std::vector<std::string> extra = {})
    {
        std::vector<std::string> words{"new", path(), "--data-path", dir.path()};
        words.insert(words.end(), extra.begin(), extra.end());
        runOk(words);
    }
};

TEST_F(ProjectCommands, NewWithThreeLayersOf61KeysShowsInInfo)
{
    create({"--layers",      "3",       "--keys",           "61",
            "--step",        "3",       "--channel",        "2",
            "--program",     "10",      "--midi-out",       "Synth",
            "--audio-in",    "Line In", "--format",         "48KHz, Mono, 24bit",
            "--note-length", "12",      "--release-length", "0.5",
            "--autoloop",    "complex", "--loop-start",     "70"});
    const nlohmann::json doc = info();
    EXPECT_EQ(doc["name"], "Strings");
    EXPECT_EQ(doc["projectDir"], dir.path());
    EXPECT_EQ(doc["dataPath"], dir.path());
    EXPECT_EQ(doc["mslCount"], 3);
    ASSERT_EQ(doc["multisamples"].size(), 3u);
    // The options as the wizard takes them; how it splits layers and keys has its own tests.
    for (int i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        const nlohmann::json& m = doc["multisamples"][i];
        // loopoutsearchstart follows from --loop-start 70.
        const auto expected = nlohmann::json::parse(
            R"({"KBrangeIn": 36, "KBrangeOut": 96, "MIDIoutDevice": "Synth", "MIDIoutChannel": 1,)"
            R"( "AudioInDevice": "Line In", "AudioInFormat": "48KHz, Mono, 24bit", "autoloop": 1,)"
            R"( "MIDIoutProgram": 10, "notelength1": 12.0, "releaselength1": 0.5,)"
            R"( "loopoutsearchstart": 83.5})");
        for (const auto& [field, value] : expected.items())
            EXPECT_EQ(m[field], value) << field;
        EXPECT_EQ(m["keys"][39]["keyState"], 1); // every third key from 36
        EXPECT_EQ(m["keys"][40]["keyState"], 0);
    }

    const CommandRun people = run({"info", path()});
    EXPECT_EQ(people.status, 0);
    EXPECT_THAT(people.out, HasSubstr("Velocity 84: velocity 42-84, keys C2-C7, 21 selected"));
}

TEST_F(ProjectCommands, NewRefusesWhatTheWizardRefuses)
{
    EXPECT_EQ(exitOf({"new", path(), "--data-path", ""}),
              (Exit{1, "Please enter a non-empty path.\n"}));
    EXPECT_EQ(exitOf({"new", path(), "--data-path", dir.file("missing")}),
              (Exit{1, "This path does not exist. Please enter a valid path.\n"}));
    EXPECT_FALSE(std::filesystem::exists(path()));

    EXPECT_EQ(run({"new", path(), "--data-path", dir.path(), "--channel", "17"}).status, 2);
    EXPECT_EQ(run({"new", path(), "--data-path", dir.path(), "--keys", "50"}).status, 2);
    EXPECT_EQ(run({"new", path(), "--data-path", dir.path(), "--autoloop", "on"}).status, 2);
    EXPECT_EQ(run({"new", dir.file("x.prj"), "--data-path", dir.path()}).status, 2);

    create();
    const CommandRun r = run({"new", path(), "--data-path", dir.path()});
    EXPECT_EQ(r.status, 1);
    EXPECT_THAT(r.err, HasSubstr("already exists"));
}

TEST_F(ProjectCommands, InfoOfABadFileReportsTheReadError)
{
    ASSERT_TRUE(tg::test::writeFileBytes(path(), "not a project"));
    CommandRun r = run({"info", path(), "--json"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(nlohmann::json::parse(r.out)["error"],
              "read error: " + path() + "\n\nmaybe wrong format?");
    EXPECT_EQ(exitOf({"info", dir.file("none.TGprj")}),
              (Exit{1, "unable to open: " + dir.file("none.TGprj") + "\n"}));
}

TEST_F(ProjectCommands, EmptyPathsAndFoldersAreRefusedWithTheirOwnMessages)
{
    EXPECT_EQ(exitOf({"info", ""}), (Exit{1, "No project file given: the path is empty.\n"}));
    EXPECT_EQ(exitOf({"info", dir.path()}),
              (Exit{1, "The project file '" + dir.path() + "' is a folder, not a file.\n"}));
    ASSERT_TRUE(tg::test::writeFileBytes(dir.file("plain"), "x"));
    const CommandRun r = run({"info", dir.file("plain/P.TGprj"), "--json"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(nlohmann::json::parse(r.out)["error"],
              "unable to open: " + dir.file("plain/P.TGprj"));
    EXPECT_EQ(exitOf({"new", "", "--data-path", dir.path()}),
              (Exit{2, "Bad argument '': the project file's path is empty.\n"}));
    EXPECT_EQ(exitOf({"demo", ""}),
              (Exit{1, "No folder given for the demo: the path is empty.\n"}));
}

TEST_F(ProjectCommands, DemoRefusesAFolderHoldingFilesItDidNotMake)
{
    ASSERT_TRUE(tg::test::writeFileBytes(dir.file("DemoPiano.TGprj"), "an earlier demo's"));
    ASSERT_TRUE(tg::test::writeFileBytes(dir.file("notes.txt"), "the user's own"));
    EXPECT_EQ(exitOf({"demo", dir.path(), "--quiet"}),
              (Exit{1, "The folder '" + dir.path() +
                           "' holds files the demo did not make; name a new or empty folder.\n"}));
    EXPECT_EQ(tg::test::readFileBytes(dir.file("notes.txt")), "the user's own");
    EXPECT_EQ(tg::test::readFileBytes(dir.file("DemoPiano.TGprj")), "an earlier demo's");
}

TEST_F(ProjectCommands, SetChangesTheChosenMultiSampleAndSavesTheProject)
{
    create({"--layers", "3"});
    CommandRun r = runOk({"set", path(), "--multisample", "1", "msl_recordsettings_notelength1=7.5",
                          "msl_AudioInDevice=Other In", "msl_KBrangeIn=40"});
    EXPECT_EQ(r.out, "msl_recordsettings_notelength1=7.5\nmsl_AudioInDevice=Other In\n"
                     "msl_KBrangeIn=40\n");
    nlohmann::json doc = info();
    EXPECT_EQ(doc["multisamples"][1]["notelength1"], 7.5);
    EXPECT_EQ(doc["multisamples"][1]["AudioInDevice"], "Other In");
    EXPECT_EQ(doc["multisamples"][1]["KBrangeIn"], 40);
    EXPECT_EQ(doc["multisamples"][0]["KBrangeIn"], 48);

    // Without --multisample the project's current Multi-Sample (0 after creation) is changed.
    ASSERT_EQ(run({"set", path(), "msl_mappingsettings_mapTo=1"}).status, 0);
    EXPECT_EQ(info()["multisamples"][0]["mapTo"], 1);

    const std::string before = tg::test::readFileBytes(path());
    EXPECT_EQ(run({"set", path(), "--dry-run", "msl_KBrangeOut=100"}).status, 0);
    EXPECT_EQ(tg::test::readFileBytes(path()), before);

    EXPECT_EQ(run({"set", "msl_KBrangeOut=100"}).status, 2); // needs a project
    EXPECT_EQ(run({"set", path(), "--multisample", "5", "msl_KBrangeOut=100"}).status, 2);
    EXPECT_EQ(tg::test::readFileBytes(path()), before);
}

TEST_F(ProjectCommands, SetWritesMidiControllersIntoTheirTables)
{
    create({"--layers", "2"});
    CommandRun r =
        runOk({"set", path(), "--multisample", "1", "msl_cc_7=100", "msl_cc_39=5", "msl_cc_74=64"});
    EXPECT_EQ(r.out, "msl_cc_7=100\nmsl_cc_39=5\nmsl_cc_74=64\n");
    ASSERT_EQ(run({"set", path(), "--multisample", "1", "msl_cc_7=off"}).status, 0);

    const auto model = tg::test::loadProjectFile(path());
    const tg::TGmsl& msl = model->currentProject()->msl[1];
    // Controller 7 is switched off but keeps its value; 39 is the LSB of controller 7.
    EXPECT_THAT(msl.controllerTable[7], testing::ElementsAre(0, 100, 1, 5));
    EXPECT_THAT(msl.parameterTable[74 - 64], testing::ElementsAre(1, 64));
    EXPECT_EQ(model->currentProject()->msl[0].parameterTable[74 - 64][0], 0);

    const std::string before = tg::test::readFileBytes(path());
    for (const char* bad : {"msl_cc_121=1", "msl_cc_7=128", "msl_cc_7=on", "msl_cc_x=1"})
        EXPECT_EQ(run({"set", path(), bad}).status, 2) << bad;
    EXPECT_EQ(tg::test::readFileBytes(path()), before);
}

} // namespace
