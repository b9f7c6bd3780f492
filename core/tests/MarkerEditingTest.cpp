// Moving a marker: it stays inside the recording and behind or ahead of its partner while the
// pair spans something, and the change reaches the listeners as a change to the Project.
#include "core/MarkerEditing.h"
#include "core/Model.h"

#include <gtest/gtest.h>

namespace tg {
namespace {

struct Heard : TonegrabberModelListener {
    int keys = 0;
    int projects = 0;
    void keysChanged(int, int) override { ++keys; }
    void projectChanged(int) override { ++projects; }
};

class MarkerEditingTest : public ::testing::Test {
  protected:
    void SetUp() override
    {
        ASSERT_TRUE(model.newProject().ok());
        ASSERT_TRUE(model.addMultiSample().ok());
        model.addListener(&heard);
    }
    TGmsl_key& key() { return model.currentMultiSample()->keys[60]; }
    int32_t move(MarkerId id, int32_t frame)
    {
        int32_t placed = -1;
        EXPECT_TRUE(moveMarker(model, 60, id, frame, 1000, placed).ok());
        EXPECT_EQ(markerValue(key(), id), placed);
        return placed;
    }

    Model model;
    Heard heard;
};

TEST_F(MarkerEditingTest, StaysInsideTheRecordingAndOnItsSideOfASpanningPair)
{
    EXPECT_EQ(move(MarkerId::LoopOut, 5000), 999);
    EXPECT_EQ(move(MarkerId::LoopIn, -3), 0);
    key().Loop_In = 100;
    key().Loop_Out = 400;
    EXPECT_EQ(move(MarkerId::LoopIn, 700), 400);
    key().Loop_In = 100;
    EXPECT_EQ(move(MarkerId::LoopOut, 50), 100);
    // An unset pair (both at 0) holds nothing back.
    EXPECT_EQ(move(MarkerId::ReleaseIn, 300), 300);
    EXPECT_EQ(key().Release_Out, 0);
    EXPECT_TRUE(model.currentProject()->modified);
    EXPECT_EQ(heard.keys, 5);
    EXPECT_EQ(heard.projects, 5);
}

TEST_F(MarkerEditingTest, RefusedWithoutAKeySampleToEdit)
{
    model.currentProject()->modified = 0;
    int32_t placed = 0;
    EXPECT_FALSE(moveMarker(model, 60, MarkerId::NoteIn, 10, 0, placed).ok());
    EXPECT_FALSE(moveMarker(model, 128, MarkerId::NoteIn, 10, 1000, placed).ok());
    EXPECT_EQ(heard.keys, 0);
    EXPECT_FALSE(model.currentProject()->modified);
}

} // namespace
} // namespace tg
