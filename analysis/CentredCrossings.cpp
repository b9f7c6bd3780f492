// Crossings around the local mean: a centred copy of the recording searched by the
// zero-crossing finder.
#include "analysis/CentredCrossings.h"

#include "analysis/PcmSamples.h"
#include "audiofile/ZeroCrossing.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace tg {

namespace {

// Moving average of `values` over [f - half, f + half], cut at both ends of the data.
std::vector<double> boxMean(const std::vector<double>& values, int64_t half)
{
    const int64_t n = static_cast<int64_t>(values.size());
    std::vector<double> prefix(values.size() + 1, 0.0);
    for (int64_t i = 0; i < n; ++i)
        prefix[size_t(i + 1)] = prefix[size_t(i)] + values[size_t(i)];
    std::vector<double> mean(values.size());
    for (int64_t i = 0; i < n; ++i) {
        const int64_t from = std::max<int64_t>(0, i - half);
        const int64_t to = std::min<int64_t>(n, i + half + 1);
        mean[size_t(i)] = (prefix[size_t(to)] - prefix[size_t(from)]) / double(to - from);
    }
    return mean;
}

} // namespace

CentredCrossings::CentredCrossings(const WaveFormat& format, const uint8_t* data, size_t bytes)
    : format_(format)
{
    if (data == nullptr || !pcm::isSupportedFormat(format))
        return;
    // The finder counts bytes in 32 bits; recordings never come near that.
    frames_ = static_cast<int64_t>(std::min<size_t>(bytes, INT32_MAX) / format.nBlockAlign);
    const int width = pcm::bytesPerSample(format);
    const int64_t half = std::max<int64_t>(1, format.nSamplesPerSec / 20);
    centred_.assign(data, data + frames_ * format.nBlockAlign);
    for (int ch = 0; ch < format.nChannels; ++ch) {
        std::vector<double> values(static_cast<size_t>(frames_));
        for (int64_t f = 0; f < frames_; ++f)
            values[size_t(f)] = pcm::sampleAt(format, data, f, ch);
        const std::vector<double> mean = boxMean(boxMean(values, half), half);
        for (int64_t f = 0; f < frames_; ++f) {
            const auto centred =
                static_cast<int32_t>(values[size_t(f)] - std::lround(mean[size_t(f)]));
            pcm::writeSample(centred_.data() + f * format.nBlockAlign + ch * width, width, centred);
        }
    }
}

int64_t CentredCrossings::findOneWay(int64_t position, int direction, int channelRule) const
{
    const int64_t last = frames_ - 1;
    position = std::clamp<int64_t>(position, 0, last);
    const int64_t found = findZeroCrossing(&format_, centred_.data(),
                                           static_cast<int32_t>(frames_ * format_.nBlockAlign),
                                           static_cast<int32_t>(position), direction, channelRule);
    // The finder answers the last frame it reached when it runs off the data; only a frame
    // that is itself at the middle counts as found there.
    const int64_t edge = direction < 0 ? 0 : last;
    if (found == edge) {
        for (int ch = 0; ch < format_.nChannels; ++ch)
            if (pcm::sampleAt(format_, centred_.data(), edge, ch) == 0)
                return edge;
        return -1;
    }
    return found;
}

int64_t CentredCrossings::find(int64_t position, int direction, int channelRule) const
{
    if (frames_ < 1)
        return -1;
    if (direction != 0)
        return findOneWay(position, direction < 0 ? -1 : 1, channelRule);
    const int64_t back = findOneWay(position, -1, channelRule);
    const int64_t forward = findOneWay(position, 1, channelRule);
    if (back < 0 || forward < 0)
        return std::max(back, forward);
    return std::llabs(position - forward) < std::llabs(position - back) ? forward : back;
}

int64_t CentredCrossings::snap(int64_t position, int direction, int channelRule) const
{
    const int64_t found = find(position, direction, channelRule);
    return found < 0 ? position : found;
}

} // namespace tg
