// The export's width-specialised level and gain loops give exactly the analysis layer's values.
#include "export/KeyLevels.h"

#include "analysis/Levels.h"

#include <gtest/gtest.h>

#include <random>

namespace {

TEST(KeyLevels, PeakAndGainMatchTheAnalysisRulesForEveryWidth)
{
    std::mt19937 random(7);
    for (int bits : {8, 16, 24}) {
        for (int channels : {1, 2}) {
            const tg::WaveFormat format = tg::makeWaveFormat(44100, channels, bits);
            // A trailing partial frame stays untouched by both.
            std::vector<uint8_t> audio(size_t(format.nBlockAlign) * 3001 + 1);
            for (uint8_t& byte : audio)
                byte = uint8_t(random());
            const tg::ChannelLevels levels = tg::measureLevels(format, audio.data(), audio.size());
            EXPECT_EQ(tg::keyPeakLevel(format, audio.data(), audio.size()),
                      std::max(levels.left, levels.right))
                << bits << " bits, " << channels << " channels";
            for (double gain : {1.0, 0.37, 1.9, -0.5, 1e6}) {
                std::vector<uint8_t> expected = audio;
                std::vector<uint8_t> actual = audio;
                tg::applyGains(gain, gain, format, expected.data(), expected.size());
                tg::applyKeyGain(gain, format, actual.data(), actual.size());
                EXPECT_EQ(actual, expected)
                    << bits << " bits, " << channels << " channels, gain " << gain;
            }
        }
    }
}

} // namespace
