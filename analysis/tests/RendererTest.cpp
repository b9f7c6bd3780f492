// Renderer: crossfade arithmetic per format, backward-forward unfolding, plain notes, fades.
#include "analysis/Renderer.h"
#include "analysis/FadeCurves.h"
#include "analysis/tests/TestSignals.h"

#include <gtest/gtest.h>

#include <random>
#include <tuple>
#include <utility>

namespace tg {
namespace {

using test::makeSignal;
using test::sampleOf;
using test::samplesAt;

// Note 100..900 with a loop 300..700 and neither crossfades nor click/pop fades.
TGmsl_key loopedKey(uint8_t mode)
{
    TGmsl_key key;
    std::tie(key.Note_In, key.Loop_In, key.Loop_Out, key.Note_Out) =
        std::make_tuple(100, 300, 700, 900);
    key.loopMode = mode;
    key.clickpopred = 0;
    key.xfadeLen = key.bfxfadeLen = 0;
    return key;
}

using Samples = std::vector<int32_t>;

int render(const TGmsl_key& key, const WaveFormat& format, const std::vector<uint8_t>& data,
           RenderedNote& out, const RenderOptions& options = {})
{
    std::string message;
    const size_t bytes = data.size();
    const int ok = renderKeySample(&key, &format, data.data(), &bytes, options, &out, message);
    EXPECT_TRUE(ok) << message;
    return ok;
}

// The last loop frames blend the frames before Loop_Out with those before Loop_In by the
// curve's gains, truncated toward zero, on every channel of every sample width.
TEST(Renderer, ForwardLoopCrossfadeMixesWithTheCurveGainsInEveryFormat)
{
    std::mt19937 rng(5);
    for (uint16_t bits : {8, 16, 24}) {
        const WaveFormat format = makeWaveFormat(44100, bits == 16 ? 2 : 1, bits);
        const auto data = test::randomBytes(size_t{1000} * format.nBlockAlign, rng());
        for (const char* curve : {"Linear", "Exponential^3"}) {
            SCOPED_TRACE(testing::Message() << bits << " bit, " << curve);
            TGmsl_key key = loopedKey(1);
            key.xfadeLen = 37;
            key.xfadeCurve = static_cast<uint8_t>(fadeCurveIndex(curve));
            RenderedNote out;
            ASSERT_TRUE(render(key, format, data, out));
            EXPECT_EQ(std::make_pair(out.loopStart, out.loopEnd), std::make_pair(200, 600));
            for (int i = 0; i < 37; ++i) {
                double a, b;
                fadeCurve((i + 1) / 37.0, key.xfadeCurve, a, b);
                for (int ch = 0; ch < format.nChannels; ++ch) {
                    const double mixed = sampleOf(format, data, 700 - 36 + i, ch) * a +
                                         sampleOf(format, data, 300 - 37 + i, ch) * b;
                    EXPECT_EQ(sampleOf(format, out.note, 600 - 36 + i, ch),
                              static_cast<int32_t>(mixed))
                        << "frame " << i << " channel " << ch;
                }
            }
        }
    }
}

// The forward loop ends on Loop_Out and the rest follows it; the backward-forward loop
// unfolds into (700 - 300) + (700 + 1 - 100) - 50 frames, then Loop_Out..Note_Out follows.
// The unfolded loop itself is checked frame by frame in EverySeamEndsOnTheFrameBefore...
TEST(Renderer, IncludingTheNoteAfterTheLoopAppendsIt)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    const auto data =
        makeSignal(format, 1000, [](int64_t f, int) { return static_cast<int32_t>(f); });
    RenderOptions options;
    options.includeAfterLoop = true;
    struct Case {
        uint8_t mode;
        int32_t loopEnd, frames, firstAfter;
    };
    for (const Case c : {Case{1, 600, 801, 701}, Case{2, 949, 1151, 700}}) {
        SCOPED_TRACE(static_cast<int>(c.mode));
        TGmsl_key key = loopedKey(c.mode);
        key.bfxfadeLen = 50;
        RenderedNote out;
        ASSERT_TRUE(render(key, format, data, out, options));
        EXPECT_EQ(out.note.size(), size_t(c.frames) * 2);
        EXPECT_EQ(out.loopEnd, c.loopEnd);
        EXPECT_EQ(samplesAt(format, out.note, {c.loopEnd + 1, c.frames - 1}),
                  (Samples{c.firstAfter, 900}));
        EXPECT_TRUE(out.release.empty());
    }
}

TEST(Renderer, BackwardForwardSecondCrossfadeLeadsIntoTheLoopStart)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    const auto data =
        makeSignal(format, 1000, [](int64_t f, int) { return static_cast<int32_t>(f * 10); });
    TGmsl_key key = loopedKey(2);
    key.bfxfadeLen = 20;
    key.bfxfadeCurve = static_cast<uint8_t>(fadeCurveIndex("Linear"));
    RenderedNote out;
    ASSERT_TRUE(render(key, format, data, out));
    // The reversed pass reaches Loop_In - 19 in its last frame, which is wholly Loop_In - 1
    // (the frame before the one the wrap plays); the one before it blends 1/20 of the
    // reversed audio (Loop_In - 18) into Loop_In - 2.
    double a, b;
    fadeCurve(19.0 / 20.0, key.bfxfadeCurve, a, b);
    EXPECT_EQ(sampleOf(format, out.note, out.loopEnd, 0), 2990);
    EXPECT_EQ(sampleOf(format, out.note, out.loopEnd - 1, 0),
              static_cast<int32_t>(2820 * a + 2980 * b));
    EXPECT_EQ(sampleOf(format, out.note, out.loopStart, 0), 3000);
}

