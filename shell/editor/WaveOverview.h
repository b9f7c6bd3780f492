// A Key-Sample's audio with a pyramid of min/max summaries, so that a view of any zoom reads a
// few values per pixel column instead of every sample: 64 frames per block at the finest
// level, four times as many at each level above.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tg::shell {

// Lowest and highest sample value in a stretch, scaled to -32768 .. 32767.
struct MinMax {
    int16_t min = 0;
    int16_t max = 0;
};

class WaveOverview {
  public:
    static constexpr int64_t kFinestBlock = 64;
    static constexpr int kLevelFactor = 4;

    WaveOverview() = default;
    // Takes the audio (WAV byte image in `format`) and builds the summaries. A format the
    // analysis cannot read leaves the overview empty.
    void assign(const WaveFormat& format, std::vector<uint8_t> data);
    void clear();

    bool empty() const { return frames_ == 0; }
    const WaveFormat& format() const { return format_; }
    const std::vector<uint8_t>& data() const { return data_; }
    int64_t frames() const { return frames_; }
    int channels() const { return format_.nChannels; }
    int levels() const { return static_cast<int>(levels_.size()); }

    // Min/max of a whole channel (min > max when empty).
    MinMax whole(int channel) const;

    // One sample scaled to -32768 .. 32767 (frame and channel inside the audio).
    int16_t sample(int64_t frame, int channel) const;

    // Min/max of channel `channel` for `columns` pixel columns, column c covering frames
    // firstFrame + c * framesPerColumn up to the next column's start. Columns outside the
    // audio get min > max (nothing to draw).
    void columns(int channel, double firstFrame, double framesPerColumn, int columns,
                 std::vector<MinMax>& out) const;

  private:
    MinMax rawRange(int channel, int64_t begin, int64_t end) const;
    MinMax levelRange(int level, int channel, int64_t begin, int64_t end) const;

    WaveFormat format_;
    std::vector<uint8_t> data_;
    int64_t frames_ = 0;
    int width_ = 0; // bytes per sample
    // levels_[l] holds one MinMax per block and channel, interleaved like the frames.
    std::vector<std::vector<MinMax>> levels_;
};

} // namespace tg::shell
