// msl and keys: the list panels' operations on project files, checked by reading the files.
#include "cli/tests/CommandRunner.h"
#include "core/Model.h"
#include "core/Names.h"
#include "tests/support/PlainProject.h"
#include "tests/support/ProjectFileAccess.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

namespace {

using tg::test::CommandRun;
constexpr auto run = tg::test::runCli;
using tg::test::writeProjectFile;
constexpr auto runOk = tg::test::runOk;

class ListCommands : public ::testing::Test {
  protected:
    // The project as a fresh load reads it.
    const tg::Project& read(const std::string& name)
    {
        loaded = tg::test::loadProjectFile(dir.file(name + ".TGprj"));
        return *loaded->currentProject();
    }

    std::vector<std::string> names(const std::string& project)
    {
        const tg::Project& p = read(project);
        std::vector<std::string> names;
        for (int i = 0; i < p.mslCount; ++i)
            names.emplace_back(p.msl[i].name);
        return names;
    }

    tg::test::TempDir dir;
    std::unique_ptr<tg::Model> loaded;
};

TEST_F(ListCommands, RenameDuplicateMoveAndDeleteChangeTheFile)
{
    const std::string path = writeProjectFile(dir.path(), "Piano", {"Soft", "Loud"});
    CommandRun r = runOk({"msl", "rename", path, "Forte", "--multisample", "1"});
    EXPECT_EQ(names("Piano"), (std::vector<std::string>{"Soft", "Forte"}));

    EXPECT_EQ(tg::test::exitOf({"msl", "rename", path, "Soft", "--multisample", "1"}),
              (tg::test::Exit{1, "A multisample with that name already exists!\n"}));
    ASSERT_EQ(run({"msl", "duplicate", path, "--multisample", "0"}).status, 0);
    ASSERT_EQ(run({"msl", "move", path, "up", "--multisample", "2"}).status, 0);
    EXPECT_EQ(names("Piano"), (std::vector<std::string>{"Soft", "Soft-1", "Forte"}));
    ASSERT_EQ(run({"msl", "delete", path, "--multisample", "0"}).status, 0);
    EXPECT_EQ(names("Piano"), (std::vector<std::string>{"Soft-1", "Forte"}));

    EXPECT_EQ(run({"msl", "move", path, "sideways"}).status, 2);
    EXPECT_EQ(run({"msl", "rename", path, "X", "--multisample", "5"}).status, 2);
}

TEST_F(ListCommands, PasteTakesSettingsOrKeysFromAnotherProject)
{
    const std::string from = writeProjectFile(dir.path(), "Source", {"Lead"});
    const std::string to = writeProjectFile(dir.path(), "Target", {"Pad"});
    tg::test::changeProjectFile(from, [&](tg::Project& project) {
        tg::TGmsl& lead = project.msl[0];
        lead.recordsettings.recpause = 9.0;
        lead.keys[70].keyState = 1;
        ASSERT_TRUE(tg::test::writeFileBytes(tg::keySampleFileName(project, lead, 70), "RIFF"));
    });
    ASSERT_EQ(run({"msl", "paste", from, to}).status, 0);
    EXPECT_EQ(read("Target").msl[0].recordsettings.recpause, 9.0);
    EXPECT_EQ(read("Target").msl[0].keys[70].keyState, 0) << "settings only";

    runOk({"msl", "paste", from, to, "--with-keys"});
    const tg::Project& target = read("Target");
    EXPECT_STREQ(target.msl[0].name, "Pad");
    EXPECT_EQ(target.msl[0].keys[70].keyState, 1);
    EXPECT_EQ(target.msl[0].keys[70].hasAudio, 1) << "the take was copied to the target's name";

    // The takes move to another folder; the project is pointed there and finds them again.
    std::filesystem::create_directories(dir.file("moved"));
    for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
        if (entry.path().extension() == ".wav")
            std::filesystem::rename(entry.path(),
                                    dir.file("moved") + "/" + entry.path().filename().string());
    EXPECT_EQ(read("Target").msl[0].keys[70].hasAudio, 0);
    ASSERT_EQ(run({"relocate", to, dir.file("moved")}).status, 0);
    EXPECT_EQ(read("Target").msl[0].keys[70].hasAudio, 1);
    EXPECT_EQ(run({"relocate", to, dir.file("nowhere")}).status, 1);
}

TEST_F(ListCommands, KeysAreLockedAndSelectedByList)
{
    const std::string path = writeProjectFile(dir.path(), "Bass", {"Finger"});
    ASSERT_EQ(run({"keys", "lock", path, "40,42-44"}).status, 0);
    ASSERT_EQ(run({"keys", "select", path, "all"}).status, 0);
    ASSERT_EQ(run({"keys", "deselect", path, "0-20"}).status, 0);
    const tg::TGmsl& msl = read("Bass").msl[0];
    for (int note : {40, 42, 43, 44})
        EXPECT_EQ(msl.keys[note].locked, 1) << note;
    EXPECT_EQ(msl.keys[41].locked, 0);
    EXPECT_EQ(msl.keys[20].keyState, 0);
    EXPECT_EQ(msl.keys[21].keyState, 1);

    for (const char* bad : {"128", "44-40", "60,", "x", "-3"})
        EXPECT_EQ(run({"keys", "lock", path, bad}).status, 2) << bad;
}

} // namespace
