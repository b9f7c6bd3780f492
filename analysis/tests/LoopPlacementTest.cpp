// Auto-loop marker placement: percentages, zero-crossing rules and loop modes.
#include "analysis/LoopPlacement.h"
#include "analysis/FadeCurves.h"
#include "analysis/tests/TestSignals.h"
#include "audiofile/ZeroCrossing.h"

#include <gtest/gtest.h>

namespace tg {
namespace {

using test::makeSignal;

TGmsl_key noteKey(int32_t noteIn, int32_t noteOut, uint8_t mode)
{
    TGmsl_key key;
    key.Note_In = noteIn;
    key.Note_Out = noteOut;
    key.loopMode = mode;
    return key;
}

TEST(LoopPlacement, ForwardLoopSetsMarkersFromThePercentagesAndSearchesTheEnd)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    // A tone repeating exactly every 100 frames.
    const auto data = makeSignal(format, 12000, [](int64_t f, int) {
        return static_cast<int32_t>(10000 * std::sin(2 * M_PI * f / 100.0) +
                                    3000 * std::sin(2 * M_PI * f / 50.0));
    });
    TGmsl_key key = noteKey(1000, 11000, 1);
    LoopPercentages p;
    p.loopstart = 30;
    p.loopoutsearchstart = 55;
    p.loopsearchlength = 2;
    p.xfadelength = 10;
    p.bfxfadelength = 20;
    p.xfadetype = "Linear";
    p.bfxfadetype = "No such curve";
    ASSERT_EQ(placeLoop(key, format, data.data(), data.size(), p, false), 1);
    EXPECT_EQ(key.Loop_In, 4000);
    EXPECT_EQ(key.LoopSearch_In, 6500);
    EXPECT_EQ(key.LoopSearch_Out, 11000);
    EXPECT_EQ(key.LoopSearch_Len, 200);
    // Every whole period matches perfectly; the latest candidate before Note_Out wins.
    EXPECT_EQ(key.Loop_Out, 10900);
    EXPECT_EQ(key.loopResults[0], 10900);
    EXPECT_EQ(key.loopResults[1], 10600); // 10700 lies within the 200-frame radius
    EXPECT_EQ((key.Loop_Out - key.Loop_In) % 100, 0);
    EXPECT_EQ(key.xfadeLen, 690);
    EXPECT_EQ(key.bfxfadeLen, 1380);
    EXPECT_EQ(key.xfadeCurve, fadeCurveIndex("Linear"));
    EXPECT_EQ(key.bfxfadeCurve, kDefaultFadeCurve);
}

TEST(LoopPlacement, BackwardForwardLoopTurnsInTheMiddleOfTheSearchRegion)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    const auto data = test::makeSine(format, 12000, 10000.0, 100.0);
    TGmsl_key key = noteKey(1000, 11000, 2);
    LoopPercentages p;
    p.loopstart = 30;
    p.loopoutsearchstart = 55;
    p.loopsearchlength = 3;
    ASSERT_EQ(placeLoop(key, format, data.data(), data.size(), p, false), 1);
    EXPECT_EQ(key.Loop_Out, 6500 + 300 / 2);
    ASSERT_EQ(placeLoop(key, format, data.data(), data.size(), p, true), 1);
    EXPECT_EQ(key.Loop_Out,
              findZeroCrossing(&format, data.data(), static_cast<int32_t>(data.size()), 6650, 0,
                               kZeroCrossingEitherChannel));
}

TEST(LoopPlacement, BothChannelCrossingMoreThanTenPercentOffFallsBackToEitherChannel)
{
    const WaveFormat format = makeWaveFormat(44100, 2, 16);
    // The left channel crosses its middle between frames 30k - 1 and 30k; the slow right
    // one only every 3000 frames, at `rightCrossing` and 3000 frames either side.
    auto signal = [](double rightCrossing) {
        return [rightCrossing](int64_t f, int ch) -> int32_t {
            const double phase = ch ? (f - rightCrossing) / 6000.0 : (f + 0.5) / 60.0;
            return static_cast<int32_t>(8000 * std::sin(2 * M_PI * phase));
        };
    };
    LoopPercentages p;
    p.loopstart = 30;
    p.loopsearchlength = 1;
    // Wanted Loop_In = 20000 + 3000 = 23000. Both channels crossing at 20129.5 is 29 % off:
    // the nearest crossing of either channel before 23000 is taken.
    {
        const auto data = makeSignal(format, 50000, signal(20129.5));
        TGmsl_key key = noteKey(20000, 30000, 2);
        ASSERT_EQ(placeLoop(key, format, data.data(), data.size(), p, true), 1);
        EXPECT_NEAR(key.Loop_In, 22979.5, 1.0);
    }
    // Both crossing at 22799.5 is 6.7 % off: that crossing stays.
    {
        const auto data = makeSignal(format, 50000, signal(22799.5));
        TGmsl_key key = noteKey(20000, 30000, 2);
        ASSERT_EQ(placeLoop(key, format, data.data(), data.size(), p, true), 1);
        EXPECT_NEAR(key.Loop_In, 22799.5, 1.0);
    }
}

