// The frames-per-buffer rule and what makes two stream configurations differ.
#include "devices/AudioStreamConfig.h"

#include <gtest/gtest.h>

namespace tg {
namespace {

TEST(FramesPerBuffer, NonMultiplesOf64BecomeFiveHundredTwelve)
{
    EXPECT_EQ(framesPerBufferFor(256.0 / 44100.0, 44100), 256u);
    EXPECT_EQ(framesPerBufferFor(1024.0 / 44100.0, 44100), 1024u);
    EXPECT_EQ(framesPerBufferFor(0.0232199, 44100), 1024u); // rounds 1023.99 to 1024
    EXPECT_EQ(framesPerBufferFor(0.01, 48000), 512u); // 480; 441 at 44.1 kHz: SoundChainStreams
    EXPECT_EQ(framesPerBufferFor(0.0, 44100), 0u);    // PortAudio chooses
    EXPECT_EQ(framesPerBufferFor(63.0 / 44100.0, 44100), 512u);
}

TEST(AudioStreamConfigs, LatencyAloneMakesThemDiffer)
{
    AudioStreamConfig a{0, -1, -1, 44100, 16, 2, -1.0f};
    AudioStreamConfig b = a;
    EXPECT_TRUE(sameConfig(a, b));
    b.latency = 0.01f;
    EXPECT_FALSE(sameConfig(a, b));
    b = a;
    b.channelRight = 1;
    EXPECT_FALSE(sameConfig(a, b));
}

} // namespace
} // namespace tg
