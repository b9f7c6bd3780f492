// Peak measurement and gain stage over the regions of a Key-Sample.
#include "analysis/Levels.h"

#include "analysis/PcmSamples.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace tg {

namespace {

struct FrameRange {
    int64_t first;
    int64_t last; // inclusive
};

// Up to two inclusive frame ranges of the region, cut to the data; empty ones skipped.
int regionRanges(const LevelRegion& region, int64_t frames, FrameRange (&out)[2])
{
    if (!region.noteAndRelease || region.key == nullptr) {
        out[0] = {0, frames - 1};
        return frames > 0 ? 1 : 0;
    }
    const TGmsl_key& key = *region.key;
    if (key.Note_Out <= key.Note_In)
        return 0;
    int n = 0;
    auto add = [&](int64_t first, int64_t last) {
        first = std::max<int64_t>(first, 0);
        last = std::min<int64_t>(last, frames - 1);
        if (first <= last)
            out[n++] = {first, last};
    };
    add(key.Note_In, key.Note_Out);
    if (key.Release_Out > key.Release_In) {
        // A release that starts inside the note is measured once.
        add(std::max<int64_t>(key.Release_In, int64_t{key.Note_Out} + 1), key.Release_Out);
    }
    return n;
}

double fullScale(int width)
{
    return width == 1 ? 127.0 : width == 2 ? 32767.0 : 8388607.0;
}

} // namespace

double levelInDb(double peak)
{
    return std::max(-72.0, 20.0 * std::log10(std::max(0.000001, peak)));
}

double gainFromDb(double dB)
{
    return std::pow(10.0, dB / 20.0);
}

ChannelLevels measureLevels(const WaveFormat& format, const uint8_t* data, size_t bytes,
                            const LevelRegion& region)
{
    ChannelLevels levels;
    if (data == nullptr || !pcm::isSupportedFormat(format))
        return levels;
    const int width = pcm::bytesPerSample(format);
    const int64_t frames = static_cast<int64_t>(bytes / format.nBlockAlign);
    FrameRange ranges[2];
    const int count = regionRanges(region, frames, ranges);
    int32_t peak[2] = {0, 0};
    for (int r = 0; r < count; ++r) {
        for (int64_t f = ranges[r].first; f <= ranges[r].last; ++f) {
            const uint8_t* frame = data + static_cast<size_t>(f) * format.nBlockAlign;
            for (int ch = 0; ch < format.nChannels; ++ch)
                peak[ch] = std::max(peak[ch], std::abs(pcm::readSample(frame + ch * width, width)));
        }
    }
    levels.left = peak[0] / fullScale(width);
    levels.right = format.nChannels == 2 ? peak[1] / fullScale(width) : 0.0;
    return levels;
}

void applyGains(double left, double right, const WaveFormat& format, uint8_t* data, size_t bytes,
                const LevelRegion& region)
{
    if (data == nullptr || !pcm::isSupportedFormat(format))
        return;
    if ((left == 1.0 && right == 1.0) || (left == 1.0 && format.nChannels == 1))
        return;
    const int width = pcm::bytesPerSample(format);
    const int64_t frames = static_cast<int64_t>(bytes / format.nBlockAlign);
    const double factor[2] = {left, right};
    FrameRange ranges[2];
    const int count = regionRanges(region, frames, ranges);
    for (int r = 0; r < count; ++r) {
        for (int64_t f = ranges[r].first; f <= ranges[r].last; ++f) {
            uint8_t* frame = data + static_cast<size_t>(f) * format.nBlockAlign;
            for (int ch = 0; ch < format.nChannels; ++ch) {
                uint8_t* p = frame + ch * width;
                pcm::writeSample(p, width,
                                 pcm::truncateScaled(pcm::readSample(p, width) * factor[ch]));
            }
        }
    }
}

void normalizeFactors(const ChannelLevels& levels, double targetDb, bool equalLeftRight,
                      double& left, double& right)
{
    const double target = gainFromDb(targetDb);
    const double peakLeft = equalLeftRight ? std::max(levels.left, levels.right) : levels.left;
    const double peakRight = equalLeftRight ? std::max(levels.left, levels.right) : levels.right;
    left = peakLeft > 0.0 ? target / peakLeft : 1.0;
    right = peakRight > 0.0 ? target / peakRight : 1.0;
}

} // namespace tg