// Every wrap and turn must continue the audio it jumps into: the frame played just before
// a jump is, after its crossfade, the frame that precedes the jump's target in that audio.
// Frames no crossfade reaches stay as copied. Random takes, every curve, short and long
// crossfades, every sample width.
TEST(Renderer, EverySeamEndsOnTheFrameBeforeItsJumpTarget)
{
    std::mt19937 rng(21);
    for (uint16_t bits : {8, 16, 24}) {
        for (uint16_t channels : {1, 2}) {
            const WaveFormat format = makeWaveFormat(44100, channels, bits);
            const auto data = test::randomBytes(size_t{1200} * format.nBlockAlign, rng());
            auto same = [&](const RenderedNote& out, int64_t frame, int64_t recorded) {
                for (int ch = 0; ch < channels; ++ch)
                    if (sampleOf(format, out.note, frame, ch) !=
                        sampleOf(format, data, recorded, ch))
                        return false;
                return true;
            };
            for (int curve = 0; curve < kFadeCurveCount; ++curve) {
                for (int32_t fade : {0, 1, 2, 3, 17, 64}) {
                    TGmsl_key key = loopedKey(1);
                    key.Note_In = std::uniform_int_distribution<int32_t>(0, 50)(rng);
                    key.Loop_In = std::uniform_int_distribution<int32_t>(100, 400)(rng);
                    key.Loop_Out =
                        key.Loop_In + std::uniform_int_distribution<int32_t>(80, 500)(rng);
                    key.Note_Out = 1150;
                    key.xfadeLen = fade;
                    key.bfxfadeLen =
                        std::uniform_int_distribution<int32_t>(0, 3)(rng) == 0 ? 0 : fade;
                    key.xfadeCurve = key.bfxfadeCurve = static_cast<uint8_t>(curve);
                    SCOPED_TRACE(testing::Message() << bits << " bit, " << channels << " ch, curve "
                                                    << curve << ", fade " << fade);
                    const int64_t noteIn = key.Note_In, loopIn = key.Loop_In,
                                  loopOut = key.Loop_Out;

                    RenderedNote out;
                    ASSERT_TRUE(render(key, format, data, out));
                    const int64_t end = out.loopEnd;
                    EXPECT_TRUE(fade == 0 || same(out, end, loopIn - 1));
                    for (int64_t f = 0; f <= end - fade; ++f) {
                        ASSERT_TRUE(same(out, f, noteIn + f)) << f;
                    }

                    key.loopMode = 2;
                    ASSERT_TRUE(render(key, format, data, out));
                    const int64_t y = key.bfxfadeLen;
                    const int64_t turn = loopOut - y;
                    const int64_t lastForward = turn - 1 - noteIn;
                    ASSERT_EQ(out.loopEnd, 2 * loopOut - loopIn - noteIn - y - 1);
                    EXPECT_TRUE(fade == 0 || same(out, lastForward, turn + 1));
                    EXPECT_TRUE(y == 0 || same(out, out.loopEnd, loopIn - 1));
                    for (int64_t f = 0; f <= lastForward - fade; ++f) {
                        ASSERT_TRUE(same(out, f, noteIn + f)) << f;
                    }
                    for (int64_t f = lastForward + 1; f <= out.loopEnd - y; ++f) {
                        ASSERT_TRUE(same(out, f, turn - (f - lastForward - 1))) << f;
                    }
                }
            }
        }
    }
}

