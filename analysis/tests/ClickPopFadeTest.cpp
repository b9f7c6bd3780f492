// Click/pop fades: silent ends, the ramp steps and the 8-bit offset.
#include "analysis/ClickPopFade.h"
#include "analysis/tests/TestSignals.h"

#include <gtest/gtest.h>

namespace tg {
namespace {

using test::makeSignal;
using test::sampleOf;

TEST(ClickPopFade, RampsInAndOutLinearlyWithSilentEnds)
{
    const WaveFormat format = makeWaveFormat(44100, 2, 16);
    auto data = makeSignal(format, 100, [](int64_t, int ch) { return ch ? -1000 : 1000; });
    clickPopFade(format, data.data(), data.size(), 10, 4);
    using Samples = std::vector<int32_t>;
    EXPECT_EQ(test::samplesAt(format, data, {0, 1, 9, 10, 95, 98, 99}),
              (Samples{0, 100, 900, 1000, 1000, 250, 0}));
    // The right channel is truncated toward zero with the same gain.
    EXPECT_EQ(test::samplesAt(format, data, {1, 96}, 1), (Samples{-100, -750}));
}

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

TEST(ClickPopFade, TwentyFourBitAndFadesLongerThanTheBuffer)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 24);
    auto data = makeSignal(format, 5, [](int64_t, int) { return -8000000; });
    clickPopFade(format, data.data(), data.size(), 50, 0);
    EXPECT_EQ(sampleOf(format, data, 0, 0), 0);
    EXPECT_EQ(sampleOf(format, data, 4, 0), -6400000); // 4/5 of the value
    auto untouched = makeSignal(format, 5, [](int64_t, int) { return 77; });
    const auto copy = untouched;
    clickPopFade(format, untouched.data(), untouched.size(), 0, 0);
    EXPECT_EQ(untouched, copy);
}

} // namespace
} // namespace tg
