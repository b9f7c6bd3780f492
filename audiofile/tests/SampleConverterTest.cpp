// The sample converter: refusals, bit depth and channel rules, the three resampling modes and
// the loop points that follow a rate change.
#include "audiofile/SampleConverter.h"

#include "audiofile/SampleAccess.h"
#include "audiofile/ZeroCrossing.h"
#include "audiofile/tests/TestAudio.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace tg;
using namespace tg::test;

namespace {

std::vector<int32_t> samplesOf(const WaveFormat& f, const std::vector<uint8_t>& bytes)
{
    std::vector<int32_t> out;
    const int32_t frames = static_cast<int32_t>(bytes.size() / f.nBlockAlign);
    for (int32_t i = 0; i < frames; ++i)
        for (int c = 0; c < f.nChannels; ++c)
            out.push_back(sampleAt(f, bytes.data(), i, c));
    return out;
}

struct Conversion {
    int ok = 0;
    std::vector<int32_t> out;
    int32_t loopStart = -1, loopEnd = -1;
    std::string message;
};

Conversion convert(WaveFormat src, WaveFormat dst, const std::vector<int32_t>& values,
                   ResampleMode mode = ResampleMode::Linear,
                   ChannelMode channels = ChannelMode::Mix, int32_t loopStart = -1,
                   int32_t loopEnd = -1)
{
    Conversion c;
    std::vector<uint8_t> data = packSamples(src, values);
    c.loopStart = loopStart;
    c.loopEnd = loopEnd;
    c.ok = convertSamples(data, src, dst, loopStart >= 0 ? &c.loopStart : nullptr,
                          loopEnd >= 0 ? &c.loopEnd : nullptr, channels, mode, &c.message);
    c.out = samplesOf(dst, data);
    return c;
}

std::vector<int32_t> constant(size_t count, int32_t value)
{
    return std::vector<int32_t>(count, value);
}

// `values` followed by zeros up to the 16 samples the converter needs at least.
std::vector<int32_t> padded(std::vector<int32_t> values)
{
    values.resize(16, 0);
    return values;
}

// The first `count` output samples of a conversion that must have succeeded.
std::vector<int32_t> head(const Conversion& c, size_t count)
{
    EXPECT_EQ(c.ok, 1) << c.message;
    return std::vector<int32_t>(c.out.begin(), c.out.begin() + std::min(count, c.out.size()));
}

std::vector<int32_t> rampOf(size_t count, int32_t step)
{
    std::vector<int32_t> v(count);
    for (size_t i = 0; i < count; ++i)
        v[i] = static_cast<int32_t>(i) * step;
    return v;
}

} // namespace

TEST(SampleConverter, IdenticalFormatsLeaveBufferAndLoopsUntouched)
{
    WaveFormat src = makeWaveFormat(44100, 2, 16), dst = src;
    dst.nAvgBytesPerSec = 7; // derived fields are recomputed, not compared
    std::vector<uint8_t> data = packSamples(src, rampOf(64, 3));
    const std::vector<uint8_t> before = data;
    const uint8_t* storage = data.data();
    int32_t start = 5, end = 9;
    std::string message;
    ASSERT_EQ(convertSamples(data, src, dst, &start, &end, ChannelMode::Mix, ResampleMode::Average,
                             &message),
              1);
    EXPECT_EQ(data, before);
    EXPECT_EQ(data.data(), storage);
    EXPECT_EQ(std::make_pair(start, end), std::make_pair(5, 9));
    EXPECT_EQ(dst.nAvgBytesPerSec, 44100u * 4);
}

TEST(SampleConverter, RefusesShortBuffersAndUnsupportedFormats)
{
    const WaveFormat mono16 = makeWaveFormat(44100, 1, 16);
    Conversion c = convert(mono16, makeWaveFormat(22050, 1, 16), constant(15, 1));
    EXPECT_EQ(c.ok, 0);
    EXPECT_EQ(c.message, "convert sample error: sample too small or buffer=NULL");
    EXPECT_EQ(convert(mono16, makeWaveFormat(22050, 1, 16), constant(16, 1)).ok, 1);

    // 32 bits, a rate above 384 kHz, a rate of zero, a compressed tag.
    EXPECT_EQ(convert(mono16, makeWaveFormat(44100, 1, 32), constant(32, 0)).message,
              "convert sample error: unsupported wave format (destination)");
    EXPECT_EQ(convert(makeWaveFormat(384001, 1, 16), mono16, constant(32, 0)).message,
              "convert sample error: unsupported wave format (source)");
    EXPECT_EQ(convert(mono16, makeWaveFormat(0, 1, 16), constant(32, 0)).ok, 0);
    WaveFormat compressed = mono16;
    compressed.wFormatTag = 2;
    EXPECT_EQ(convert(compressed, mono16, constant(32, 0)).ok, 0);
    EXPECT_EQ(convert(makeWaveFormat(384000, 1, 16), mono16, constant(32, 0)).ok, 1);
}

