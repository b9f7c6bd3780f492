// Project and Multi-Sample operations: limits, refusals, current rows and list visibility.
#include "core/Model.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// A model of its own per test, with one Project open.
class ModelOps : public ::testing::Test {
  protected:
    tg::Model model;

    void SetUp() override { ASSERT_TRUE(model.newProject().ok()); }
    tg::Project& current() { return *model.currentProject(); }
    void addMultiSamples(int count)
    {
        for (int i = 0; i < count; ++i)
            ASSERT_TRUE(model.addMultiSample().ok());
    }
};

struct RecordingListener : tg::TonegrabberModelListener {
    std::vector<std::string> events;
    void projectListChanged() override { events.push_back("projects"); }
    void currentProjectChanged(int index) override
    {
        events.push_back("project " + std::to_string(index));
    }
    void multiSampleListChanged() override { events.push_back("multisamples"); }
    void currentMultiSampleChanged(int index) override
    {
        events.push_back("msl " + std::to_string(index));
    }
};

} // namespace

TEST_F(ModelOps, The129thMultiSampleIsRefusedAndNothingChangesOrIsTold)
{
    addMultiSamples(128);
    model.selectMultiSample(3);
    const int top = current().topMsl;
    RecordingListener listener;
    model.addListener(&listener);
    const tg::Result result = model.addMultiSample();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.message, "You cannot have more than 128 Multi-Samples.");
    EXPECT_EQ(model.duplicateMultiSample().message, "You cannot have more than 128 Multi-Samples.");
    EXPECT_EQ(current().mslCount, 128);
    EXPECT_TRUE(listener.events.empty());
    EXPECT_EQ(current().currentMsl, 3);
    EXPECT_EQ(current().topMsl, top);
    model.removeListener(&listener);
}

TEST_F(ModelOps, The129thProjectIsRefused)
{
    for (int i = 1; i < 128; ++i)
        ASSERT_TRUE(model.newProject().ok());
    EXPECT_EQ(model.newProject().message, "You cannot have more than 128 Projects.");
    EXPECT_EQ(model.duplicateProject().message, "You cannot have more than 128 Projects.");
    EXPECT_EQ(model.projectCount(), 128);
    EXPECT_EQ(model.currentProjectIndex(), 127);
}

TEST_F(ModelOps, NewMultiSampleHasTheNewRecordValues)
{
    model.setAudioInputDeviceCount(3);
    tg::Preferences& prefs = model.preferences();
    prefs.MIDIoutChannel = 9;
    prefs.MIDIoutAttackVelocity = 100;
    tg::copyText(prefs.AudioInDevice, "system");
    prefs.recordsettings.notelength1 = 4.25;
    addMultiSamples(1);
    // Dirty the first one, then add another made from it: the keys must come back fresh.
    tg::TGmsl& first = current().msl[0];
    first.keys[60].keyState = 1;
    first.keys[60].loopMode = 2;
    first.controllerTable[3][1] = 7;
    first.range_end = 90;
    tg::copyText(first.name, "Piano");
    addMultiSamples(1);

    const tg::TGmsl& msl = current().msl[1];
    EXPECT_EQ(current().currentMsl, 1);
    EXPECT_STREQ(msl.name, "");
    EXPECT_EQ(msl.MIDIoutChannel, 9);
    EXPECT_EQ(msl.MIDIoutAttackVelocity, 100);
    EXPECT_STREQ(msl.AudioInDevice, "system");
    EXPECT_EQ(msl.recordsettings.notelength1, 4.25);
    EXPECT_EQ(msl.audioInChannelL, std::vector<int32_t>(3, -1));
    // Nothing of the dirtied first one comes along.
    EXPECT_EQ(msl.controllerTable[3][1], 0);
    EXPECT_EQ(msl.range_end, 127);
    for (int note = 0; note < 128; ++note) {
        const tg::TGmsl_key& key = msl.keys[note];
        SCOPED_TRACE(note);
        EXPECT_EQ(key.keyState, 0);
        EXPECT_EQ(key.loopMode, 0);
        EXPECT_EQ(key.mapLow, note);
        EXPECT_EQ(key.mapHigh, note);
        EXPECT_STREQ(key.name, "Noname");
    }
}