TEST(LoopPlacement, PercentagesOfTheLoadedKeyUseInclusiveLengthsAndClampTheSearch)
{
    TGmsl_key loaded = noteKey(0, 999, 1);
    loaded.Loop_In = 300;
    loaded.Loop_Out = 799;
    loaded.LoopSearch_In = 500;
    loaded.LoopSearch_Out = 900;
    loaded.LoopSearch_Len = 500; // 50 %: clamped to 10
    loaded.xfadeLen = 50;
    loaded.bfxfadeLen = 100;
    loaded.xfadeCurve = 0;
    loaded.bfxfadeCurve = 13;
    LoopPercentages p;
    ASSERT_TRUE(loopPercentagesFromKey(loaded, p));
    EXPECT_DOUBLE_EQ(p.loopstart, 30.0);
    EXPECT_DOUBLE_EQ(p.loopoutsearchstart, 50.0);
    EXPECT_DOUBLE_EQ(p.searchEnd, 90.0);
    EXPECT_DOUBLE_EQ(p.loopsearchlength, 10.0);
    EXPECT_DOUBLE_EQ(p.xfadelength, 10.0);
    EXPECT_DOUBLE_EQ(p.bfxfadelength, 20.0);
    EXPECT_EQ(p.xfadetype, "Linear");
    EXPECT_EQ(p.bfxfadetype, "Log4");
    loaded.LoopSearch_Len = 0;
    ASSERT_TRUE(loopPercentagesFromKey(loaded, p));
    EXPECT_DOUBLE_EQ(p.loopsearchlength, 0.1);
    loaded.Note_Out = -1;
    EXPECT_FALSE(loopPercentagesFromKey(loaded, p));
}

TEST(LoopPlacement, SearchEndFromTheLoadedKeyAndNoNoteLeavesMarkers)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    const auto data = test::makeSine(format, 12000, 10000.0, 100.0);
    TGmsl_key key = noteKey(1000, 11000, 1);
    LoopPercentages p;
    p.searchEnd = 80;
    ASSERT_EQ(placeLoop(key, format, data.data(), data.size(), p, false), 1);
    EXPECT_EQ(key.LoopSearch_Out, 9000);
    EXPECT_LE(key.Loop_Out, 9000);
    TGmsl_key empty = noteKey(500, 500, 1);
    empty.Loop_In = 7;
    EXPECT_EQ(placeLoop(empty, format, data.data(), data.size(), p, false), 0);
    EXPECT_EQ(empty.Loop_In, 7);
}

// A take whose DC offset exceeds its swing never touches zero, yet it crosses its own middle
// every half period: the loop start and end snap to those crossings and the loop keeps the
// length the search gave it, in both loop modes.
TEST(LoopPlacement, DcOffsetLargerThanTheSwingStillGivesASensibleLoop)
{
    const WaveFormat format = makeWaveFormat(44100, 2, 16);
    const auto data = makeSignal(format, 30000, [](int64_t f, int ch) {
        return static_cast<int32_t>(9000 + 3000 * std::sin(2 * M_PI * f / 100.0 + ch));
    });
    LoopPercentages p;
    p.loopstart = 30;
    p.loopoutsearchstart = 55;
    p.loopsearchlength = 1;
    p.xfadelength = 10;
    for (uint8_t mode : {1, 2}) {
        TGmsl_key key = noteKey(1000, 29000, mode);
        ASSERT_EQ(placeLoop(key, format, data.data(), data.size(), p, true), 1);
        SCOPED_TRACE(static_cast<int>(mode));
        // Loop_In within a half period of 30 % into the note, on a crossing of the middle.
        ASSERT_NEAR(key.Loop_In, 9400, 50);
        const int32_t l = key.Loop_In;
        const auto left = [&](int64_t f) { return test::sampleOf(format, data, f, 0) - 9000; };
        const auto right = [&](int64_t f) { return test::sampleOf(format, data, f, 1) - 9000; };
        EXPECT_TRUE((left(l - 1) < 0) != (left(l + 1) < 0) ||
                    (right(l - 1) < 0) != (right(l + 1) < 0));
        // The end lies in the search region, far from the start.
        EXPECT_GT(key.Loop_Out - key.Loop_In, 5000);
        EXPECT_GE(key.Loop_Out, key.LoopSearch_In);
        EXPECT_LE(key.Loop_Out, 29000);
        EXPECT_GT(key.xfadeLen, 500);
    }
}

// With no crossing anywhere (a constant take) snapping keeps the unsnapped points.
TEST(LoopPlacement, SnapFindingNoCrossingKeepsThePosition)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    const auto data = makeSignal(format, 20000, [](int64_t, int) { return 5000; });
    LoopPercentages p;
    p.loopstart = 50;
    p.loopoutsearchstart = 80;
    p.loopsearchlength = 2;
    TGmsl_key key = noteKey(0, 19999, 2);
    ASSERT_EQ(placeLoop(key, format, data.data(), data.size(), p, true), 1);
    EXPECT_EQ(key.Loop_In, 9999);
    EXPECT_EQ(key.Loop_Out, key.LoopSearch_In + key.LoopSearch_Len / 2);
}

} // namespace
} // namespace tg
