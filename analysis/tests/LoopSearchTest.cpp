// Loop search: exact kernels, production against the reference, selection rules, cancel.
// The production comparison runs every kernel over random data of every format, so the
// kernels also meet unaligned and odd addresses there; the latest of equal candidates wins
// in LoopPlacement.ForwardLoopSetsMarkersFromThePercentagesAndSearchesTheEnd.
#include "analysis/LoopSearch.h"
#include "analysis/CentredCrossings.h"
#include "analysis/LoopKernels.h"
#include "analysis/LoopPlacement.h"
#include "analysis/tests/ReferenceLoopSearch.h"
#include "analysis/tests/TestSignals.h"
#include "audiofile/ZeroCrossing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <tuple>

namespace tg {
namespace {

using test::makeSignal;
using test::randomBytes;

std::vector<LoopKernel> availableKernels()
{
    std::vector<LoopKernel> kernels;
    for (LoopKernel k : {LoopKernel::Scalar, LoopKernel::Sse2, LoopKernel::Avx2})
        if (loopKernelAvailable(k))
            kernels.push_back(k);
    return kernels;
}

using SadFn = uint64_t (*)(const uint8_t*, const uint8_t*, size_t);

std::vector<std::pair<SadFn, SadFn>> kernelPairs()
{
    std::vector<std::pair<SadFn, SadFn>> pairs = {
        {loopkernel::sad16Scalar, loopkernel::sad8Scalar}};
#if defined(TG_LOOPKERNEL_X86)
    pairs.push_back({loopkernel::sad16Sse2, loopkernel::sad8Sse2});
    if (loopKernelAvailable(LoopKernel::Avx2))
        pairs.push_back({loopkernel::sad16Avx2, loopkernel::sad8Avx2});
#endif
    return pairs;
}

uint64_t plainSad16(const std::vector<int16_t>& a, const std::vector<int16_t>& b)
{
    uint64_t sum = 0;
    for (size_t i = 0; i < a.size(); ++i)
        sum += static_cast<uint64_t>(std::llabs(int64_t{a[i]} - b[i]));
    return sum;
}

TEST(LoopKernels, ExactForFullScaleDifferencesAndEveryLength)
{
    // +32767 against -32768 is the largest difference (65535): a kernel that subtracts
    // in signed 16 bits wraps there, and long windows overflow 32-bit lanes.
    for (size_t count : {size_t{0}, size_t{1}, size_t{7}, size_t{8}, size_t{15}, size_t{33},
                         size_t{131071}, size_t{131072}, size_t{300001}}) {
        std::vector<int16_t> a(count), b(count);
        for (size_t i = 0; i < count; ++i) {
            a[i] = (i % 2) ? 32767 : -32768;
            b[i] = (i % 2) ? -32768 : 32767;
        }
        const uint64_t expected = plainSad16(a, b);
        ASSERT_EQ(expected, count * 65535u);
        for (auto [sad16, sad8] : kernelPairs()) {
            EXPECT_EQ(sad16(reinterpret_cast<const uint8_t*>(a.data()),
                            reinterpret_cast<const uint8_t*>(b.data()), count),
                      expected)
                << "count " << count;
            std::vector<uint8_t> x(count, 255), y(count, 0);
            EXPECT_EQ(sad8(x.data(), y.data(), count), count * 255u) << "count " << count;
        }
    }
}

struct SearchCase {
    int32_t s, a, b, w;
};

// Production scores equal the reference for every candidate, every kernel, thread count.
void expectScoresMatch(const WaveFormat& format, const std::vector<uint8_t>& data,
                       const SearchCase& sc)
{
    const int64_t frames = static_cast<int64_t>(data.size() / format.nBlockAlign);
    std::vector<int32_t> candidates;
    for (int64_t c = std::max<int64_t>(sc.a, int64_t{sc.s} + sc.w);
         c < std::min<int64_t>(sc.b, frames - sc.w); ++c)
        candidates.push_back(static_cast<int32_t>(c));
    std::vector<int16_t> expected;
    for (int32_t c : candidates)
        expected.push_back(test::referenceScore(format, data.data(), frames, sc.s, c, sc.w));
    for (LoopKernel kernel : availableKernels()) {
        for (int threads : {1, 2, 3}) {
            LoopScorer scorer(format, data.data(), frames, kernel);
            std::vector<int16_t> scores(candidates.size());
            ASSERT_TRUE(
                scoreLoopCandidates(scorer, sc.s, sc.w, candidates, scores.data(), threads, {}));
            ASSERT_EQ(scores, expected) << loopKernelName(kernel) << " threads " << threads;
        }
    }
}

void expectSearchMatches(const WaveFormat& format, const std::vector<uint8_t>& data,
                         const SearchCase& sc, int k, bool snap, bool stepping)
{
    int32_t expected[5], actual[5];
    const int32_t want = test::referenceLoopSearch(format, data.data(), data.size(), sc.s, sc.a,
                                                   sc.b, sc.w, expected, k, snap, stepping);
    for (LoopKernel kernel : availableKernels()) {
        for (int threads : {1, 2}) {
            LoopScanOptions options;
            options.kernel = kernel;
            options.threads = threads;
            const int32_t got = loopSearch(&format, data.data(), data.size(), sc.s, sc.a, sc.b,
                                           sc.w, actual, k, snap, stepping, {}, options);
            ASSERT_EQ(got, want) << loopKernelName(kernel) << " threads " << threads;
            for (int i = 0; i < k; ++i)
                ASSERT_EQ(actual[i], expected[i]) << "result " << i;
        }
    }
}

TEST(LoopSearch, ProductionMatchesReferenceOnRandomSignalsOfEveryFormat)
{
    std::mt19937 rng(12345);
    for (int seed = 0; seed < 36; ++seed) {
        const uint16_t bits = seed % 3 == 0 ? 8 : seed % 3 == 1 ? 16 : 24;
        const uint16_t channels = (seed / 3) % 2 ? 2 : 1;
        const WaveFormat format = makeWaveFormat(seed % 4 == 0 ? 8000 : 44100, channels, bits);
        const int64_t frames = 800 + rng() % 2500;
        const std::vector<uint8_t> data = randomBytes(
            static_cast<size_t>(frames) * format.nBlockAlign + rng() % format.nBlockAlign,
            static_cast<uint32_t>(seed));
        SearchCase sc;
        sc.w = 1 + static_cast<int32_t>(rng() % 300);
        sc.s = static_cast<int32_t>(rng() % (frames / 3));
        sc.a = static_cast<int32_t>(rng() % frames);
        sc.b = static_cast<int32_t>(sc.a + rng() % frames);
        SCOPED_TRACE(testing::Message()
                     << "seed " << seed << " bits " << bits << " ch " << channels << " s " << sc.s
                     << " a " << sc.a << " b " << sc.b << " w " << sc.w);
        expectScoresMatch(format, data, sc);
        // Stepping only takes effect from a loop start on a zero crossing.
        SearchCase onCrossing = sc;
        onCrossing.s = static_cast<int32_t>(CentredCrossings(format, data.data(), data.size())
                                                .snap(sc.s, 1, kZeroCrossingEitherChannel));
        for (int k : {0, 5}) {
            for (bool snap : {false, true}) {
                expectSearchMatches(format, data, sc, k, snap, false);
                expectSearchMatches(format, data, onCrossing, k, snap, true);
                expectSearchMatches(format, data, onCrossing, k, snap, false);
            }
        }
    }
}

TEST(LoopSearch, WindowsLongerThan65536FramesScoreExactly)
{
    const WaveFormat format = makeWaveFormat(44100, 2, 16);
    const int64_t frames = 140000;
    const auto data = makeSignal(
        format, frames, [](int64_t f, int ch) { return ((f / 3 + ch) % 2) ? 32767 : -32768; });
    const SearchCase sc{0, 0, 70000 + 40, 70001};
    expectScoresMatch(format, data, sc);
    expectSearchMatches(format, data, sc, 5, false, false);
}

TEST(LoopSearch, WindowTooLongForTheSearchRegionYieldsItsEndInEveryPass)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    const auto data = test::makeSine(format, 5000, 10000.0, 100.0);
    int32_t results[5];
    // c0 = max(100, 0 + 3000) = 3000, c1 = min(4000, 5000 - 3000) = 2000.
    const int32_t best =
        loopSearch(&format, data.data(), data.size(), 0, 100, 4000, 3000, results, 5, false, false);
    EXPECT_EQ(best, 2000);
    EXPECT_THAT(results, testing::Each(2000));
}

TEST(LoopSearch, FurtherResultsKeepTheExclusionRadius)
{
    // Period 100 and a radius of min(W = 200, rate / 10 = 150) frames: after 900 the next
    // zero-score positions are 700, 500, 300 (800, 600 ... lie in blanked spans). Then every
    // candidate 200..999 is blanked, and a pass over equal caps picks the last one.
    const WaveFormat format = makeWaveFormat(1500, 1, 16);
    const auto data =
        makeSignal(format, 2000, [](int64_t f, int) { return (f % 100) < 50 ? 20000 : -20000; });
    int32_t results[5];
    loopSearch(&format, data.data(), data.size(), 0, 100, 1000, 200, results, 5, false, false);
    EXPECT_THAT(results, testing::ElementsAre(900, 700, 500, 300, 999));
}

TEST(LoopSearch, BadArgumentsReturnZero)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    const auto data = test::makeSine(format, 1000, 1000.0, 50.0);
    int32_t results[5] = {7, 7, 7, 7, 7};
    EXPECT_EQ(
        loopSearch(nullptr, data.data(), data.size(), 0, 10, 900, 10, results, 5, false, false), 0);
    EXPECT_EQ(results[0], -1);
    EXPECT_EQ(loopSearch(&format, nullptr, data.size(), 0, 10, 900, 10, results, 5, false, false),
              0);
    EXPECT_EQ(loopSearch(&format, data.data(), 0, 0, 10, 900, 10, results, 5, false, false), 0);
    EXPECT_EQ(
        loopSearch(&format, data.data(), data.size(), 0, 10, 900, 0, results, 5, false, false), 0);
}

