// The one-shot recorder and the input peak rule, driven block by block as the callback does.
// A take of 0 seconds is checked on the sound chain (SoundChainStreams).
#include "devices/Recorder.h"
#include "devices/PeakLevel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>
#include <vector>

namespace tg {
namespace {

AudioStreamConfig stereo16(int32_t rate = 44100)
{
    return AudioStreamConfig{0, -1, -1, rate, 16, 2, -1.0f};
}

std::vector<int16_t> ramp(int frames, int channels, int16_t start)
{
    std::vector<int16_t> samples(size_t(frames * channels));
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = int16_t(start + int(i));
    return samples;
}

TEST(Recorder, FillsAcrossBlocksAndStopsWhenFull)
{
    Recorder recorder;
    const AudioStreamConfig config = stereo16(100);
    ASSERT_EQ(recorder.arm(config, 1.5), 1); // 150 frames
    EXPECT_EQ(recorder.bufferBytes(), 150u * 4);
    std::vector<int16_t> first = ramp(64, 2, 0);
    std::vector<int16_t> second = ramp(64, 2, 1000);
    std::vector<int16_t> third = ramp(64, 2, 2000);
    recorder.processBlock(first.data(), 64);
    recorder.processBlock(second.data(), 64);
    EXPECT_TRUE(recorder.isRecording());
    recorder.processBlock(third.data(), 64); // only 22 frames fit
    EXPECT_FALSE(recorder.isRecording());
    RecordedTake take = recorder.take();
    EXPECT_EQ(take.frames, 150);
    const auto* samples = reinterpret_cast<const int16_t*>(take.data->data());
    EXPECT_EQ(samples[0], 0);
    EXPECT_EQ(samples[128], 1000);
    EXPECT_EQ(samples[256], 2000);
    EXPECT_EQ(samples[299], 2000 + 43);
    // Blocks after the end leave the take alone.
    recorder.processBlock(first.data(), 64);
    EXPECT_EQ(recorder.take().frames, 150);
}

TEST(Recorder, MissingInputRecordsSilenceAndEightBitIsStoredUnsigned)
{
    Recorder recorder;
    AudioStreamConfig config{0, -1, -1, 1000, 8, 1, -1.0f};
    ASSERT_EQ(recorder.arm(config, 0.008), 1); // 8 frames
    const int8_t block[4] = {0, 127, -128, -1};
    recorder.processBlock(block, 4);
    recorder.processBlock(nullptr, 4);
    const std::vector<uint8_t>& data = *recorder.take().data;
    const std::vector<uint8_t> expected = {0x80, 0xFF, 0x00, 0x7F, 0x80, 0x80, 0x80, 0x80};
    EXPECT_EQ(data, expected);
}

// Blocks of `frames` stereo frames, timed on a 100 Hz stream clock.
BlockStatus at(int64_t frame, bool overflow = false)
{
    BlockStatus status;
    status.timed = true;
    status.time = 1000.0 + double(frame) / 100.0;
    status.inputOverflow = overflow;
    return status;
}

TEST(Recorder, HealthCountsOverflowsUnderflowsAndTheFramesTheClockSaysAreMissing)
{
    Recorder recorder;
    const AudioStreamConfig config = stereo16(100);
    ASSERT_EQ(recorder.arm(config, 3.0), 1); // 300 frames
    std::vector<int16_t> block = ramp(64, 2, 0);
    recorder.processBlock(block.data(), 64, at(0));
    // The clock is read late by up to a block: no hole. The host flags an xrun somewhere
    // else in its graph; the clock shows this stream lost nothing.
    recorder.processBlock(block.data(), 64, at(64 + 60, true));
    recorder.processBlock(block.data(), 64, at(128 + 10));
    TakeHealth health = recorder.take().health;
    EXPECT_EQ(health.framesReceived, 192);
    EXPECT_EQ(health.inputOverflows, 1);
    EXPECT_FALSE(health.droppedFrames());
    // Without a clock the flag is all there is to go by.
    ASSERT_EQ(recorder.arm(config, 3.0), 1);
    recorder.processBlock(block.data(), 64, BlockStatus{false, 0.0, true, false});
    EXPECT_TRUE(recorder.take().health.droppedFrames());
    ASSERT_EQ(recorder.arm(config, 3.0), 1);
    // The first block's reading is late; the second shows it, so the hole after it counts
    // whole.
    recorder.processBlock(block.data(), 64, at(50));
    recorder.processBlock(block.data(), 64, at(64));
    // Two periods never arrived, and the driver flagged the next block.
    recorder.processBlock(block.data(), 64, at(256, true));
    recorder.noteOutputStatus(BlockStatus{false, 0.0, false, true});
    recorder.processBlock(block.data(), 64, at(320));
    recorder.processBlock(block.data(), 64, at(384)); // only 44 fit: the take is full
    EXPECT_FALSE(recorder.isRecording());
    recorder.noteOutputStatus(BlockStatus{false, 0.0, false, true}); // after the take
    health = recorder.take().health;
    EXPECT_EQ(health.framesReceived, 300);
    EXPECT_EQ(health.framesExpected, 428);
    EXPECT_EQ(health.framesMissing(), 128);
    EXPECT_EQ(health.inputOverflows, 1);
    EXPECT_EQ(health.outputUnderflows, 1);
    EXPECT_TRUE(health.droppedFrames());

    // A reading more than the whole take ahead is a clock that jumped, not a hole: from then
    // on the flags judge the take.
    ASSERT_EQ(recorder.arm(config, 3.0), 1);
    recorder.processBlock(block.data(), 64, at(0));
    recorder.processBlock(block.data(), 64, at(int64_t(1) << 31));
    health = recorder.take().health;
    EXPECT_FALSE(health.clocked);
    EXPECT_EQ(health.framesMissing(), 0);
    EXPECT_FALSE(health.droppedFrames());

    // A clean take: as many frames arrived as the clock let pass.
    ASSERT_EQ(recorder.arm(config, 1.0), 1);
    for (int64_t frame = 0; recorder.isRecording(); frame += 64)
        recorder.processBlock(block.data(), 64, at(frame));
    health = recorder.take().health;
    EXPECT_EQ(health.framesExpected, 100);
    EXPECT_EQ(health.framesReceived, 100);
    EXPECT_FALSE(health.droppedFrames());
}

// A callback thread writes numbered frames without pause while this thread arms takes of
// changing sizes (so the buffer is freed and reallocated, or cleared when the size repeats),
// stops some early and reads them. Every take must hold consecutive frames, zeros after its
// end (nothing of an earlier take), and stay as read: a block written after stop() returned,
// or into a buffer being replaced, shows here (and to the sanitizers).
TEST(Recorder, ArmStopAndReadAgainstARunningCallbackThread)
{
    Recorder recorder;
    AudioStreamConfig config{0, -1, -1, 1024, 32, 1, -1.0f};
    std::atomic<bool> running{true};
    std::atomic<long> blocks{0};
    std::thread callback([&] {
        std::vector<int32_t> block(16);
        int32_t next = 1;
        while (running.load(std::memory_order_relaxed)) {
            for (int32_t& sample : block)
                sample = next++;
            BlockStatus status;
            status.timed = true;
            status.time = double(next) / 1024.0;
            recorder.processBlock(block.data(), block.size(), status);
            blocks.fetch_add(1, std::memory_order_relaxed);
        }
    });
    std::mt19937 random(7);
    int complete = 0;
    for (int round = 0; round < 400; ++round) {
        const double seconds = double(1 + random() % 6) / 64.0; // 16 to 96 frames
        ASSERT_EQ(recorder.arm(config, seconds), 1);
        if (random() % 2 == 0) {
            const long until = blocks.load() + long(random() % 4);
            while (recorder.isRecording() && blocks.load() < until)
                std::this_thread::yield();
            recorder.stop();
        } else {
            while (recorder.isRecording())
                std::this_thread::yield();
            ++complete;
        }
        const RecordedTake take = recorder.take();
        const std::vector<uint8_t> copy = *take.data;
        ASSERT_EQ(copy.size(), size_t(seconds * 1024.0) * 4);
        ASSERT_LE(take.frames * 4, int64_t(copy.size()));
        const auto* samples = reinterpret_cast<const int32_t*>(copy.data());
        for (int64_t i = 1; i < take.frames; ++i)
            ASSERT_EQ(samples[i], samples[i - 1] + 1) << "round " << round << " frame " << i;
        for (size_t i = size_t(take.frames); i < copy.size() / 4; ++i)
            ASSERT_EQ(samples[i], 0) << "round " << round << " frame " << i;
        EXPECT_FALSE(take.health.droppedFrames());
        const long seen = blocks.load();
        while (blocks.load() < seen + 2)
            std::this_thread::yield();
        ASSERT_EQ(*recorder.take().data, copy) << "written after the stop, round " << round;
    }
    running = false;
    callback.join();
    EXPECT_GT(complete, 0);
}

TEST(PeakLevel, LargestSignedValueNotMagnitude)
{
    const int16_t negative[4] = {-30000, -5, -32768, -1};
    float first = 1;
    float second = 1;
    blockPeaks(negative, 2, 2, 16, first, second);
    EXPECT_EQ(first, 0.0f);
    EXPECT_EQ(second, 0.0f);

    const int16_t mixed[6] = {-32768, 100, 16384, -2, 32767, 3};
    blockPeaks(mixed, 3, 2, 16, first, second);
    EXPECT_FLOAT_EQ(first, 1.0f);
    EXPECT_FLOAT_EQ(second, 100.0f / 32767.0f);
}

TEST(PeakLevel, MonoEightAndTwentyFourBit)
{
    const int8_t mono[3] = {-100, 64, 10};
    float first = 0;
    float second = 1;
    blockPeaks(mono, 3, 1, 8, first, second);
    EXPECT_FLOAT_EQ(first, 64.0f / 127.0f);
    EXPECT_EQ(second, 0.0f);

    // 0x400000 (half scale) little-endian, then a negative full-scale sample.
    const uint8_t packed[6] = {0x00, 0x00, 0x40, 0x00, 0x00, 0x80};
    blockPeaks(packed, 2, 1, 24, first, second);
    EXPECT_NEAR(first, 0.5f, 1e-6);

    blockPeaks(nullptr, 16, 2, 16, first, second);
    EXPECT_EQ(first, 0.0f);
}

} // namespace
} // namespace tg
