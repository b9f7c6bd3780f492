// Levels: peaks per channel and region, dB conversion, the gain stage and normalize factors.
#include "analysis/Levels.h"
#include "analysis/tests/TestSignals.h"

#include <gtest/gtest.h>

namespace tg {
namespace {

using test::makeSignal;
using test::sampleOf;

TEST(Levels, PeaksAreFractionsOfFullScalePerFormat)
{
    const WaveFormat stereo = makeWaveFormat(44100, 2, 16);
    const auto data = makeSignal(
        stereo, 100, [](int64_t f, int ch) { return f == 40 ? (ch ? -16384 : 32767) : 5; });
    ChannelLevels levels = measureLevels(stereo, data.data(), data.size());
    EXPECT_DOUBLE_EQ(levels.left, 1.0);
    EXPECT_DOUBLE_EQ(levels.right, 16384.0 / 32767.0);

    const WaveFormat mono8 = makeWaveFormat(44100, 1, 8);
    const auto eight = makeSignal(mono8, 10, [](int64_t f, int) { return f == 3 ? -127 : 0; });
    levels = measureLevels(mono8, eight.data(), eight.size());
    EXPECT_DOUBLE_EQ(levels.left, 1.0);
    EXPECT_DOUBLE_EQ(levels.right, 0.0);

    const WaveFormat mono24 = makeWaveFormat(44100, 1, 24);
    const auto deep = makeSignal(mono24, 10, [](int64_t f, int) { return f == 3 ? 4194304 : 0; });
    EXPECT_NEAR(measureLevels(mono24, deep.data(), deep.size()).left, 0.5, 1e-6);
}

TEST(Levels, NoteAndReleaseRegionLeavesTheRestOut)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    const auto data = makeSignal(format, 1000, [](int64_t f, int) {
        return f == 10 ? 30000 : f == 500 ? 10000 : f == 800 ? 20000 : 0;
    });
    TGmsl_key key;
    key.Note_In = 400;
    key.Note_Out = 600;
    LevelRegion region{true, &key};
    EXPECT_DOUBLE_EQ(measureLevels(format, data.data(), data.size(), region).left, 10000.0 / 32767);
    key.Release_In = 600;
    key.Release_Out = 900;
    EXPECT_DOUBLE_EQ(measureLevels(format, data.data(), data.size(), region).left, 20000.0 / 32767);
    key.Note_Out = key.Note_In;
    EXPECT_DOUBLE_EQ(measureLevels(format, data.data(), data.size(), region).left, 0.0);
    EXPECT_DOUBLE_EQ(measureLevels(format, data.data(), data.size()).left, 30000.0 / 32767);
}

TEST(Levels, DecibelsFloorAtMinus72)
{
    EXPECT_DOUBLE_EQ(levelInDb(0.0), -72.0);
    EXPECT_DOUBLE_EQ(levelInDb(1.0), 0.0); // other levels and gains: LevelOperationsTest
}

TEST(Levels, GainsTruncateClipAndSkipUnityFactors)
{
    const WaveFormat format = makeWaveFormat(44100, 2, 16);
    auto data = makeSignal(format, 4, [](int64_t f, int ch) {
        return ch ? -1001 : static_cast<int32_t>(f * 10000 + 3);
    });
    const auto original = data;
    applyGains(1.0, 1.0, format, data.data(), data.size());
    EXPECT_EQ(data, original);
    applyGains(2.0, 0.5, format, data.data(), data.size());
    // 30006 clips to 32767 instead of wrapping.
    EXPECT_EQ(test::samplesAt(format, data, {0, 1, 2}), (std::vector<int32_t>{6, 20006, 32767}));
    EXPECT_EQ(sampleOf(format, data, 0, 1), -500); // truncated toward zero

    const WaveFormat mono = makeWaveFormat(44100, 1, 8);
    auto eight = makeSignal(mono, 3, [](int64_t, int) { return -50; });
    const auto eightBefore = eight;
    applyGains(1.0, 3.0, mono, eight.data(), eight.size());
    EXPECT_EQ(eight, eightBefore);
    applyGains(3.0, 1.0, mono, eight.data(), eight.size());
    EXPECT_EQ(sampleOf(mono, eight, 1, 0), -128);
}

TEST(Levels, SilentChannelKeepsFactorOne)
{
    double left = 0, right = 0;
    normalizeFactors({0.0, 0.0}, -1.0, false, left, right);
    EXPECT_EQ(left, 1.0);
    EXPECT_EQ(right, 1.0);
    normalizeFactors({0.5, 0.25}, 0.0, false, left, right);
    EXPECT_DOUBLE_EQ(left, 2.0);
    EXPECT_DOUBLE_EQ(right, 4.0);
    normalizeFactors({0.5, 0.25}, 0.0, true, left, right);
    EXPECT_DOUBLE_EQ(left, 2.0);
    EXPECT_DOUBLE_EQ(right, 2.0);
}

} // namespace
} // namespace tg
