// How a settings word decodes where a field is empty, "same", or holds two values at once.
#include "export/ExportSettings.h"

#include <gtest/gtest.h>

using namespace tg::exportbits;

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
    // A flag field needs its on value alone.
    EXPECT_EQ(tg::targetResampling(kResamplingOff | kResamplingHigh), tg::ResampleMode::Average);
    EXPECT_FALSE(tg::wantsLoopOnly(0x20408));
}

TEST(ExportSettings, TargetFormatHasItsDerivedFields)
{
    // The decoding of each value reaches the converter: ExportPipeline's converter test.
    const tg::WaveFormat source = tg::makeWaveFormat(96000, 2, 24);
    const tg::WaveFormat target =
        tg::targetFormat(kFrequency44100 | kDepth16 | kChannelsMonoMix, source);
    EXPECT_EQ(target.nSamplesPerSec, 44100u);
    EXPECT_EQ(target.nChannels, 1);
    EXPECT_EQ(target.wBitsPerSample, 16);
    EXPECT_EQ(target.nBlockAlign, 2);
    EXPECT_EQ(target.nAvgBytesPerSec, 88200u);
}
