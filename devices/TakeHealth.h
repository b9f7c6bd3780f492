// How well the audio thread kept up while a take was recorded.
#pragma once

#include <cstdint>

namespace tg {

// Counted by the callbacks while a take records. Missing frames are the frames the stream's
// clock says went by without reaching the callback (expected - received): a hole in the take.
// An input overflow is the driver's flag that input was thrown away; some hosts (JACK) raise
// it on every client for an xrun anywhere in the graph, whether or not this stream lost
// anything, so when the stream has a clock the clock decides, and the flag only without one.
struct TakeHealth {
    int64_t framesExpected = 0; // by the stream clock, from the take's first block to its end
    int64_t framesReceived = 0; // delivered to the recorder while the take recorded
    int inputOverflows = 0;     // blocks flagged as having lost input
    int outputUnderflows = 0;   // blocks the output could not be fed in time
    bool clocked = false;       // every block came with a time on the stream's clock

    int64_t framesMissing() const
    {
        return framesExpected > framesReceived ? framesExpected - framesReceived : 0;
    }
    bool droppedFrames() const { return framesMissing() > 0 || (!clocked && inputOverflows > 0); }
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
