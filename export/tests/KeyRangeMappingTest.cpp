#include "export/KeyRangeMapping.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

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

std::pair<int, int> range(const TGmsl& msl, int note)
{
    return {msl.keys[note].mapLow, msl.keys[note].mapHigh};
}

// A present key; with `low` set it carries that manual range.
struct Key {
    int note;
    int low = -1, high = -1;
};
struct Mapped {
    int note, low, high;
};

// Maps `keys` in a layer of key range rangeLow..rangeHigh and checks every key's zone.
void expectZones(const char* what, int rangeLow, int rangeHigh, const std::vector<Key>& keys,
                 const std::vector<Mapped>& expected)
{
    SCOPED_TRACE(what);
    auto msl = layer(rangeLow, rangeHigh);
    for (const Key& key : keys) {
        present(*msl, key.note);
        if (key.low >= 0) {
            msl->keys[key.note].mapLowFlag = 0;
            msl->keys[key.note].mapHighFlag = 0;
            msl->keys[key.note].mapLow = uint8_t(key.low);
            msl->keys[key.note].mapHigh = uint8_t(key.high);
        }
    }
    tg::mapKeyRanges(*msl);
    for (const Mapped& m : expected)
        EXPECT_EQ(range(*msl, m.note), std::make_pair(m.low, m.high)) << "key " << m.note;
}

} // namespace

TEST(KeyRangeMapping, AutomaticAndManualRangesShareTheKeyRange)
{
    expectZones("a single automatic Key-Sample takes the whole key range", 36, 96, {{60}},
                {{60, 36, 96}});
    expectZones("an odd distance gives the upper Key-Sample the extra key", 60, 63, {{60}, {63}},
                {{60, 60, 61}, {63, 62, 63}});
    expectZones("an even distance splits below the middle", 60, 64, {{60}, {64}},
                {{60, 60, 62}, {64, 63, 64}});
    expectZones("three keys cover the range without gaps or overlaps", 48, 72, {{50}, {55}, {67}},
                {{50, 48, 52}, {55, 53, 61}, {67, 62, 72}});
    // The manual range reaches over both neighbours' own keys and is cut in pass one; the
    // automatic neighbours end where it starts and ends.
    expectZones("a manual range reaching past a neighbour", 48, 72, {{60, 40, 70}, {55}, {65}},
                {{60, 56, 64}, {55, 48, 55}, {65, 65, 72}});
    // Pass one cuts 60's high end to 63 (below 64's own key); pass two cuts it again below
    // 64's manual low end, and 64 keeps its low end just above it.
    expectZones("two overlapping manual ranges", 48, 72, {{60, 58, 64}, {64, 61, 66}},
                {{60, 58, 60}, {64, 61, 66}});
    expectZones("an automatic end meets a manual neighbour", 48, 72, {{50}, {60, 57, 61}},
                {{50, 48, 56}, {60, 57, 61}});
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

TEST(KeyRangeMapping, LayerVelocitiesAreItsRangeOrAllOfThemFromTheLowestASamplerKnows)
{
    auto msl = std::make_unique<tg::TGmsl>();
    msl->mapTo = 0; // the layer has a velocity range
    msl->range_start = 0;
    msl->range_end = 41;
    const auto pair = [](tg::VelocityRange v) { return std::make_pair(v.low, v.high); };
    EXPECT_EQ(pair(tg::layerVelocities(*msl, 0)), std::make_pair(0, 41));
    EXPECT_EQ(pair(tg::layerVelocities(*msl, 1)), std::make_pair(1, 41));
    msl->range_start = 100;
    msl->range_end = 300;
    EXPECT_EQ(pair(tg::layerVelocities(*msl, 1)), std::make_pair(100, 127));
    msl->mapTo = 1; // no velocity range: every velocity
    EXPECT_EQ(pair(tg::layerVelocities(*msl, 1)), std::make_pair(1, 127));
    EXPECT_EQ(pair(tg::layerVelocities(*msl, 0)), std::make_pair(0, 127));
}
