// The Export Settings word: one 32-bit word of bit fields chosen in the settings dialog.
#pragma once

#include "audiofile/SampleConverter.h"
#include "audiofile/WaveFormat.h"

#include <cstdint>

namespace tg {

// Field masks and the values of each field; exactly one value per field is set.
namespace exportbits {
constexpr uint32_t kFrequencyMask = 0x000000FF;
constexpr uint32_t kFrequencySame = 0x01;
constexpr uint32_t kFrequency11025 = 0x02;
constexpr uint32_t kFrequency22050 = 0x04;
constexpr uint32_t kFrequency44100 = 0x08;
constexpr uint32_t kFrequency48000 = 0x10;
constexpr uint32_t kFrequency96000 = 0x20;
constexpr uint32_t kFrequency192000 = 0x40;

constexpr uint32_t kDepthMask = 0x00000F00;
constexpr uint32_t kDepthSame = 0x100;
constexpr uint32_t kDepth8 = 0x200;
constexpr uint32_t kDepth16 = 0x400;
constexpr uint32_t kDepth24 = 0x800;

constexpr uint32_t kChannelsMask = 0x001F0000;
constexpr uint32_t kChannelsSame = 0x10000;
constexpr uint32_t kChannelsStereo = 0x20000;
constexpr uint32_t kChannelsMonoMix = 0x40000;
constexpr uint32_t kChannelsMonoLeft = 0x80000;
constexpr uint32_t kChannelsMonoRight = 0x100000;

constexpr uint32_t kResamplingMask = 0x03000000;
constexpr uint32_t kResamplingOff = 0x1000000;
constexpr uint32_t kResamplingHigh = 0x2000000;

constexpr uint32_t kLoopOnly = 0x4000000;

constexpr uint32_t kLevelsMask = 0x30000000;
constexpr uint32_t kLevelsOff = 0x10000000;
constexpr uint32_t kLevelsAdjust = 0x20000000;

constexpr uint32_t kTailMask = 0xC0000000;
constexpr uint32_t kTailKeep = 0x40000000;
constexpr uint32_t kTailRemove = 0x80000000;
} // namespace exportbits

// The channel index of the channel field: (channel bits - 0x20000) rotated left by 15.
// Stereo 0, mix 1, only L 3, only R 7; other codes give other values.
uint32_t channelIndex(uint32_t word);

// The rate the word asks for, or `sourceRate` for "same" and unknown codes.
uint32_t targetRate(uint32_t word, uint32_t sourceRate);
// The bits per sample the word asks for, or `sourceBits` for "same" and unknown codes.
uint16_t targetBits(uint32_t word, uint16_t sourceBits);
// The channel count the word asks for, or `sourceChannels` for "same" and unknown codes.
uint16_t targetChannels(uint32_t word, uint16_t sourceChannels);
// Which channel a mono target takes from a stereo source.
ChannelMode targetChannelMode(uint32_t word);
// The converter mode: HighQuality when the resampling bits say "on", Average otherwise.
ResampleMode targetResampling(uint32_t word);
// The complete target format for a Key-Sample of format `source`.
WaveFormat targetFormat(uint32_t word, const WaveFormat& source);

inline bool wantsLoopOnly(uint32_t word)
{
    return (word & exportbits::kLoopOnly) != 0;
}
inline bool wantsLevelAdjust(uint32_t word)
{
    return (word & exportbits::kLevelsMask) == exportbits::kLevelsAdjust;
}
inline bool wantsTailRemoval(uint32_t word)
{
    return (word & exportbits::kTailMask) == exportbits::kTailRemove;
}

} // namespace tg
