// The tuning oscillator's wave: its pitch, its level and a loop that wraps without a step. The
// concert pitch itself (A4 at 440 Hz, A3 at 220 Hz) is heard on the sound chain
// (TuningOscillatorOnJack, ToneCli).
#include "devices/TuningOscillator.h"

#include "analysis/LoopQuality.h"
#include "tests/support/ToneAnalysis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace tg {
namespace {

double centsBetween(double a, double b)
{
    return 1200.0 * std::log2(a / b);
}

TEST(TuningWave, PitchLevelAndSeamlessLoopForEveryWaveform)
{
    for (const TuningWaveform waveform : {TuningWaveform::Sine, TuningWaveform::Rect}) {
        for (const int note : {kTuningLowestNote, 60, 69, kTuningHighestNote}) {
            SCOPED_TRACE("note " + std::to_string(note) +
                         (waveform == TuningWaveform::Sine ? " sine" : " rect"));
            TuningWave wave;
            std::string msg;
            ASSERT_EQ(makeTuningWave({waveform, note, -6}, wave, msg), 1) << msg;
            ASSERT_EQ(wave.data.size(), 88200u);
            const std::vector<double> x = test::firstChannel(wave.data, 1, 44100);
            EXPECT_NEAR(
                centsBetween(test::crossingPitchHz(x, 0, 44100, 44100.0), tuningFrequency(note)),
                0.0, 0.1);
            double peak = 0.0;
            for (const double value : x)
                peak = std::max(peak, std::fabs(value));
            EXPECT_NEAR(peak, 32767.0 * std::pow(10.0, -6.0 / 20.0), 2.0);

            EXPECT_LT(wave.loopStart, 44100 / 4);
            EXPECT_GE(wave.loopEnd, 44100 / 2);
            LoopQuality loop;
            ASSERT_TRUE(measureLoop(wave.format, wave.data.data(), wave.data.size(), wave.loopStart,
                                    wave.loopEnd - 1, loop));
            EXPECT_FALSE(loop.click)
                << "seam step " << loop.seamStep << ", median step " << loop.medianStep;
            EXPECT_LT(loop.seamError, 0.01);
        }
    }
}

TEST(TuningWave, RangeChecks)
{
    TuningWave wave;
    std::string msg;
    EXPECT_EQ(makeTuningWave({TuningWaveform::Sine, kTuningHighestNote + 1, -12}, wave, msg), 0);
    EXPECT_EQ(msg, "The tuning note must lie between 21 and 108.");
    EXPECT_EQ(makeTuningWave({TuningWaveform::Rect, 69, 3}, wave, msg), 0);
    EXPECT_EQ(msg, "The tuning volume must lie between -60 and 0 dB.");
}

} // namespace
} // namespace tg
