// How a settings word decodes where a field is empty, "same", or holds two values at once. The
// single values reach the converter in ExportPipeline's converter test and the written files in
// ExportCommand, FreeSpace's estimate and SoundFontInFluidSynth's resampled bank.
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
    // A flag field needs its on value alone.
    EXPECT_EQ(tg::targetResampling(kResamplingOff | kResamplingHigh), tg::ResampleMode::Average);
    // "Same" lies below the stereo code and wraps round past every channel choice.
    EXPECT_GE(tg::channelIndex(kChannelsSame), 8u);
}
