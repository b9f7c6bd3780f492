#include "export/ExportSettings.h"

#include <gtest/gtest.h>

using namespace tg::exportbits;

TEST(ExportSettings, ChannelIndexIsTheRotatedChannelCode)
{
    EXPECT_EQ(tg::channelIndex(kChannelsStereo), 0u);
    EXPECT_EQ(tg::channelIndex(kChannelsMonoMix), 1u);
    EXPECT_EQ(tg::channelIndex(kChannelsMonoLeft), 3u);
    EXPECT_EQ(tg::channelIndex(kChannelsMonoRight), 7u);
    // "Same" lies below the stereo code and wraps round to a large index.
    EXPECT_GE(tg::channelIndex(kChannelsSame), 8u);
}

TEST(ExportSettings, ChannelCodesGiveChannelCountAndSelection)
{
    EXPECT_EQ(tg::targetChannels(kChannelsStereo, 1), 2);
    EXPECT_EQ(tg::targetChannels(kChannelsMonoMix, 2), 1);
    EXPECT_EQ(tg::targetChannels(kChannelsMonoLeft, 2), 1);
    EXPECT_EQ(tg::targetChannels(kChannelsMonoRight, 2), 1);
    EXPECT_EQ(tg::targetChannels(kChannelsSame, 2), 2);
    EXPECT_EQ(tg::targetChannels(kChannelsSame, 1), 1);
    EXPECT_EQ(tg::targetChannels(0, 1), 1); // no channel value at all keeps the source
    EXPECT_EQ(tg::targetChannelMode(kChannelsMonoLeft), tg::ChannelMode::Left);
    EXPECT_EQ(tg::targetChannelMode(kChannelsMonoRight), tg::ChannelMode::Right);
    EXPECT_EQ(tg::targetChannelMode(kChannelsMonoMix), tg::ChannelMode::Mix);
}

TEST(ExportSettings, FrequencyAndDepthCodesOrTheSourceValue)
{
    EXPECT_EQ(tg::targetRate(kFrequency11025, 96000), 11025u);
    EXPECT_EQ(tg::targetRate(kFrequency22050, 96000), 22050u);
    EXPECT_EQ(tg::targetRate(kFrequency44100, 96000), 44100u);
    EXPECT_EQ(tg::targetRate(kFrequency48000, 96000), 48000u);
    EXPECT_EQ(tg::targetRate(kFrequency96000, 44100), 96000u);
    EXPECT_EQ(tg::targetRate(kFrequency192000, 44100), 192000u);
    EXPECT_EQ(tg::targetRate(kFrequencySame, 32000), 32000u);
    EXPECT_EQ(tg::targetRate(0x80, 32000), 32000u);
    EXPECT_EQ(tg::targetRate(kFrequency44100 | kFrequency48000, 32000), 32000u);
    EXPECT_EQ(tg::targetBits(kDepth8, 24), 8);
    EXPECT_EQ(tg::targetBits(kDepth16, 24), 16);
    EXPECT_EQ(tg::targetBits(kDepth24, 16), 24);
    EXPECT_EQ(tg::targetBits(kDepthSame, 24), 24);
}

TEST(ExportSettings, FlagFieldsNeedTheirOnValue)
{
    EXPECT_EQ(tg::targetResampling(kResamplingHigh), tg::ResampleMode::HighQuality);
    EXPECT_EQ(tg::targetResampling(kResamplingOff), tg::ResampleMode::Average);
    EXPECT_EQ(tg::targetResampling(kResamplingOff | kResamplingHigh), tg::ResampleMode::Average);
    EXPECT_TRUE(tg::wantsLevelAdjust(kLevelsAdjust));
    EXPECT_FALSE(tg::wantsLevelAdjust(kLevelsOff));
    EXPECT_TRUE(tg::wantsTailRemoval(kTailRemove));
    EXPECT_FALSE(tg::wantsTailRemoval(kTailKeep));
    EXPECT_TRUE(tg::wantsLoopOnly(kLoopOnly));
    EXPECT_FALSE(tg::wantsLoopOnly(0x20408));
}

TEST(ExportSettings, TargetFormatHasItsDerivedFields)
{
    const tg::WaveFormat source = tg::makeWaveFormat(96000, 2, 24);
    const tg::WaveFormat target =
        tg::targetFormat(kFrequency44100 | kDepth16 | kChannelsMonoMix, source);
    EXPECT_EQ(target.nSamplesPerSec, 44100u);
    EXPECT_EQ(target.nChannels, 1);
    EXPECT_EQ(target.wBitsPerSample, 16);
    EXPECT_EQ(target.nBlockAlign, 2);
    EXPECT_EQ(target.nAvgBytesPerSec, 88200u);
}
