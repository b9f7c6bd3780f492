// Loop quality: the click rule and the seam figures of rendered loops.
#include "analysis/LoopQuality.h"
#include "analysis/tests/TestSignals.h"

#include <gtest/gtest.h>

namespace tg {
namespace {

using test::makeSignal;

TEST(LoopQuality, AClickIsAStepOfEightMediansAndTwoPercentOfThePeak)
{
    EXPECT_TRUE(isLoopClick(800.0, 100.0, 40000.0));
    EXPECT_FALSE(isLoopClick(799.0, 100.0, 39000.0)); // under eight medians
    EXPECT_FALSE(isLoopClick(800.0, 100.0, 40001.0)); // under two per cent of the peak
    EXPECT_TRUE(isLoopClick(10.0, 0.0, 500.0));       // a step out of a flat loop
    EXPECT_FALSE(isLoopClick(0.0, 0.0, 0.0));         // silence never clicks
}

TEST(LoopQuality, WholePeriodsJoinAndAHalfPeriodJumpClicks)
{
    for (uint16_t bits : {8, 16, 24}) {
        const WaveFormat format = makeWaveFormat(44100, 2, bits);
        const double amplitude = pcm::sampleMax(pcm::bytesPerSample(format)) * 0.5;
        const auto data = test::makeSine(format, 20000, amplitude, 400.0);
        SCOPED_TRACE(bits);
        LoopQuality q;
        // 20 periods: the wrap continues the wave.
        ASSERT_TRUE(measureLoop(format, data.data(), data.size(), 4000, 11999, q));
        EXPECT_EQ(q.length, 8000);
        EXPECT_FALSE(q.click);
        EXPECT_LT(q.seamError, 0.01);
        EXPECT_NEAR(q.levelStepDb, 0.0, 0.1);
        EXPECT_NEAR(q.peak, 16384.0, 300.0); // on the 16-bit scale
        // 20.25 periods: the wrap jumps a quarter period, from a crest to the middle.
        ASSERT_TRUE(measureLoop(format, data.data(), data.size(), 4000, 12099, q));
        EXPECT_TRUE(q.click);
        EXPECT_GT(q.seamStep, 8 * q.medianStep);
        EXPECT_NEAR(q.seamError, 1.0, 0.1); // a quarter period off: unrelated audio
        EXPECT_FALSE(measureLoop(format, data.data(), data.size(), 4000, 20000, q));
    }
}

TEST(LoopQuality, LevelStepComparesTheLoopStartWithTheAudioBeforeTheWrap)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    // Amplitude 4000 up to frame 10000, 8000 after: a loop from the quiet part into the loud
    // one steps down by 6 dB when it wraps.
    const auto data = makeSignal(format, 20000, [](int64_t f, int) {
        return static_cast<int32_t>((f < 10000 ? 4000 : 8000) * std::sin(2 * M_PI * f / 100.0));
    });
    LoopQuality q;
    ASSERT_TRUE(measureLoop(format, data.data(), data.size(), 5000, 15999, q));
    EXPECT_NEAR(q.levelStepDb, -6.02, 0.05);
    EXPECT_FALSE(q.click);
}

// The recorded brass case: a loop of one and a half periods of a slow wave. Its crossfade
// must leave the last loop frame equal to the frame before Loop_In, so the wrap plays on
// as the recording did and nothing clicks.
TEST(LoopQuality, CrossfadedLoopOfAMismatchedLengthDoesNotClick)
{
    const WaveFormat format = makeWaveFormat(44100, 2, 16);
    const auto data = test::makeSine(format, 8000, 12000.0, 1000.0);
    TGmsl_key key;
    key.Note_In = 0;
    key.Note_Out = 7999;
    key.Loop_In = 2000;
    key.Loop_Out = 3499;
    key.loopMode = 1;
    key.clickpopred = 0;
    key.xfadeLen = 150;
    LoopQuality q;
    std::string message;
    ASSERT_EQ(measureKeySampleLoop(key, format, data, q, message), 1) << message;
    EXPECT_EQ(q.length, 1500);
    EXPECT_EQ(q.crossfade, 150);
    EXPECT_FALSE(q.click) << q.seamStep << " against a median step of " << q.medianStep;
    EXPECT_EQ(q.seamStep, 0.0);
    key.xfadeLen = 0;
    ASSERT_EQ(measureKeySampleLoop(key, format, data, q, message), 1);
    EXPECT_TRUE(q.click);
    key.loopMode = 0;
    EXPECT_EQ(measureKeySampleLoop(key, format, data, q, message), 0);
}

} // namespace
} // namespace tg