TEST_F(ModelOps, DuplicateMultiSampleKeepsEverything)
{
    model.setAudioInputDeviceCount(1);
    addMultiSamples(1);
    tg::TGmsl& original = current().msl[0];
    tg::copyText(original.name, "Strings");
    original.keys[64].Loop_Out = 12345;
    original.audioInChannelL[0] = 3;
    ASSERT_TRUE(model.duplicateMultiSample().ok());
    EXPECT_EQ(current().mslCount, 2);
    EXPECT_EQ(current().currentMsl, 1);
    EXPECT_STREQ(current().msl[1].name, "Strings");
    EXPECT_EQ(current().msl[1].keys[64].Loop_Out, 12345);
    EXPECT_EQ(current().msl[1].audioInChannelL, std::vector<int32_t>{3});
}

TEST_F(ModelOps, DeletingAMultiSampleMovesTheLaterOnesDownUntilNoneIsLeft)
{
    addMultiSamples(3);
    for (int i = 0; i < 3; ++i)
        tg::copyText(current().msl[i].name, std::to_string(i).c_str());
    model.selectMultiSample(1);
    ASSERT_TRUE(model.deleteMultiSample().ok());
    EXPECT_EQ(current().mslCount, 2);
    EXPECT_EQ(current().currentMsl, 1);
    EXPECT_STREQ(current().msl[1].name, "2");
    ASSERT_TRUE(model.deleteMultiSample().ok()); // the last one: the current row moves up
    EXPECT_EQ(current().currentMsl, 0);
    EXPECT_STREQ(current().msl[0].name, "0");
    ASSERT_TRUE(model.deleteMultiSample().ok());
    EXPECT_EQ(current().mslCount, 0);
    EXPECT_EQ(current().currentMsl, 0);
    EXPECT_EQ(model.currentMultiSample(), nullptr);
    EXPECT_TRUE(model.deleteMultiSample().ok()); // nothing left to delete
    EXPECT_EQ(current().mslCount, 0);
}

TEST_F(ModelOps, AddingAndMovingMultiSamplesKeepTheCurrentRowInTheSixVisibleRows)
{
    addMultiSamples(6);
    EXPECT_EQ(current().topMsl, 0);
    addMultiSamples(1); // row 6 leaves rows 0..5
    EXPECT_EQ(current().topMsl, 1);
    addMultiSamples(3); // rows 4..9 visible, current 9
    EXPECT_EQ(current().topMsl, 4);
    for (int i = 0; i < 10; ++i)
        tg::copyText(current().msl[i].name, std::to_string(i).c_str());
    model.selectMultiSample(4);
    ASSERT_TRUE(model.moveMultiSampleUp().ok());
    EXPECT_EQ(current().currentMsl, 3);
    EXPECT_STREQ(current().msl[3].name, "4");
    EXPECT_STREQ(current().msl[4].name, "3");
    EXPECT_EQ(current().topMsl, 0); // left the rows: first visible becomes 3 - 4, not below 0

    model.selectMultiSample(5);
    ASSERT_TRUE(model.moveMultiSampleDown().ok()); // row 6 leaves rows 0..5
    EXPECT_EQ(current().currentMsl, 6);
    EXPECT_EQ(current().topMsl, 5);
    model.selectMultiSample(9);
    ASSERT_TRUE(model.moveMultiSampleDown().ok()); // nothing below the last one
    EXPECT_EQ(current().currentMsl, 9);
    model.selectMultiSample(0);
    ASSERT_TRUE(model.moveMultiSampleUp().ok());
    EXPECT_EQ(current().currentMsl, 0);
}

TEST_F(ModelOps, NewProjectTakesDataPathAndViewValue)
{
    tg::copyText(model.preferences().datapath, "/music/data");
    current().viewValue = 77;
    tg::copyText(current().name, "First");
    ASSERT_TRUE(model.newProject().ok());
    EXPECT_EQ(model.projectCount(), 2);
    EXPECT_EQ(model.currentProjectIndex(), 1);
    EXPECT_STREQ(current().name, "");
    EXPECT_STREQ(current().dataPath, "/music/data");
    EXPECT_EQ(current().viewValue, 77);
    EXPECT_EQ(current().viewKey, 65535);
    EXPECT_EQ(current().mslCount, 0);
}