TEST(SampleConverter, BitDepthChangesTruncate)
{
    const WaveFormat m24 = makeWaveFormat(44100, 1, 24), m16 = makeWaveFormat(44100, 1, 16),
                     m8 = makeWaveFormat(44100, 1, 8);
    // 511 is 1.996 units of 16-bit: 1; -1 shifts arithmetically to -1; -257 (-1.004 units): -2.
    EXPECT_EQ(head(convert(m24, m16, padded({511, -1, -257, 8388607})), 4),
              (std::vector<int32_t>{1, -1, -2, 32767}));
    EXPECT_EQ(head(convert(m16, m8, padded({255, -32768, 32767})), 3),
              (std::vector<int32_t>{0, -128, 127}));
    EXPECT_EQ(head(convert(m8, m24, padded({-128, 127})), 2),
              (std::vector<int32_t>{-8388608, 127 * 65536}));
}

TEST(SampleConverter, ChannelModesPickMixOrDuplicate)
{
    const WaveFormat st = makeWaveFormat(44100, 2, 24), mono = makeWaveFormat(44100, 1, 24);
    std::vector<int32_t> in;
    for (int i = 0; i < 16; ++i) {
        in.push_back(-3 - 2 * i); // left
        in.push_back(0 + i);      // right
    }
    // (-3 + 0) / 2 truncates toward zero, not down to -2; then (-5 + 1) / 2.
    const Conversion mix = convert(st, mono, in, ResampleMode::Linear, ChannelMode::Mix);
    ASSERT_EQ(mix.out.size(), 16u);
    EXPECT_EQ(head(mix, 2), (std::vector<int32_t>{-1, -2}));
    EXPECT_EQ(convert(st, mono, in, ResampleMode::Linear, ChannelMode::Left).out[1], -5);
    EXPECT_EQ(convert(st, mono, in, ResampleMode::Linear, ChannelMode::Right).out[1], 1);

    Conversion dup = convert(mono, st, rampOf(16, 5));
    ASSERT_EQ(dup.out.size(), 32u);
    EXPECT_EQ(dup.out[14], 35);
    EXPECT_EQ(dup.out[15], 35);
}

TEST(SampleConverter, LinearUpsamplingInterpolatesAndKeepsTheLastFrame)
{
    const WaveFormat a = makeWaveFormat(22050, 1, 24), b = makeWaveFormat(44100, 1, 24);
    std::vector<int32_t> in = rampOf(20, 10);
    in[19] = 1001; // the last frame is copied, not interpolated toward anything
    Conversion c = convert(a, b, in);
    ASSERT_EQ(c.out.size(), 40u);
    for (int i = 0; i < 18; ++i) {
        EXPECT_EQ(c.out[2 * i], in[i]);
        EXPECT_EQ(c.out[2 * i + 1], in[i] + 5);
    }
    EXPECT_EQ(c.out[39], 1001);
    // 44.1 -> 48 kHz: N = trunc(100 * 48000 / 44100) = 108.
    EXPECT_EQ(convert(makeWaveFormat(44100, 1, 16), makeWaveFormat(48000, 1, 16), constant(100, 3))
                  .out.size(),
              108u);
}

TEST(SampleConverter, LinearDownsamplingPicksAndCopiesTheEnds)
{
    const WaveFormat a = makeWaveFormat(44100, 1, 24), b = makeWaveFormat(22050, 1, 24);
    std::vector<int32_t> in = rampOf(21, 10);
    Conversion c = convert(a, b, in);
    ASSERT_EQ(c.out.size(), 10u);
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(c.out[i], 20 * i);
    EXPECT_EQ(c.out[9], 200); // the last input frame
    // 96 -> 44.1 kHz: N = trunc(100 * 0.459375) = 45.
    EXPECT_EQ(convert(makeWaveFormat(96000, 1, 16), makeWaveFormat(44100, 1, 16), constant(100, 3))
                  .out.size(),
              45u);
}

TEST(SampleConverter, AveragingDownsamplingTakesTheMeanOfEachSpan)
{
    const WaveFormat a = makeWaveFormat(48000, 1, 24), b = makeWaveFormat(16000, 1, 24);
    std::vector<int32_t> in = {9, 0, 0, 3, 6, 0, 30, 0, 3, 1, 1, 1, 8, 8, 8, 5, 5, 5, 7, 7, 7};
    Conversion c = convert(a, b, in, ResampleMode::Average);
    ASSERT_EQ(c.out, (std::vector<int32_t>{9, 3, 11, 1, 8, 5, 7}));

    // Fractional spans still average to the value of a constant signal.
    Conversion f = convert(makeWaveFormat(44100, 1, 24), makeWaveFormat(32000, 1, 24),
                           constant(400, -77777), ResampleMode::Average);
    for (int32_t v : f.out)
        ASSERT_EQ(v, -77777);
}

