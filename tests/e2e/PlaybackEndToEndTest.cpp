// Key-Sample playback through a real JACK graph: the output of a duplex stream on the
// dummy server's "system" device is patched into its own input, so the recorder captures
// exactly what the player sent.
#include "devices/AudioEngine.h"
#include "tests/e2e/AudioThreadChecks.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/e2e/ToneAnalysis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace tg::test {
namespace {

constexpr int32_t kNoteFrames = 13230; // 0.3 s
constexpr int32_t kLoopFrames = 4410;  // 0.1 s
// Round trips through JACK's float samples (with PortAudio's dither) may move a 16-bit
// value by a step or two.
constexpr double kTolerance = 3.0;

// A shape that tells note and loop apart: the note part is positive, the loop negative.
double noteValue(int64_t frame)
{
    return 1000.0 + double(frame % 100) * 50.0;
}

double loopValue(int64_t frame)
{
    return -2000.0 - double(frame % 50) * 40.0;
}

// What the output should carry `frame` frames after the note started, while the key is held.
double heldValue(int64_t frame)
{
    return frame < kNoteFrames ? noteValue(frame) : loopValue((frame - kNoteFrames) % kLoopFrames);
}

// Stereo 16-bit: the first channel as above, the second half of it.
std::vector<uint8_t> keySample()
{
    std::vector<uint8_t> bytes;
    for (int64_t frame = 0; frame < kNoteFrames + kLoopFrames; ++frame) {
        const int16_t left = int16_t(heldValue(frame));
        const int16_t right = int16_t(left / 2);
        uint8_t packed[4];
        std::memcpy(packed, &left, 2);
        std::memcpy(packed + 2, &right, 2);
        bytes.insert(bytes.end(), packed, packed + 4);
    }
    return bytes;
}

TEST(SoundChainPlayback, NoteOnceLoopWhileHeldAndStopFadesWithinOneBlock)
{
    std::string msg;
    ASSERT_EQ(audio::initialize(msg), 1) << msg;
    const int32_t in = audio::inputDeviceIndex("system", msg);
    const int32_t out = audio::outputDeviceIndex("system", msg);
    ASSERT_GE(in, 0) << msg;
    ASSERT_EQ(in, out);
    const AudioStreamConfig config{in, -1, -1, 44100, 16, 2, -1.0f};
    ASSERT_EQ(audio::openStreams(config, config, msg), 1) << msg;
    EXPECT_TRUE(audio::isDuplex());
    PeakRecorder meter; // marks the duplex callback's thread for the allocation count
    audio::addLevelListener(&meter);
    ASSERT_EQ(audio::startStreams(msg), 1) << msg;

    JackPatchbay patchbay;
    ASSERT_TRUE(patchbay.ok());
    const std::vector<std::string> inputs = patchbay.ports("^Tonegrabber:in");
    const std::vector<std::string> outputs = patchbay.ports("^Tonegrabber:out");
    ASSERT_EQ(inputs.size(), 2u);
    ASSERT_EQ(outputs.size(), 2u);
    for (size_t channel = 0; channel < 2; ++channel) {
        for (const std::string& source : patchbay.connections(inputs[channel]))
            patchbay.disconnect(source, inputs[channel]);
        ASSERT_TRUE(patchbay.connect(outputs[channel], inputs[channel]));
    }

    const std::vector<uint8_t> sample = keySample();
    const WaveFormat format = makeWaveFormat(44100, 2, 16);
    int played = 0;
    ASSERT_TRUE(recordWithActions(2.0,
                                  {{0.2,
                                    [&] {
                                        played = TGaudio_playSample(
                                            out, format, sample.data(), sample.size(), kNoteFrames,
                                            kNoteFrames + kLoopFrames, nullptr, 0, msg, 0);
                                    }},
                                   {1.2, [] { audio::player().requestStop(); }}},
                                  msg))
        << msg;
    ASSERT_EQ(played, 1) << msg;
    EXPECT_FALSE(audio::player().isPlaying());

    RecordedTake take = audio::recordBuffer();
    const std::vector<double> left = firstChannel(*take.data, 2, take.frames);
    const int64_t onset = firstFrameAbove(left, 500.0);
    ASSERT_GT(onset, 0);

    // While held: the note part once, then the loop over and over, sample for sample.
    int64_t fadeStart = onset;
    while (fadeStart < int64_t(left.size()) &&
           std::fabs(left[size_t(fadeStart)] - heldValue(fadeStart - onset)) <= kTolerance)
        ++fadeStart;
    const int64_t heldFrames = fadeStart - onset;
    std::fprintf(stderr, "onset %lld, held %lld frames (%.2f loop passes)\n", (long long)onset,
                 (long long)heldFrames, double(heldFrames - kNoteFrames) / kLoopFrames);
    ASSERT_GT(heldFrames, kNoteFrames + 5 * kLoopFrames) << "the loop must repeat while held";

    // The stop: a linear fade within one block, nothing above the last level, then silence.
    const int64_t block = int64_t(audio::inputFramesPerBuffer());
    ASSERT_GT(block, 0);
    const double lastLevel = peakBetween(left, fadeStart - kLoopFrames, fadeStart);
    EXPECT_LE(peakBetween(left, fadeStart, int64_t(left.size())), lastLevel);
    for (int64_t k = 0; k < block; ++k) {
        const double held = std::fabs(heldValue(fadeStart + k - onset));
        const double ramp = 1.0 - double(k) / double(block - 1);
        ASSERT_LE(std::fabs(left[size_t(fadeStart + k)]), held * ramp + kTolerance)
            << "frame " << k;
    }
    EXPECT_GT(std::fabs(left[size_t(fadeStart + block / 2)]),
              0.3 * std::fabs(heldValue(fadeStart + block / 2 - onset)))
        << "a fade, not a hard cut";
    EXPECT_LE(peakBetween(left, fadeStart + block, int64_t(left.size())), kTolerance);

    // Record and playback callbacks (one duplex callback) allocated nothing all along.
    EXPECT_TRUE(audioThreadMarked());
    EXPECT_EQ(audioThreadAllocations(), 0);
    // No lock but the record flag's QMutex (a futex, not counted) was taken there either.
    EXPECT_EQ(audioThreadMutexLocks(), 0);

    std::string closeMessage;
    EXPECT_EQ(audio::closeStreams(closeMessage), 1) << closeMessage;
    audio::removeLevelListener(&meter);
    audio::terminate();
}

} // namespace
} // namespace tg::test
