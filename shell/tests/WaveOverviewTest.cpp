// The overview's pyramid gives every pixel column exactly the min/max of its frames, whatever
// the zoom and wherever the columns start, in every sample format.
#include "shell/editor/WaveOverview.h"
#include "analysis/PcmSamples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace tg::shell {
namespace {

TEST(WaveOverview, ColumnsMatchEveryFrameAtAnyZoomAndFormat)
{
    std::mt19937 rng(7);
    for (int bits : {8, 16, 24}) {
        const WaveFormat format = makeWaveFormat(44100, 2, static_cast<uint16_t>(bits));
        const int width = bits / 8;
        const int64_t frames = 70001; // not a multiple of any block size
        std::vector<uint8_t> data(static_cast<size_t>(frames) * format.nBlockAlign);
        std::uniform_int_distribution<int32_t> value(pcm::sampleMin(width), pcm::sampleMax(width));
        for (int64_t f = 0; f < frames; ++f)
            for (int ch = 0; ch < 2; ++ch) {
                // Mostly quiet, with rare spikes that only an exact min/max keeps.
                const int32_t v = f % 997 == 0 ? value(rng) : value(rng) / 64;
                pcm::writeSample(data.data() + f * format.nBlockAlign + ch * width, width, v);
            }
        WaveOverview wave;
        wave.assign(format, data);
        ASSERT_EQ(wave.frames(), frames);
        EXPECT_GE(wave.levels(), 5);

        struct View {
            double first, perColumn;
            int columns;
        };
        for (const View& v :
             {View{0, frames / 700.0, 700}, View{12345.6, 313.7, 150}, View{-40, 70, 50},
              View{69000, 3.5, 400}, View{100, 1.0, 64}, View{3, 4096.0 * 4 + 17, 8}}) {
            std::vector<MinMax> columns;
            wave.columns(1, v.first, v.perColumn, v.columns, columns);
            for (int c = 0; c < v.columns; ++c) {
                int64_t begin = static_cast<int64_t>(std::floor(v.first + c * v.perColumn));
                int64_t end = std::max(
                    begin + 1, static_cast<int64_t>(std::floor(v.first + (c + 1) * v.perColumn)));
                begin = std::max<int64_t>(begin, 0);
                end = std::min(end, frames);
                const MinMax got = columns[static_cast<size_t>(c)];
                if (begin >= end) {
                    EXPECT_GT(got.min, got.max) << "column outside the audio";
                    continue;
                }
                int lo = 1 << 20, hi = -(1 << 20);
                for (int64_t f = begin; f < end; ++f) {
                    lo = std::min<int>(lo, wave.sample(f, 1));
                    hi = std::max<int>(hi, wave.sample(f, 1));
                }
                ASSERT_EQ(got.min, lo) << bits << " bits, column " << c << " of view " << v.first;
                ASSERT_EQ(got.max, hi) << bits << " bits, column " << c << " of view " << v.first;
            }
        }
    }
}

TEST(WaveOverview, AFormatItCannotReadLeavesItEmpty)
{
    WaveOverview wave;
    wave.assign(makeWaveFormat(44100, 2, 32), std::vector<uint8_t>(800, 1));
    EXPECT_TRUE(wave.empty());
    std::vector<MinMax> columns;
    wave.columns(0, 0, 1, 10, columns);
    ASSERT_EQ(columns.size(), 10u);
    EXPECT_GT(columns[0].min, columns[0].max);
}

} // namespace
} // namespace tg::shell