TEST_F(ModelOps, DeletingProjectsMovesLaterOnesDownAndTheViewFollowsToAnEmptyOne)
{
    for (int i = 1; i < 4; ++i)
        ASSERT_TRUE(model.newProject().ok());
    for (int i = 0; i < 4; ++i)
        tg::copyText(model.project(i).name, std::to_string(i).c_str());
    model.selectProject(2);
    ASSERT_TRUE(model.addMultiSample().ok());
    model.selectProject(1);
    ASSERT_TRUE(model.deleteProject().ok());
    EXPECT_EQ(model.projectCount(), 3);
    EXPECT_EQ(model.currentProjectIndex(), 0);
    EXPECT_STREQ(model.project(1).name, "2");
    EXPECT_EQ(model.project(1).mslCount, 1);
    EXPECT_STREQ(model.view().name, "0");

    while (model.projectCount() > 0)
        ASSERT_TRUE(model.deleteProject().ok());
    EXPECT_EQ(model.view().mslCount, 0); // an empty view
    EXPECT_EQ(model.currentProject(), nullptr);
    EXPECT_TRUE(model.addMultiSample().ok()); // nothing to add to
    EXPECT_EQ(model.view().mslCount, 0);
    EXPECT_TRUE(model.deleteProject().ok());
    EXPECT_EQ(model.projectCount(), 0);
}

TEST_F(ModelOps, DuplicateProjectCopiesAllButTheFolderAndScrollsTheList)
{
    tg::copyText(current().name, "Keys");
    tg::copyText(current().projectDir, "/saved/here");
    addMultiSamples(2);
    current().msl[1].keys[10].Note_Out = 999;
    ASSERT_TRUE(model.duplicateProject().ok());
    EXPECT_EQ(model.currentProjectIndex(), 1);
    EXPECT_STREQ(current().name, "Keys");
    EXPECT_STREQ(current().projectDir, "");
    EXPECT_EQ(current().mslCount, 2);
    EXPECT_EQ(current().msl[1].keys[10].Note_Out, 999);
    EXPECT_STREQ(model.project(0).projectDir, "/saved/here");
    EXPECT_EQ(model.topProject(), 0);
    for (int i = 2; i < 12; ++i)
        ASSERT_TRUE(model.duplicateProject().ok());
    EXPECT_EQ(model.topProject(), 0); // index 11 is the twelfth visible row
    ASSERT_TRUE(model.duplicateProject().ok());
    EXPECT_EQ(model.topProject(), 1);
}

TEST_F(ModelOps, MovingProjectsSwapsWithTheNeighbour)
{
    tg::copyText(current().name, "A");
    ASSERT_TRUE(model.newProject().ok());
    tg::copyText(current().name, "B");
    ASSERT_TRUE(model.moveProjectUp().ok());
    EXPECT_EQ(model.currentProjectIndex(), 0);
    EXPECT_STREQ(model.project(0).name, "B");
    EXPECT_STREQ(model.view().name, "B");
    ASSERT_TRUE(model.moveProjectUp().ok());
    EXPECT_EQ(model.currentProjectIndex(), 0);
    ASSERT_TRUE(model.moveProjectDown().ok());
    EXPECT_EQ(model.currentProjectIndex(), 1);
    EXPECT_STREQ(model.project(0).name, "A");
    ASSERT_TRUE(model.moveProjectDown().ok());
    EXPECT_EQ(model.currentProjectIndex(), 1);
}

TEST_F(ModelOps, ListenersHearChangesInRegistrationOrderUntilRemoved)
{
    RecordingListener first;
    RecordingListener second;
    model.addListener(&first);
    model.addListener(&second);
    ASSERT_TRUE(model.addMultiSample().ok());
    ASSERT_TRUE(model.newProject().ok());
    EXPECT_EQ(first.events,
              (std::vector<std::string>{"multisamples", "msl 0", "projects", "project 1"}));
    EXPECT_EQ(second.events, first.events);
    model.removeListener(&first);
    ASSERT_TRUE(model.deleteProject().ok());
    EXPECT_EQ(first.events.size(), 4u);
    EXPECT_EQ(second.events.size(), 6u);
}

TEST(ModelInstance, ResetGivesBackTheStartState)
{
    tg::Model& model = tg::Model::instance();
    ASSERT_TRUE(model.newProject().ok());
    ASSERT_TRUE(model.addMultiSample().ok());
    model.view().viewValue = 5;
    model.setAudioInputDeviceCount(2);
    model.preferences().MIDIoutChannel = 4;
    model.reset();
    EXPECT_EQ(model.projectCount(), 0);
    EXPECT_EQ(model.audioInputDeviceCount(), 0);
    EXPECT_EQ(model.preferences().MIDIoutChannel, 0);
    ASSERT_TRUE(model.newProject().ok());
    EXPECT_EQ(model.view().viewValue, 0);
    EXPECT_EQ(&tg::Model::instance(), &model);
}
