// Which Multi-Samples and keys a record command covers, and the refusals before a run.
#include "recording/RecordList.h"

#include "core/Model.h"
#include "devices/DeviceTables.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

namespace tg::test {
namespace {

class RecordListFixture : public ::testing::Test {
  protected:
    void addProject(const char* name, int layers)
    {
        ASSERT_TRUE(model.newProject().ok());
        Project& p = *model.currentProject();
        copyText(p.name, name);
        copyText(p.dataPath, folder.path().c_str());
        for (int i = 0; i < layers; ++i) {
            ASSERT_TRUE(model.addMultiSample().ok());
            TGmsl& m = p.msl[i];
            m.KBrangeIn = 48;
            m.KBrangeOut = 72;
            m.keys[48].keyState = 1;
            m.keys[60].keyState = 1;
            m.keys[60].hasAudio = 1;
            m.keys[100].keyState = 1; // outside the keyboard range: not recorded
        }
    }

    TempDir folder;
    Model model;
    RecordList list;
    std::string title;
};

TEST_F(RecordListFixture, CommandsCoverMultiSampleProjectOrAllProjectsAndMayFindNone)
{
    addProject("Empty", 0);
    ASSERT_TRUE(buildRecordList(model, kRecordSelectedMultiSample, list).ok());
    EXPECT_TRUE(list.entries.empty());
    addProject("A", 2);
    addProject("B", 3);
    model.selectMultiSample(1);

    ASSERT_TRUE(buildRecordList(model, kRecordSelectedMultiSample, list).ok());
    ASSERT_EQ(list.entries.size(), 1u);
    EXPECT_EQ(list.entries[0].projectIndex, 2);
    EXPECT_EQ(list.entries[0].mslIndex, 1);
    EXPECT_EQ(list.entries[0].keyCount, 2);
    EXPECT_EQ(list.entries[0].keysWithoutAudio, 1);
    EXPECT_TRUE(list.entries[0].keys.test(48));
    EXPECT_FALSE(list.entries[0].keys.test(100));

    ASSERT_TRUE(buildRecordList(model, kRecordSelectedProject, list).ok());
    EXPECT_EQ(list.entries.size(), 3u);
    EXPECT_EQ(list.totalKeys, 6);

    ASSERT_TRUE(buildRecordList(model, kRecordAllProjects, list).ok());
    ASSERT_EQ(list.entries.size(), 5u);
    EXPECT_EQ(list.entries[1].projectIndex, 1);
    EXPECT_EQ(list.entries[2].projectIndex, 2);
    EXPECT_EQ(list.entries[2].mslIndex, 0);
    EXPECT_EQ(list.keysWithoutAudio, 5);
    EXPECT_TRUE(checkRecordList(list, "", title).ok());

    const Result refused = buildRecordList(model, 4, list);
    EXPECT_EQ(refused.message, "illegal menu id");
    EXPECT_TRUE(list.entries.empty());
}

TEST_F(RecordListFixture, RefusalsBeforeTheRunStarts)
{
    addProject("A", 1);
    copyText(model.currentProject()->dataPath, (folder.path() + "\\missing").c_str());
    ASSERT_TRUE(buildRecordList(model, kRecordSelectedProject, list).ok());
    EXPECT_EQ(checkRecordList(list, "", title).message,
              "The path \"" + folder.path() +
                  "/missing\" doesn't exist.\n\nCheck the datapath in the project "
                  "settings\nof the project \"A\"");

    copyText(model.currentProject()->dataPath, folder.path().c_str());
    for (TGmsl_key& key : model.currentProject()->msl[0].keys)
        key.keyState = 0;
    ASSERT_TRUE(buildRecordList(model, kRecordSelectedProject, list).ok());
    EXPECT_EQ(checkRecordList(list, "", title).message,
              "There aren't any Keys that need to be recorded.\nPlease click on \"All\" or "
              "\"Step\" on the left Keyboard Range Selector.\nYou can select single Keys to be "
              "recorded by Ctrl-clicking on them.");

    model.currentProject()->msl[0].keys[50].keyState = 1;
    copyText(model.currentProject()->msl[0].AudioInDevice, kVstPluginEntry);
    ASSERT_TRUE(buildRecordList(model, kRecordSelectedProject, list).ok());
    EXPECT_TRUE(checkRecordList(list, "system:playback", title).ok());
    EXPECT_EQ(checkRecordList(list, kNoAudioOutEntry, title).message,
              "Please select a valid audio out device to sample your plugin.");
    EXPECT_EQ(title, "Info");
}

} // namespace
} // namespace tg::test