TEST(Renderer, LoopEndNotAfterLoopStartRendersThePlainNote)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 8);
    const auto data =
        makeSignal(format, 1000, [](int64_t f, int) { return static_cast<int32_t>(f % 100); });
    for (uint8_t mode : {0, 1, 2}) {
        TGmsl_key key = loopedKey(mode);
        if (mode != 0)
            key.Loop_Out = key.Loop_In;
        key.xfadeLen = 10;
        RenderedNote out;
        ASSERT_TRUE(render(key, format, data, out));
        EXPECT_EQ(out.note.size(), 802u); // 801 frames, raised to an even count
        EXPECT_EQ(std::make_tuple(out.frames, out.loopStart, out.loopEnd),
                  std::make_tuple(801, 0, 800));
        EXPECT_EQ(samplesAt(format, out.note, {37, 800}), (Samples{37, 0}));
    }
}

TEST(Renderer, ClickPopFadesFollowTheLoopLimits)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    const auto data = makeSignal(format, 1000, [](int64_t, int) { return 1000; });
    RenderOptions options;
    options.clickPopFadeIn = 1000;
    options.clickPopFadeOut = 10;
    TGmsl_key key = loopedKey(1);
    key.clickpopred = 1;
    RenderedNote out;
    ASSERT_TRUE(render(key, format, data, out, options));
    // Fade-in cut to Loop_In - Note_In = 200 frames; no fade-out without the after part.
    EXPECT_EQ(samplesAt(format, out.note, {0, 100, 200, 600}), (Samples{0, 500, 1000, 1000}));
    options.includeAfterLoop = true;
    ASSERT_TRUE(render(key, format, data, out, options));
    EXPECT_EQ(samplesAt(format, out.note, {790, 795, 800}), (Samples{1000, 500, 0}));
    // Plain note: the preference lengths, cut to the 801 frames of the note.
    key.loopMode = 0;
    ASSERT_TRUE(render(key, format, data, out, options));
    EXPECT_EQ(samplesAt(format, out.note, {400, 800}), (Samples{1000 * 400 / 801, 0}));
}

TEST(Renderer, BadArgumentsAreReportedAndNothingIsRendered)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    const auto data = makeSignal(format, 100, [](int64_t, int) { return 1; });
    const size_t bytes = data.size();
    const size_t none = 0;
    TGmsl_key key;
    key.Note_In = 10;
    key.Note_Out = 50;
    RenderedNote out;
    std::string message;
    EXPECT_EQ(renderKeySample(nullptr, &format, data.data(), &bytes, {}, &out, message), 0);
    EXPECT_EQ(message, "illegal pointers (p, m or k is equal NULL");
    EXPECT_EQ(renderKeySample(&key, nullptr, data.data(), &bytes, {}, &out, message), 0);
    EXPECT_EQ(message, "illegal pointers (wft_in, buff_in or nbuff_in is equal NULL");
    EXPECT_EQ(renderKeySample(&key, &format, data.data(), &bytes, {}, nullptr, message), 0);
    EXPECT_EQ(message, "illegal pointers (wft_out, buff_note_out, nbuff_note_out, buff_release_out "
                       "or nbuff_release_out is equal NULL");
    EXPECT_EQ(renderKeySample(&key, &format, data.data(), &none, {}, &out, message), 0);
    EXPECT_EQ(message, "the number of samples is less or equal 0");
    key.Note_Out = 9;
    EXPECT_EQ(renderKeySample(&key, &format, data.data(), &bytes, {}, &out, message), 0);
    EXPECT_EQ(message, "the note's length is equal 0");
    EXPECT_TRUE(out.note.empty());
}

} // namespace
} // namespace tg
