// Key-Sample playback through a real JACK graph: the output of a duplex stream on the
// dummy server's "system" device is patched into its own input, so the recorder captures
// exactly what the player sent.
#include "devices/AudioEngine.h"
#include "tests/e2e/AudioThreadChecks.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/support/ToneAnalysis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace tg::test {
namespace {

TEST(SoundChainPlayback, NoteOnceLoopWhileHeldAndStopFadesWithinOneBlock)
{
    std::string msg;
    ASSERT_EQ(audio::initialize(msg), 1) << msg;
    JackPatchbay patchbay;
    ASSERT_TRUE(openPlaybackLoopback(patchbay, msg)) << msg;
    EXPECT_TRUE(audio::isDuplex());
    PeakRecorder meter; // marks the duplex callback's thread for the allocation count
    audio::addLevelListener(&meter);

    const std::vector<uint8_t> sample = noteAndLoopTake();
    const int32_t out = audio::outputDeviceIndex("system", msg);
    int played = 0;
    const std::vector<double> left = captureFirstChannel(
        2.0, {{0.2,
               [&] {
                   played = TGaudio_playSample(
                       out, makeWaveFormat(44100, 2, 16), sample.data(), sample.size(),
                       kTakeNoteFrames, kTakeNoteFrames + kTakeLoopFrames, nullptr, 0, msg, 0);
               }},
              {1.2, [] { audio::player().requestStop(); }}});
    ASSERT_EQ(played, 1) << msg;
    EXPECT_FALSE(audio::player().isPlaying());
    const int64_t onset = firstFrameAbove(left, 500.0);
    ASSERT_GT(onset, 0);

    // While held: the note part once, then the loop over and over, sample for sample.
    const int64_t heldFrames = matchingFrames(left, onset, heldTakeValue);
    const int64_t fadeStart = onset + heldFrames;
    std::fprintf(stderr, "onset %lld, held %lld frames (%.2f loop passes)\n", (long long)onset,
                 (long long)heldFrames, double(heldFrames - kTakeNoteFrames) / kTakeLoopFrames);
    ASSERT_GT(heldFrames, kTakeNoteFrames + 5 * kTakeLoopFrames)
        << "the loop must repeat while held";

    // The stop: a linear fade within one block, nothing above the last level, then silence.
    const int64_t block = int64_t(audio::inputFramesPerBuffer());
    ASSERT_GT(block, 0);
    const double lastLevel = peakBetween(left, fadeStart - kTakeLoopFrames, fadeStart);
    EXPECT_LE(peakBetween(left, fadeStart, int64_t(left.size())), lastLevel);
    for (int64_t k = 0; k < block; ++k) {
        const double held = std::fabs(heldTakeValue(fadeStart + k - onset));
        const double ramp = 1.0 - double(k) / double(block - 1);
        ASSERT_LE(std::fabs(left[size_t(fadeStart + k)]), held * ramp + kLoopbackTolerance)
            << "frame " << k;
    }
    EXPECT_GT(std::fabs(left[size_t(fadeStart + block / 2)]),
              0.3 * std::fabs(heldTakeValue(fadeStart + block / 2 - onset)))
        << "a fade, not a hard cut";
    EXPECT_LE(peakBetween(left, fadeStart + block, int64_t(left.size())), kLoopbackTolerance);

    // Record and playback callbacks (one duplex callback) allocated nothing all along.
    EXPECT_TRUE(audioThreadMarked());
    EXPECT_EQ(audioThreadAllocations(), 0);
    // No lock but the record flag's QMutex (a futex, not counted) was taken there either.
    EXPECT_EQ(audioThreadMutexLocks(), 0);

    EXPECT_EQ(audio::closeStreams(msg), 1) << msg;
    audio::removeLevelListener(&meter);
    audio::terminate();
}

} // namespace
} // namespace tg::test
