// How well the audio thread kept up while a take was recorded.
#pragma once

#include <cstdint>

namespace tg {

// Counted by the callbacks while a take records. An input overflow means the driver threw
// input away; missing frames are the frames the stream's clock says went by without reaching
// the callback (expected - received). Either way the take has a hole and is not kept.
struct TakeHealth {
    int64_t framesExpected = 0; // by the stream clock, from the take's first block to its end
    int64_t framesReceived = 0; // delivered to the recorder while the take recorded
    int inputOverflows = 0;     // blocks flagged as having lost input
    int outputUnderflows = 0;   // blocks the output could not be fed in time

    int64_t framesMissing() const
    {
        return framesExpected > framesReceived ? framesExpected - framesReceived : 0;
    }
    bool droppedFrames() const { return framesMissing() > 0 || inputOverflows > 0; }
};

// What the driver said about one block: the stream time of its first frame (when the host
// gives one; any origin, as only differences count) and its status flags.
struct BlockStatus {
    bool timed = false;
    double time = 0.0; // seconds
    bool inputOverflow = false;
    bool outputUnderflow = false;
};

} // namespace tg
