// The real-time path of the hosted instrument without a sound card: mono takes of the
// player's stereo blocks keep the mean of both sides, and the host refuses what it cannot
// feed. The instrument heard through the ring buffer is tested on the sound chain
// (HostedInstrumentOnJack in tests/e2e).
#include "devices/InstrumentHost.h"
#include "devices/Recorder.h"
#include "devices/tests/InstrumentTestSupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace tg {
namespace {

const AudioStreamConfig kOutput{-1, -1, -1, 44100, 16, 2, -1.0f};

TEST(PluginRecording, StereoBlockRecordedMonoKeepsTheMean)
{
    Recorder recorder;
    ASSERT_EQ(recorder.arm(AudioStreamConfig{-1, -1, -1, 44100, 16, 1, -1.0f}, 3.0 / 44100), 1);
    const int16_t block[] = {1000, 3000, -32768, -32768, 32767, -32767};
    recorder.processBlock(block, 3, 2);
    const RecordedTake take = recorder.take();
    ASSERT_EQ(take.frames, 3);
    std::vector<int16_t> mono(3);
    std::memcpy(mono.data(), take.data->data(), 6);
    EXPECT_EQ(mono, (std::vector<int16_t>{2000, -32768, 0}));

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