TEST(LoopSearch, CancelReturnsMinusOneAndPlacementRestoresTheMarkers)
{
    const WaveFormat format = makeWaveFormat(44100, 2, 16);
    const auto data = test::makeSine(format, 60000, 12000.0, 441.0);
    int calls = 0;
    auto cancelSecond = [&](double fraction, double) {
        EXPECT_GE(fraction, 0.0);
        EXPECT_LE(fraction, 1.0);
        return ++calls < 2;
    };
    int32_t results[5];
    LoopScanOptions single;
    single.threads = 1;
    EXPECT_EQ(loopSearch(&format, data.data(), data.size(), 1000, 20000, 59000, 500, results, 5,
                         false, false, cancelSecond, single),
              -1);
    EXPECT_EQ(calls, 2);

    TGmsl_key key;
    std::tie(key.Note_In, key.Note_Out, key.loopMode, key.Loop_In, key.Loop_Out) =
        std::make_tuple(100, 59000, 1, 123, 456);
    const TGmsl_key before = key;
    LoopPercentages percentages;
    percentages.loopsearchlength = 2.0;
    EXPECT_EQ(placeLoop(key, format, data.data(), data.size(), percentages, false,
                        [](double, double) { return false; }),
              -1);
    EXPECT_EQ(std::tie(key.Loop_In, key.Loop_Out, key.LoopSearch_Len),
              std::tie(before.Loop_In, before.Loop_Out, before.LoopSearch_Len));
}

TEST(LoopSearch, ProgressIsAskedEvery513CandidatesOnOneThread)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    const auto data = test::makeSine(format, 20000, 12000.0, 441.0);
    int calls = 0;
    LoopScanOptions single;
    single.threads = 1;
    int32_t results[5];
    // c0 = 1000, c1 = 19000: 18000 candidates = 35 blocks of 513 (the last one short).
    loopSearch(
        &format, data.data(), data.size(), 0, 1000, 19000, 1000, results, 5, false, false,
        [&](double, double) { return ++calls > 0; }, single);
    EXPECT_EQ(calls, (18000 + 512) / 513);
}

} // namespace
} // namespace tg
