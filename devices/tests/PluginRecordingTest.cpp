// The real-time path of the hosted instrument without a sound card: the host's thread fills
// the player's ring buffer, and blocks pulled as the output callback pulls them reach the
// recorder, mono takes keeping the mean of both sides.
#include "devices/InstrumentHost.h"
#include "devices/Recorder.h"
#include "devices/tests/InstrumentTestSupport.h"

#include "tests/e2e/ToneAnalysis.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

namespace tg {
namespace {

const AudioStreamConfig kOutput{-1, -1, -1, 44100, 16, 2, -1.0f};

TEST(PluginRecording, StereoBlockRecordedMonoKeepsTheMean)
{
    Recorder recorder;
    ASSERT_EQ(recorder.arm(AudioStreamConfig{-1, -1, -1, 44100, 16, 1, -1.0f}, 3.0 / 44100), 1);
    const int16_t block[] = {1000, 3000, -32768, -32768, 32767, -32767};
    recorder.processBlock(block, 3, 2);
    EXPECT_FALSE(recorder.isRecording() && recorder.take().frames != 3);
    const RecordedTake take = recorder.take();
    ASSERT_EQ(take.frames, 3);
    int16_t mono[3];
    std::memcpy(mono, take.data->data(), 6);
    EXPECT_EQ(mono[0], 2000);
    EXPECT_EQ(mono[1], -32768);
    EXPECT_EQ(mono[2], 0);

    // 24-bit packed, and 8-bit arriving signed as the stream has it, stored unsigned.
    ASSERT_EQ(recorder.arm(AudioStreamConfig{-1, -1, -1, 44100, 24, 1, -1.0f}, 1.0 / 44100), 1);
    const uint8_t block24[] = {0x00, 0x00, 0x80, 0x00, 0x00, 0x40}; // -2^23 and 2^22
    recorder.processBlock(block24, 1, 2);
    const uint8_t* got = recorder.take().data->data();
    EXPECT_EQ(got[0] | got[1] << 8 | got[2] << 16, 0xE00000); // -2^21
    ASSERT_EQ(recorder.arm(AudioStreamConfig{-1, -1, -1, 44100, 8, 1, -1.0f}, 1.0 / 44100), 1);
    const int8_t block8[] = {-100, 20};
    recorder.processBlock(block8, 1, 2);
    EXPECT_EQ(recorder.take().data->at(0), 128 - 40);
}

TEST(PluginRecording, HostedSynthReachesTheRecorderThroughTheRing)
{
    std::string msg;
    auto piano = test::openInstrument(std::string(test::kGeneralMidiFont) + "?preset=19", msg);
    ASSERT_NE(piano, nullptr) << msg;
    Player player;
    player.resizePluginRing(16384 * 4);
    player.setPluginMode(true);
    InstrumentHost host;
    ASSERT_EQ(host.start(std::move(piano), kOutput, player, msg), 1) << msg;

    Recorder recorder;
    ASSERT_EQ(recorder.arm(kOutput, 1.0), 1);
    constexpr unsigned long kBlock = 256;
    std::vector<uint8_t> out(kBlock * 4);
    int blocks = 0;
    // Pull blocks at about the pace of a 44.1 kHz output; A4 starts a tenth of a second in.
    while (recorder.isRecording() && blocks < 1000) {
        if (blocks == 17) {
            ASSERT_TRUE(host.sendMidi(0x90, 69, 110));
        }
        std::this_thread::sleep_for(std::chrono::microseconds(5800));
        player.renderBlock(out.data(), kBlock, kOutput);
        recorder.processBlock(out.data(), kBlock, 2);
        ++blocks;
    }
    host.sendMidi(0x80, 69, 0);
    EXPECT_NE(host.stop(), nullptr);
    ASSERT_FALSE(recorder.isRecording());

    const RecordedTake take = recorder.take();
    const std::vector<double> samples = test::firstChannel(*take.data, 2, take.frames);
    const int64_t onset = test::firstFrameAbove(samples, 300.0);
    ASSERT_GT(onset, 0) << "the take stayed silent";
    EXPECT_GT(onset, 17 * int64_t(kBlock) - 2048); // not before the note was sent
    const double hz = test::pitchHz(samples, onset + 4410, onset + 4410 + 8192, 44100.0, 330, 580);
    EXPECT_NEAR(hz, 440.0, 2.2);
    // No gap: once sounding, the ring never ran dry (a dry ring plays zeros).
    int longestZeroRun = 0;
    for (int64_t i = onset, run = 0; i < onset + 11025 && i < int64_t(samples.size()); ++i) {
        run = samples[size_t(i)] == 0.0 ? run + 1 : 0;
        longestZeroRun = std::max(longestZeroRun, int(run));
    }
    EXPECT_LT(longestZeroRun, 8);
    EXPECT_GT(host.framesRendered(), int64_t(44100 / 2));
}

TEST(PluginRecording, HostRefusesWhatItCannotFeed)
{
    std::string msg;
    Player player;
    InstrumentHost host;
    auto piano = test::openInstrument(test::kGeneralMidiFont, msg);
    ASSERT_NE(piano, nullptr) << msg;
    EXPECT_EQ(host.start(std::move(piano), kOutput, player, msg), 0);
    EXPECT_EQ(msg, "The instrument's ring buffer is too small for 1024 frames");
    player.resizePluginRing(16384 * 4);
    piano = test::openInstrument(test::kGeneralMidiFont, msg);
    AudioStreamConfig other = kOutput;
    other.sampleRate = 48000;
    EXPECT_EQ(host.start(std::move(piano), other, player, msg), 0);
    EXPECT_EQ(msg, "The instrument runs at 44100 Hz, the audio output at 48000 Hz");
    EXPECT_FALSE(host.running());
}

TEST(PluginRecording, MessageQueueRefusesWhenFull)
{
    InstrumentHost host; // not started: nothing drains the queue
    int accepted = 0;
    while (host.sendMidi(0x90, 60, 100) && accepted < 5000)
        ++accepted;
    EXPECT_EQ(accepted, 1024);
    EXPECT_FALSE(host.resetNotes());
}

} // namespace
} // namespace tg
