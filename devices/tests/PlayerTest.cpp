// The play list and the output side of the callback, rendered block by block. A held note
// playing once, then its loop, and on release the loop to its end and the release part, is
// checked sample for sample on the real sound chain (PlayCli, PrehearOnJack).
#include "devices/Player.h"

#include <gtest/gtest.h>

#include <cstring>
#include <numeric>
#include <string>
#include <vector>

namespace tg {
namespace {

const AudioStreamConfig kMonoOut{0, -1, -1, 44100, 16, 1, -1.0f};

// A mono 16-bit sample whose frame i holds the value i + 1 (so silence is recognisable).
std::vector<uint8_t> numberedSample(int frames, int first = 1)
{
    std::vector<uint8_t> bytes(size_t(frames) * 2);
    for (int i = 0; i < frames; ++i) {
        const int16_t value = int16_t(first + i);
        std::memcpy(bytes.data() + i * 2, &value, 2);
    }
    return bytes;
}

std::vector<int16_t> render(Player& player, unsigned long frames)
{
    std::vector<int16_t> out(frames, -999);
    player.renderBlock(reinterpret_cast<uint8_t*>(out.data()), frames, kMonoOut);
    return out;
}

std::vector<int16_t> values(std::initializer_list<int> list)
{
    return std::vector<int16_t>(list.begin(), list.end());
}

class PlayerTest : public ::testing::Test {
  protected:
    // Plays mono 16-bit `data` (copied) looped from `loopIn` to `loopOut`, then `release`.
    int play(const std::vector<uint8_t>& data, int32_t loopIn, int32_t loopOut, int64_t start = 0,
             const std::vector<uint8_t>& release = {}, const AudioStreamConfig& out = kMonoOut)
    {
        return player.playSample(out, format, data.data(), data.size(), loopIn, loopOut,
                                 release.empty() ? nullptr : release.data(), release.size(), msg,
                                 start);
    }

