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
    // The right channel never crosses except at one frame where both channels are silent.
    auto signal = [](int64_t silentFrame) {
        return [silentFrame](int64_t f, int ch) -> int32_t {
            if (f == silentFrame)
                return 0;
            return ch ? 5000 : static_cast<int32_t>(8000 * std::sin(2 * M_PI * (f + 0.5) / 60.0));
        };
    };
    LoopPercentages p;
    p.loopstart = 30;
    p.loopsearchlength = 1;
    // Wanted Loop_In = 1000 + 3000 = 4000. A silent frame at 1100 is 29 % off.
    {
        const auto data = makeSignal(format, 12000, signal(1100));
        TGmsl_key key = noteKey(1000, 11000, 2);
        ASSERT_EQ(placeLoop(key, format, data.data(), data.size(), p, true), 1);
        const int32_t either =
            findZeroCrossing(&format, data.data(), static_cast<int32_t>(data.size()), 4000, -1,
                             kZeroCrossingEitherChannel);
        EXPECT_EQ(key.Loop_In, either);
        EXPECT_GT(key.Loop_In, 3940);
    }
    // One at 3800 is 6.7 % off: the both-channels crossing stays.
    {
        const auto data = makeSignal(format, 12000, signal(3800));
        TGmsl_key key = noteKey(1000, 11000, 2);
        ASSERT_EQ(placeLoop(key, format, data.data(), data.size(), p, true), 1);
        EXPECT_EQ(key.Loop_In, 3800);
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

} // namespace
} // namespace tg
