// Click/pop fades: the ramp steps in each sample width and on both channels. The 16-bit ramps
// in and out are checked exactly on rendered notes (Renderer.ClickPopFadesFollowTheLoopLimits).
#include "analysis/ClickPopFade.h"
#include "analysis/tests/TestSignals.h"

#include <gtest/gtest.h>

namespace tg {
namespace {

using test::makeSignal;

TEST(ClickPopFade, EightBitSamplesAreScaledAroundTheirOffset)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 8);
    auto data = makeSignal(format, 10, [](int64_t, int) { return -101; }); // stored as 27
    clickPopFade(format, data.data(), data.size(), 4, 0);
    EXPECT_EQ(data[0], 128);
    EXPECT_EQ(data[1], 128 - 25); // -101 * 0.25 = -25.25 -> -25
    EXPECT_EQ(data[2], 128 - 50);
    EXPECT_EQ(data[4], 27);
}

TEST(ClickPopFade, TwentyFourBitStereoAndFadesLongerThanTheBuffer)
{
    const WaveFormat format = makeWaveFormat(44100, 2, 24);
    auto data = makeSignal(format, 5, [](int64_t, int ch) { return ch ? 8000000 : -8000000; });
    clickPopFade(format, data.data(), data.size(), 50, 0);
    EXPECT_EQ(test::samplesAt(format, data, {0, 4}, 0), (std::vector<int32_t>{0, -6400000}));
    EXPECT_EQ(test::samplesAt(format, data, {0, 4}, 1), (std::vector<int32_t>{0, 6400000}));
    auto untouched = makeSignal(format, 5, [](int64_t, int) { return 77; });
    const auto copy = untouched;
    clickPopFade(format, untouched.data(), untouched.size(), 0, 0);
    EXPECT_EQ(untouched, copy);
}

} // namespace
} // namespace tg