TEST(SampleConverter, LoopPointsScaleWithTheRate)
{
    // A constant signal has no zero crossing, so only the scaling rules apply.
    const WaveFormat a = makeWaveFormat(44100, 1, 16), b = makeWaveFormat(22050, 1, 16);
    const auto loop = [](WaveFormat from, WaveFormat to, ResampleMode mode, int start, int end) {
        const Conversion c =
            convert(from, to, constant(100, 500), mode, ChannelMode::Mix, start, end);
        return std::make_pair(c.loopStart, c.loopEnd);
    };
    // The end: trunc((end + 1) * ratio) - 1; at the last frame N - 1.
    EXPECT_EQ(loop(a, b, ResampleMode::Linear, 11, 20), std::make_pair(5, 9));
    EXPECT_EQ(loop(a, b, ResampleMode::Average, 0, 99), std::make_pair(0, 49));
    EXPECT_EQ(loop(b, a, ResampleMode::Linear, 0, 0), std::make_pair(0, 0));
    // The end never falls before the start.
    EXPECT_EQ(loop(a, b, ResampleMode::Linear, 41, 41), std::make_pair(20, 20));
    // Without a rate change the loop stays.
    EXPECT_EQ(loop(a, makeWaveFormat(44100, 2, 24), ResampleMode::Linear, 13, 77),
              std::make_pair(13, 77));
}

TEST(SampleConverter, LoopPointsOnZeroCrossingsStayOnZeroCrossings)
{
    // A sine of 441 Hz at 44.1 kHz crosses zero every 50 frames; 44.1 -> 48 kHz maps those
    // crossings to non-integer positions, so the scaled points need re-snapping.
    const WaveFormat a = makeWaveFormat(44100, 1, 16), b = makeWaveFormat(48000, 1, 16);
    std::vector<int32_t> in(4410);
    for (size_t i = 0; i < in.size(); ++i)
        in[i] = static_cast<int32_t>(std::lround(20000 * std::sin(2 * M_PI * 441 * i / 44100.0)));
    const int32_t start = 1000, end = 2999; // start is 0; frame after end (3000) is 0
    for (ResampleMode mode : {ResampleMode::Linear, ResampleMode::HighQuality}) {
        Conversion c = convert(a, b, in, mode, ChannelMode::Mix, start, end);
        ASSERT_EQ(c.ok, 1) << c.message;
        std::vector<uint8_t> out = packSamples(b, c.out);
        const int32_t bytes = static_cast<int32_t>(out.size());
        EXPECT_EQ(findZeroCrossing(&b, out.data(), bytes, c.loopStart, 0, 0), c.loopStart);
        EXPECT_EQ(findZeroCrossing(&b, out.data(), bytes, c.loopEnd + 1, 0, 0), c.loopEnd + 1);
        EXPECT_NEAR(c.loopStart, 1088, 1); // 1000 * 48000 / 44100 = 1088.4
        EXPECT_NEAR(c.loopEnd + 1, 3265, 1);
    }
    // A start that did not lie on a crossing is only scaled.
    Conversion c = convert(a, b, in, ResampleMode::Linear, ChannelMode::Mix, 1010, 2999);
    EXPECT_EQ(c.loopStart, 1099); // trunc(1010 * 48000 / 44100)
}

TEST(SampleConverter, HighQualityModeKeepsFrameCountAndTracksTheTone)
{
    // 1 kHz at 96 kHz, 24-bit stereo, to 44.1 kHz: the result must be the same tone, in time.
    const WaveFormat a = makeWaveFormat(96000, 2, 24), b = makeWaveFormat(44100, 2, 24);
    std::vector<int32_t> in;
    const int frames = 9600;
    for (int i = 0; i < frames; ++i) {
        const int32_t v =
            static_cast<int32_t>(std::lround(4000000 * std::sin(2 * M_PI * 1000 * i / 96000.0)));
        in.push_back(v);
        in.push_back(-v);
    }
    Conversion c = convert(a, b, in, ResampleMode::HighQuality, ChannelMode::Mix, 0, frames - 1);
    ASSERT_EQ(c.ok, 1) << c.message;
    ASSERT_EQ(c.out.size(), 2u * 4410);
    EXPECT_EQ(c.loopEnd, 4409);
    double worst = 0;
    for (int i = 200; i < 4200; ++i) {
        const double expected = 4000000 * std::sin(2 * M_PI * 1000 * i / 44100.0);
        worst = std::max(worst, std::fabs(c.out[2 * i] - expected));
        ASSERT_EQ(c.out[2 * i + 1], -c.out[2 * i]);
    }
    EXPECT_LT(worst, 4.0); // about -120 dB of the tone
    // The shortest buffer the converter takes still gives N = trunc(frames * r) frames.
    Conversion shortest = convert(makeWaveFormat(44100, 1, 16), makeWaveFormat(48000, 1, 16),
                                  constant(16, 1000), ResampleMode::HighQuality);
    ASSERT_EQ(shortest.ok, 1) << shortest.message;
    EXPECT_EQ(shortest.out.size(), 17u);
    // Deterministic: the same input gives the same bytes.
    EXPECT_EQ(convert(a, b, in, ResampleMode::HighQuality).out, c.out);
}
