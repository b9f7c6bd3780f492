// Fade curves: end points, the boosted middle, names and clamping.
#include "analysis/FadeCurves.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

namespace tg {
namespace {

TEST(FadeCurves, EveryCurveRunsFromFullyOutToFullyInAndIsClampedOutside)
{
    for (int index = 0; index < kFadeCurveCount; ++index) {
        SCOPED_TRACE(fadeCurveName(index));
        double outA, outB, inA, inB, a, b;
        fadeCurve(0.0, index, outA, outB);
        fadeCurve(1.0, index, inA, inB);
        EXPECT_NEAR(outA, 1.0, 1e-12);
        EXPECT_NEAR(outB, 0.0, 1e-12);
        EXPECT_NEAR(inA, 0.0, 1e-9);
        EXPECT_NEAR(inB, 1.0, 1e-9);
        fadeCurve(-3.0, index, a, b);
        EXPECT_EQ(std::make_pair(a, b), std::make_pair(outA, outB));
        fadeCurve(7.5, index, a, b);
        EXPECT_EQ(std::make_pair(a, b), std::make_pair(inA, inB));
    }
}

TEST(FadeCurves, SixDecibelBoostLiftsTheMiddleToTwiceAHalf)
{
    double a, b;
    fadeCurve(0.5, fadeCurveIndex("Exp^2 +6.0dB"), a, b);
    EXPECT_NEAR(a, 0.9976, 1e-4);
    EXPECT_NEAR(b, 0.9976, 1e-4);
    EXPECT_DOUBLE_EQ(a, 0.5 * std::pow(10.0, 6.0 / 20.0));
}

TEST(FadeCurves, NormalisedCurvesSumToOneAndBoostVanishesAtTheEnds)
{
    for (int index : {2, 3, 10, 11, 12, 13}) {
        for (double t : {0.1, 0.33, 0.5, 0.9}) {
            double a, b;
            fadeCurve(t, index, a, b);
            EXPECT_NEAR(a + b, 1.0, 1e-12) << fadeCurveName(index) << " t " << t;
        }
    }
    double plainA, plainB, boostA, boostB;
    fadeCurve(0.02, 2, plainA, plainB);
    fadeCurve(0.02, fadeCurveIndex("Exp^2 +9.0dB"), boostA, boostB);
    // Near the start m = 2 (1 - a) is small, so the boost nearly vanishes.
    EXPECT_GT(boostA, plainA);
    EXPECT_LT(boostA / plainA,
              1.0 + 2.0 * (1.0 - plainA) * (std::pow(10.0, 9.0 / 20.0) - 1.0) + 1e-12);
}

// The linear curve's exact blend is checked on rendered crossfades (RendererTest).
TEST(FadeCurves, SinusMeetsInTheMiddle)
{
    double a, b;
    fadeCurve(0.5, 1, a, b);
    EXPECT_NEAR(a, 0.5, 1e-9);
    EXPECT_NEAR(b, 0.5, 1e-9);
}

TEST(FadeCurves, Log3UsesTheFourDigitExponent)
{
    double a, b;
    fadeCurve(0.1, fadeCurveIndex("Log3"), a, b);
    const double ea = 1.0 - std::pow(0.1, 0.3333), eb = 1.0 - std::pow(0.9, 0.3333);
    EXPECT_DOUBLE_EQ(a, ea / (ea + eb));
    const double ta = 1.0 - std::cbrt(0.1), tb = 1.0 - std::cbrt(0.9);
    EXPECT_NE(a, ta / (ta + tb));
}

TEST(FadeCurves, NamesMapToIndicesAndUnknownNamesAreKeptAsTheyAre)
{
    // Which name each index has is pinned on loop placement (LoopPlacementTest).
    EXPECT_STREQ(fadeCurveName(99), "Exponential^2");
    for (int i = 0; i < kFadeCurveCount; ++i)
        EXPECT_EQ(fadeCurveIndex(fadeCurveName(i)), i);
    // The old names' upgrade is checked on old project files (OlderVersions).
    EXPECT_STREQ(upgradeFadeCurveName("Wobbly"), "Wobbly");
}

} // namespace
} // namespace tg
