// Name checks, the suffix rule for copies, and the Key-Sample file names with their note names.
#include "core/Names.h"
#include "core/Model.h"
#include "core/NoteNames.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

using tg::nextCopyName;

namespace {

std::string copyOf(const std::string& name, const std::vector<std::string>& siblings)
{
    std::string copy;
    EXPECT_TRUE(nextCopyName(name, siblings, copy)) << name;
    return copy;
}

} // namespace

TEST(CopyName, CountsOnFromATrailingNumber)
{
    EXPECT_EQ(copyOf("Piano-3", {"Piano-3"}), "Piano-4");
    EXPECT_EQ(copyOf("Piano", {"Piano"}), "Piano-1");
    EXPECT_EQ(copyOf("Piano-x", {"Piano-x"}), "Piano-x-1");
    EXPECT_EQ(copyOf("Piano-3", {"Piano-3", "Piano-4"}), "Piano-5");
    EXPECT_EQ(copyOf("A-B-09", {}), "A-B-10");
    EXPECT_EQ(copyOf("Pad-", {}), "Pad--1"); // nothing after the dash is no number
    EXPECT_EQ(copyOf("Pad-2a", {}), "Pad-2a-1");
}

TEST(CopyName, GivesUpAfterTwentyCandidates)
{
    std::vector<std::string> siblings{"Piano"};
    for (int i = 1; i <= 20; ++i)
        siblings.push_back("Piano-" + std::to_string(i));
    std::string copy;
    EXPECT_FALSE(nextCopyName("Piano", siblings, copy));
    siblings.pop_back(); // Piano-20 free again: the twentieth candidate is still tried
    EXPECT_TRUE(nextCopyName("Piano", siblings, copy));
    EXPECT_EQ(copy, "Piano-20");
}

TEST(CopyName, ModelSiblingsAndGiveUpMessages)
{
    tg::Model model;
    for (int i = 0; i <= 20; ++i) {
        ASSERT_TRUE(model.newProject().ok());
        tg::copyText(model.view().name,
                     (i == 0 ? std::string("Live") : "Live-" + std::to_string(i)).c_str());
        ASSERT_TRUE(model.addMultiSample().ok());
        tg::copyText(model.view().msl[model.view().currentMsl].name, "Bass");
    }
    model.selectProject(0);
    std::string copy;
    tg::Result result = tg::projectCopyName(model, copy);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(
        result.message,
        "Cannot duplicate this project. There are too many projects with the same base name!");

    tg::Project& project = model.view();
    ASSERT_TRUE(tg::multiSampleCopyName(project, copy).ok());
    EXPECT_EQ(copy, "Bass-1");
    for (int i = 1; i <= 20; ++i) {
        ASSERT_TRUE(model.addMultiSample().ok());
        tg::copyText(project.msl[project.currentMsl].name, ("Bass-" + std::to_string(i)).c_str());
    }
    model.selectMultiSample(0);
    result = tg::multiSampleCopyName(project, copy);
    EXPECT_EQ(result.message, "Cannot duplicate this multisample. There are too many "
                              "multisamples with the same base name!");
}

// The taken-name messages are pinned where users meet them: renaming a Multi-Sample
// (PanelsTest, ListCommands) and applying a preset (Presets).
TEST(NameChecks, EmptyAndTakenNamesAreRefused)
{
    tg::Model model;
    ASSERT_TRUE(model.newProject().ok());
    tg::copyText(model.view().name, "Organ");
    ASSERT_TRUE(model.newProject().ok());
    EXPECT_EQ(tg::checkProjectName(model, "", 1).message, "Empty project names are not allowed!");
    EXPECT_FALSE(tg::checkProjectName(model, "Organ", 1).ok());
    EXPECT_TRUE(tg::checkProjectName(model, "Organ", 0).ok()); // renaming to its own name
    EXPECT_TRUE(tg::checkProjectName(model, "organ", -1).ok());

    ASSERT_TRUE(model.addMultiSample().ok());
    tg::copyText(model.view().msl[0].name, "Soft");
    EXPECT_EQ(tg::checkMultiSampleName(model.view(), "", -1).message,
              "Empty multisample names are not allowed!");
    EXPECT_FALSE(tg::checkMultiSampleName(model.view(), "Soft", -1).ok());
    EXPECT_TRUE(tg::checkMultiSampleName(model.view(), "Soft", 0).ok());
}

TEST(NameChecks, ForbiddenCharactersAreTheFileNameOnes)
{
    EXPECT_EQ(tg::withoutForbiddenNameChars("a\"b/c?d\\e*f<g>h|i:j k-1.x"), "abcdefghij k-1.x");
    EXPECT_FALSE(tg::isAllowedNameChar(':'));
    EXPECT_TRUE(tg::isAllowedNameChar('-'));
}

// Note names count octaves from -1, so that middle C (60) is C4.
TEST(KeySampleFiles, NamesFollowProjectMultiSampleAndNote)
{
    const std::pair<int, const char*> notes[] = {{0, "000 - C-1"},
                                                 {11, "011 - B-1"},
                                                 {61, "061 - C#4"},
                                                 {69, "069 - A4"},
                                                 {127, "127 - G9"}};
    for (const auto& [note, name] : notes)
        EXPECT_EQ(tg::keySampleFileName("/data", "Song", "Piano", note),
                  std::string("/data/Song - Piano - ") + name + ".wav");
    EXPECT_EQ(tg::noteName(-1), "");
    EXPECT_EQ(tg::noteName(128), "");
    EXPECT_EQ(tg::projectDataFolder("/projects", "Song"), "/projects/Song_data");
}

TEST(KeySampleFiles, OverwriteQuestionOnlyWhenFilesOfTheCandidateExist)
{
    tg::test::TempDir dir;
    tg::Model model;
    ASSERT_TRUE(model.newProject().ok());
    tg::Project& project = model.view();
    tg::copyText(project.name, "Song");
    tg::copyText(project.dataPath, dir.path().c_str());
    ASSERT_TRUE(model.addMultiSample().ok());
    tg::copyText(project.msl[0].name, "Piano");

    EXPECT_FALSE(tg::multiSampleKeySamplesExist(project, "Piano-1"));
    EXPECT_FALSE(tg::projectKeySamplesExist(project, "Song-1"));
    ASSERT_TRUE(
        tg::test::writeFileBytes(tg::keySampleFileName(dir.path(), "Song", "Piano-1", 72), "x"));
    ASSERT_TRUE(
        tg::test::writeFileBytes(tg::keySampleFileName(dir.path(), "Song-1", "Piano", 5), "x"));
    EXPECT_TRUE(tg::multiSampleKeySamplesExist(project, "Piano-1"));
    EXPECT_TRUE(tg::projectKeySamplesExist(project, "Song-1"));
    EXPECT_FALSE(tg::projectKeySamplesExist(project, "Song-2"));
}
