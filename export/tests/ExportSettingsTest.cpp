// How a settings word decodes: the values no export test tells apart by its output, and the
// fields that are empty, "same", or hold two values at once. The others reach the converter in
// ExportPipeline's converter test and the written files in ExportCommand.
#include "export/ExportSettings.h"

#include <gtest/gtest.h>

#include <utility>

using namespace tg::exportbits;

TEST(ExportSettings, RatesAndModesOfTheWord)
{
    const std::pair<uint32_t, uint32_t> rates[] = {{kFrequency11025, 11025u},
                                                   {kFrequency48000, 48000u},
                                                   {kFrequency96000, 96000u},
                                                   {kFrequency192000, 192000u}};
    for (const auto& [code, rate] : rates)
        EXPECT_EQ(tg::targetRate(code, 32000), rate) << code;
    EXPECT_EQ(tg::targetChannelMode(kChannelsMonoMix), tg::ChannelMode::Mix);
    EXPECT_EQ(tg::targetChannelMode(kChannelsMonoLeft), tg::ChannelMode::Left);
    EXPECT_EQ(tg::targetResampling(kResamplingOff), tg::ResampleMode::Average);
    // A flag field needs its on value alone.
    EXPECT_EQ(tg::targetResampling(kResamplingOff | kResamplingHigh), tg::ResampleMode::Average);
    EXPECT_TRUE(tg::wantsLoopOnly(kLoopOnly));
    EXPECT_FALSE(tg::wantsLoopOnly(0x20408));
}

TEST(ExportSettings, EmptySameOrDoubleFieldsKeepTheSourceValue)
{
    EXPECT_EQ(tg::targetChannels(kChannelsSame, 2), 2);
    EXPECT_EQ(tg::targetChannels(0, 1), 1);
    EXPECT_EQ(tg::targetChannels(kChannelsStereo, 1), 2);
    EXPECT_EQ(tg::targetRate(kFrequencySame, 32000), 32000u);
    EXPECT_EQ(tg::targetRate(0x80, 32000), 32000u);
    EXPECT_EQ(tg::targetRate(kFrequency44100 | kFrequency48000, 32000), 32000u);
    EXPECT_EQ(tg::targetBits(kDepthSame, 24), 24);
    // "Same" lies below the stereo code and wraps round past every channel choice.
    EXPECT_GE(tg::channelIndex(kChannelsSame), 8u);
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
