#include "export/KeyRangeMapping.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace {

using tg::TGmsl;

std::unique_ptr<TGmsl> layer(int lo, int hi)
{
    auto msl = std::make_unique<TGmsl>();
    msl->KBrangeIn = uint16_t(lo);
    msl->KBrangeOut = uint16_t(hi);
    for (int note = 0; note < tg::kKeyCount; ++note)
        msl->keys[note] = tg::makeNewKey(note);
    return msl;
}

void present(TGmsl& msl, int note)
{
    msl.keys[note].keyState = 1;
}

void manual(TGmsl& msl, int note, int low, int high)
{
    present(msl, note);
    msl.keys[note].mapLowFlag = 0;
    msl.keys[note].mapHighFlag = 0;
    msl.keys[note].mapLow = uint8_t(low);
    msl.keys[note].mapHigh = uint8_t(high);
}

std::pair<int, int> range(const TGmsl& msl, int note)
{
    return {msl.keys[note].mapLow, msl.keys[note].mapHigh};
}

} // namespace

TEST(KeyRangeMapping, SingleAutomaticKeySampleTakesTheWholeKeyRange)
{
    auto msl = layer(36, 96);
    present(*msl, 60);
    tg::mapKeyRanges(*msl);
    EXPECT_EQ(range(*msl, 60), std::make_pair(36, 96));
}

TEST(KeyRangeMapping, OddDistanceGivesTheUpperKeySampleTheExtraKey)
{
    auto msl = layer(60, 63);
    present(*msl, 60);
    present(*msl, 63);
    tg::mapKeyRanges(*msl);
    EXPECT_EQ(range(*msl, 60), std::make_pair(60, 61));
    EXPECT_EQ(range(*msl, 63), std::make_pair(62, 63));
}

TEST(KeyRangeMapping, EvenDistanceSplitsBelowTheMiddle)
{
    auto msl = layer(60, 64);
    present(*msl, 60);
    present(*msl, 64);
    tg::mapKeyRanges(*msl);
    EXPECT_EQ(range(*msl, 60), std::make_pair(60, 62));
    EXPECT_EQ(range(*msl, 64), std::make_pair(63, 64));
}

TEST(KeyRangeMapping, ThreeKeysCoverTheRangeWithoutGapsOrOverlaps)
{
    auto msl = layer(48, 72);
    for (int note : {50, 55, 67})
        present(*msl, note);
    tg::mapKeyRanges(*msl);
    EXPECT_EQ(range(*msl, 50), std::make_pair(48, 52));
    EXPECT_EQ(range(*msl, 55), std::make_pair(53, 61));
    EXPECT_EQ(range(*msl, 67), std::make_pair(62, 72));
}

TEST(KeyRangeMapping, ManualRangeReachingPastANeighbourIsCutInPassOne)
{
    auto msl = layer(48, 72);
    manual(*msl, 60, 40, 70); // reaches over both neighbours' own keys
    present(*msl, 55);
    present(*msl, 65);
    tg::mapKeyRanges(*msl);
    EXPECT_EQ(range(*msl, 60), std::make_pair(56, 64));
    // The automatic neighbours end where the manual range starts and ends.
    EXPECT_EQ(range(*msl, 55), std::make_pair(48, 55));
    EXPECT_EQ(range(*msl, 65), std::make_pair(65, 72));
}

TEST(KeyRangeMapping, TwoOverlappingManualRangesAreCutInPassTwo)
{
    auto msl = layer(48, 72);
    manual(*msl, 60, 58, 64); // its high end overlaps the next one's low end
    manual(*msl, 64, 61, 66);
    tg::mapKeyRanges(*msl);
    // Pass 1 cuts 60's high to 63 (below 64's own key); pass 2 cuts it again below 64's
    // manual low end, and 64 keeps its low end just above it.
    EXPECT_EQ(range(*msl, 60), std::make_pair(58, 60));
    EXPECT_EQ(range(*msl, 64), std::make_pair(61, 66));
}

TEST(KeyRangeMapping, AutomaticEndMeetsAManualNeighbour)
{
    auto msl = layer(48, 72);
    present(*msl, 50);
    manual(*msl, 60, 57, 61);
    tg::mapKeyRanges(*msl);
    EXPECT_EQ(range(*msl, 50), std::make_pair(48, 56));
    EXPECT_EQ(range(*msl, 60), std::make_pair(57, 61));
}

TEST(KeyRangeMapping, KeysOutsideTheKeyRangeAndAbsentKeysAreLeftAlone)
{
    auto msl = layer(60, 72);
    present(*msl, 40);
    msl->keys[40].mapLow = 33;
    msl->keys[40].mapHigh = 44;
    present(*msl, 62);
    msl->keys[70].mapLow = 1; // not present
    tg::mapKeyRanges(*msl);
    EXPECT_EQ(range(*msl, 40), std::make_pair(33, 44));
    EXPECT_EQ(range(*msl, 62), std::make_pair(60, 72));
    EXPECT_EQ(msl->keys[70].mapLow, 1);
}

TEST(KeyRangeMapping, ProjectFormMapsOneOrEveryMultiSample)
{
    auto project = std::make_unique<tg::Project>();
    project->mslCount = 2;
    for (int m = 0; m < 2; ++m) {
        project->msl[m].KBrangeIn = 10;
        project->msl[m].KBrangeOut = 20;
        project->msl[m].keys[15] = tg::makeNewKey(15);
        project->msl[m].keys[15].keyState = 1;
    }
    tg::mapKeyRanges(*project, 1);
    EXPECT_EQ(range(project->msl[0], 15), std::make_pair(15, 15));
    EXPECT_EQ(range(project->msl[1], 15), std::make_pair(10, 20));
    tg::mapKeyRanges(*project, -1);
    EXPECT_EQ(range(project->msl[0], 15), std::make_pair(10, 20));
}
