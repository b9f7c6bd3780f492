// The min/max pyramid of a Key-Sample's audio.
#include "shell/editor/WaveOverview.h"

#include "analysis/PcmSamples.h"

#include <algorithm>
#include <cmath>

namespace tg::shell {

namespace {

constexpr MinMax kNothing{1, 0}; // min > max: nothing in the stretch

int16_t toSixteen(int32_t value, int width)
{
    switch (width) {
    case 1:
        return static_cast<int16_t>(value * 256);
    case 2:
        return static_cast<int16_t>(value);
    default:
        return static_cast<int16_t>(value >> 8);
    }
}

void widen(MinMax& range, const MinMax& with)
{
    if (with.min > with.max)
        return;
    if (range.min > range.max) {
        range = with;
        return;
    }
    range.min = std::min(range.min, with.min);
    range.max = std::max(range.max, with.max);
}

} // namespace

void WaveOverview::clear()
{
    format_ = WaveFormat();
    data_.clear();
    levels_.clear();
    frames_ = 0;
    width_ = 0;
}

void WaveOverview::assign(const WaveFormat& format, std::vector<uint8_t> data)
{
    clear();
    if (!pcm::isSupportedFormat(format))
        return;
    format_ = format;
    data_ = std::move(data);
    width_ = pcm::bytesPerSample(format);
    frames_ = static_cast<int64_t>(data_.size() / format.nBlockAlign);
    const int ch = channels();

    // Finest level straight from the samples.
    std::vector<MinMax> finest(static_cast<size_t>((frames_ + kFinestBlock - 1) / kFinestBlock) *
                               ch);
    for (int64_t block = 0; block * kFinestBlock < frames_; ++block) {
        const int64_t end = std::min(frames_, (block + 1) * kFinestBlock);
        for (int c = 0; c < ch; ++c)
            finest[static_cast<size_t>(block * ch + c)] = rawRange(c, block * kFinestBlock, end);
    }
    levels_.push_back(std::move(finest));

    // Each coarser level from the one below, until one block covers everything.
    while (levels_.back().size() > static_cast<size_t>(ch)) {
        const std::vector<MinMax>& below = levels_.back();
        const size_t blocksBelow = below.size() / ch;
        std::vector<MinMax> level(((blocksBelow + kLevelFactor - 1) / kLevelFactor) * ch, kNothing);
        for (size_t b = 0; b < blocksBelow; ++b)
            for (int c = 0; c < ch; ++c)
                widen(level[(b / kLevelFactor) * ch + c], below[b * ch + c]);
        levels_.push_back(std::move(level));
    }
}

MinMax WaveOverview::whole(int channel) const
{
    if (empty() || channel < 0 || channel >= channels())
        return kNothing;
    return levels_.back()[static_cast<size_t>(channel)];
}

int16_t WaveOverview::sample(int64_t frame, int channel) const
{
    const uint8_t* p = data_.data() + frame * format_.nBlockAlign + channel * width_;
    return toSixteen(pcm::readSample(p, width_), width_);
}

MinMax WaveOverview::rawRange(int channel, int64_t begin, int64_t end) const
{
    MinMax range = kNothing;
    for (int64_t f = begin; f < end; ++f) {
        const int16_t v = sample(f, channel);
        widen(range, MinMax{v, v});
    }
    return range;
}

MinMax WaveOverview::levelRange(int level, int channel, int64_t begin, int64_t end) const
{
    int64_t block = kFinestBlock;
    for (int l = 0; l < level; ++l)
        block *= kLevelFactor;
    const std::vector<MinMax>& summaries = levels_[static_cast<size_t>(level)];
    const int ch = channels();
    MinMax range = kNothing;
    // Whole blocks from the summary; the stretch's ragged ends from the level below.
    int64_t first = (begin + block - 1) / block;
    int64_t last = end / block; // exclusive
    if (first >= last) {
        return level == 0 ? rawRange(channel, begin, end)
                          : levelRange(level - 1, channel, begin, end);
    }
    for (int64_t b = first; b < last; ++b)
        widen(range, summaries[static_cast<size_t>(b * ch + channel)]);
    const int64_t headEnd = first * block;
    const int64_t tailBegin = last * block;
    if (begin < headEnd)
        widen(range, level == 0 ? rawRange(channel, begin, headEnd)
                                : levelRange(level - 1, channel, begin, headEnd));
    if (tailBegin < end)
        widen(range, level == 0 ? rawRange(channel, tailBegin, end)
                                : levelRange(level - 1, channel, tailBegin, end));
    return range;
}

void WaveOverview::columns(int channel, double firstFrame, double framesPerColumn, int columns,
                           std::vector<MinMax>& out) const
{
    out.assign(static_cast<size_t>(std::max(columns, 0)), kNothing);
    if (empty() || channel < 0 || channel >= channels() || framesPerColumn <= 0.0)
        return;
    // The coarsest level whose blocks still fit in a column: a few summaries per column.
    int level = -1;
    double block = static_cast<double>(kFinestBlock);
    while (level + 1 < levels() && block <= framesPerColumn) {
        ++level;
        block *= kLevelFactor;
    }
    for (int c = 0; c < columns; ++c) {
        int64_t begin = static_cast<int64_t>(std::floor(firstFrame + c * framesPerColumn));
        int64_t end = static_cast<int64_t>(std::floor(firstFrame + (c + 1) * framesPerColumn));
        end = std::max(end, begin + 1);
        begin = std::max<int64_t>(begin, 0);
        end = std::min(end, frames_);
        if (begin >= end)
            continue;
        out[static_cast<size_t>(c)] =
            level < 0 ? rawRange(channel, begin, end) : levelRange(level, channel, begin, end);
    }
}

} // namespace tg::shell
