// Peak levels and per-channel gain of a Key-Sample's audio, the basis of normalize and
// change gain.
#pragma once

#include "audiofile/WaveFormat.h"
#include "core/Records.h"

#include <cstddef>
#include <cstdint>

namespace tg {

// Peak of each channel as a fraction of full scale (127, 32767, 8388607 for 8, 16, 24 bits).
// A mono recording reports its channel as left and 0 as right.
struct ChannelLevels {
    double left = 0.0;
    double right = 0.0;
};

// Level in dB of a peak: max(-72, 20 log10(max(0.000001, peak))); silence reads -72.
double levelInDb(double peak);
// Gain factor of a level change in dB: 10^(dB / 20).
double gainFromDb(double dB);

// The region measured and changed: the whole recording, or with `noteAndRelease` only
// Note_In..Note_Out plus Release_In..Release_Out when the key has a release.
struct LevelRegion {
    bool noteAndRelease = false;
    const TGmsl_key* key = nullptr; // markers for noteAndRelease
};

ChannelLevels measureLevels(const WaveFormat& format, const uint8_t* data, size_t bytes,
                            const LevelRegion& region = {});

// Multiplies every sample of the region by the factor of its channel, truncating and
// clipping to full scale. Nothing happens when both factors are 1, or when the left factor
// is 1 and the audio is mono.
void applyGains(double left, double right, const WaveFormat& format, uint8_t* data, size_t bytes,
                const LevelRegion& region = {});

// The factors that bring `levels` to `targetDb` (1 for a silent channel); with
// `equalLeftRight` both channels use the louder peak.
void normalizeFactors(const ChannelLevels& levels, double targetDb, bool equalLeftRight,
                      double& left, double& right);

} // namespace tg