    Player player;
    std::string msg;
    WaveFormat format = makeWaveFormat(44100, 1, 16);
};

TEST_F(PlayerTest, EqualLoopPointsPlayTheWholeNoteOnceThenSilence)
{
    ASSERT_EQ(play(numberedSample(4), 3, 3), 1);
    ASSERT_EQ(player.itemCount(), 1);
    EXPECT_EQ(render(player, 6), values({1, 2, 3, 4, 0, 0}));
    EXPECT_TRUE(player.isFinished());
    EXPECT_FALSE(player.isPlaying());
    EXPECT_EQ(render(player, 2), values({0, 0}));
}

TEST_F(PlayerTest, KeyReleaseDuringTheNoteSkipsTheLoop)
{
    play(numberedSample(5), 2, 4, 0, numberedSample(1, 100));
    EXPECT_EQ(render(player, 1), values({1}));
    player.releaseKey();
    EXPECT_EQ(render(player, 3), values({2, 100, 0}));
}

TEST_F(PlayerTest, StopFadesTheNextBlockLinearlyToZero)
{
    std::vector<int16_t> level(64, 10000);
    std::vector<uint8_t> data(reinterpret_cast<uint8_t*>(level.data()),
                              reinterpret_cast<uint8_t*>(level.data() + level.size()));
    player.setOutputRunning(true);
    player.playSample(kMonoOut, format, data.data(), data.size(), 0, 64, nullptr, 0, msg, 0);
    EXPECT_EQ(render(player, 5), values({10000, 10000, 10000, 10000, 10000}));
    player.requestStop();
    EXPECT_TRUE(player.isPlaying()); // until the audio side played the fade
    std::vector<int16_t> faded = render(player, 5);
    EXPECT_EQ(faded, values({10000, 7500, 5000, 2500, 0}));
    EXPECT_FALSE(player.isPlaying());
    EXPECT_EQ(render(player, 3), values({0, 0, 0}));
}

TEST(FadeOut, TwentyFourAndEightBitScaleAroundTheirZero)
{
    // 24-bit: 0x400000 twice; the last frame must reach 0, the first stay whole.
    std::vector<uint8_t> packed = {0x00, 0x00, 0x40, 0x00, 0x00, 0x40};
    fadeOutBlock(packed.data(), 2, 1, 24);
    EXPECT_EQ(packed, (std::vector<uint8_t>{0x00, 0x00, 0x40, 0, 0, 0}));
    std::vector<uint8_t> unsignedBytes = {228, 228, 28};
    fadeOutBlock(unsignedBytes.data(), 3, 1, 8);
    EXPECT_EQ(unsignedBytes, (std::vector<uint8_t>{228, 178, 128}));
}

TEST_F(PlayerTest, StartFrameWithinAndBeyondTheParts)
{
    play(numberedSample(6), 2, 5, 3);
    EXPECT_EQ(player.cursorFrame(), 3);
    EXPECT_EQ(render(player, 4), values({4, 5, 3, 4}));

    ASSERT_EQ(play(numberedSample(6), 2, 5, 5), 1);
    EXPECT_FALSE(player.isPlaying());
    EXPECT_EQ(render(player, 2), values({0, 0}));
    EXPECT_EQ(player.setPlayPosition(4), 1);
    EXPECT_EQ(render(player, 2), values({5, 3}));
}

TEST_F(PlayerTest, LoopBeyondTheDataIsCutToIt)
{
    play(numberedSample(4), 2, 400);
    ASSERT_EQ(player.itemCount(), 2);
    EXPECT_EQ(player.item(1).frames, 2);
    EXPECT_EQ(render(player, 6), values({1, 2, 3, 4, 3, 4}));
}

TEST_F(PlayerTest, AddPlayItemRefusesEmptyAndPartialFrames)
{
    PlayItem empty;
    empty.format = kMonoOut;
    EXPECT_EQ(player.addPlayItem(empty), 0);
    PlayItem odd;
    odd.format = kMonoOut;
    odd.data = {1, 2, 3};
    EXPECT_EQ(player.addPlayItem(odd), 0);
    PlayItem good;
    good.format = kMonoOut;
    good.data = numberedSample(3);
    EXPECT_EQ(player.addPlayItem(good), 1);
    EXPECT_EQ(player.item(0).frames, 3);
    EXPECT_EQ(player.setPlayPosition(3), 0);
    EXPECT_EQ(player.setPlayPosition(2), 1);
    EXPECT_EQ(render(player, 2), values({3, 0}));
}

TEST_F(PlayerTest, DifferentFormatIsConvertedPartByPartWithItsRatio)
{
    // 22.05 kHz stereo 8-bit (note 40 frames, loop 20) played at 44.1 kHz mono 16-bit.
    const WaveFormat source = makeWaveFormat(22050, 2, 8);
    std::vector<uint8_t> data(60 * 2, 192);
    ASSERT_EQ(
        player.playSample(kMonoOut, source, data.data(), data.size(), 40, 60, nullptr, 0, msg, 10),
        1)
        << msg;
    ASSERT_EQ(player.itemCount(), 2);
    EXPECT_FLOAT_EQ(player.item(0).ratio, 0.5f);
    EXPECT_EQ(player.item(0).frames, 80); // twice the frames at twice the rate
    EXPECT_EQ(player.item(1).frames, 40);
    EXPECT_TRUE(player.item(1).repeat);
    EXPECT_EQ(player.item(1).format.bits, 16);
    // The start frame is a frame of the source: frame 10 is output frame 20.
    EXPECT_EQ(player.cursorFrame(), 10);
    std::vector<int16_t> out = render(player, 4);
    for (int16_t value : out)
        EXPECT_NEAR(value, (192 - 128) * 256, 256);
}

TEST_F(PlayerTest, FailedConversionPlaysNothingAndSaysWhy)
{
    const AudioStreamConfig oddOutput{0, -1, -1, 44100, 12, 1, -1.0f};
    EXPECT_EQ(play(numberedSample(8), 0, 0, 0, {}, oddOutput), 0);
    EXPECT_FALSE(msg.empty());
    EXPECT_EQ(player.itemCount(), 0);
    EXPECT_FALSE(player.isPlaying());
}

TEST_F(PlayerTest, PluginModePlaysTheRingBufferAndPadsWithSilence)
{
    player.resizePluginRing(64);
    player.setPluginMode(true);
    std::vector<uint8_t> audio = numberedSample(3, 7);
    EXPECT_EQ(player.writePluginAudio(audio.data(), audio.size()), audio.size());
    EXPECT_EQ(render(player, 5), values({7, 8, 9, 0, 0}));
    std::vector<uint8_t> more = numberedSample(40, 1); // 80 bytes: only 64 fit
    EXPECT_EQ(player.writePluginAudio(more.data(), more.size()), 64u);
    std::vector<int16_t> expected(33, 0);
    std::iota(expected.begin(), expected.end() - 1, int16_t(1));
    EXPECT_EQ(render(player, 33), expected);
}

} // namespace
} // namespace tg
