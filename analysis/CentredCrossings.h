// Zero crossings of a recording around its local mean, for snapping loop and note points.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tg {

// A recording's crossings measured around its local mean rather than around 0: a DC offset
// is not signal, and a take whose offset exceeds its swing still crosses its own middle
// once per period. The local mean of each channel is a triangular moving average over
// 200 ms (two 100 ms boxes), smooth enough that a tone's own waveform barely moves it; the
// finder's rules (either or both channels, the frame nearer the middle) then apply to the
// recording minus that mean.
class CentredCrossings {
  public:
    // Copies `data` (`bytes` in `format`) less its local mean; `data` need not outlive this.
    CentredCrossings(const WaveFormat& format, const uint8_t* data, size_t bytes);

    // The crossing found from `position` in `direction` (-1 backward, +1 forward, 0 the
    // nearer of both, backward on a tie) by `channelRule` (kZeroCrossingEitherChannel or
    // kZeroCrossingBothChannels), or -1 when there is none before the data ends.
    int64_t find(int64_t position, int direction, int channelRule) const;

    // The crossing found, or `position` itself when there is none: snapping never moves a
    // point to the end of the data for want of a crossing.
    int64_t snap(int64_t position, int direction, int channelRule) const;

    int64_t frames() const { return frames_; }

  private:
    int64_t findOneWay(int64_t position, int direction, int channelRule) const;

    WaveFormat format_;
    std::vector<uint8_t> centred_;
    int64_t frames_ = 0;
};

} // namespace tg
