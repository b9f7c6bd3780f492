// The one-shot recorder: a buffer allocated whole when armed, filled by the audio thread.
#pragma once

#include "devices/AudioStreamConfig.h"
#include "devices/InputChannelMap.h"
#include "devices/TakeHealth.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tg {

// What a finished recording holds.
struct RecordedTake {
    const std::vector<uint8_t>* data = nullptr; // WAV byte image (8-bit stored unsigned)
    AudioStreamConfig format;                   // the input configuration it was armed with
    int64_t frames = 0;                         // frames written
    TakeHealth health;
};

// Thread rules. The buffer, its write position and the take's format belong to one thread at
// a time, handed over through one atomic state and never under a lock:
// - the GUI thread (arm, stop, reset, take) owns them whenever no take records;
// - the audio thread owns them for the length of one block, which it claims at the block's
//   start (armed -> writing) and gives back at its end (writing -> armed, or done when the
//   take is full or a stop was asked for meanwhile).
// stop() takes an armed take straight to done; when a block is being written it asks for the
// stop and waits for that block to acknowledge it, which takes at most one block's work. So
// once stop() returned, or isRecording() was seen false, the callback neither reads nor
// writes the buffer again until the next arm(), and arm() and reset() may free it.
class Recorder {
  public:
    Recorder() = default;
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    // GUI thread. Stops a take in progress, then arms one of (int)(rate x seconds) frames in
    // `input`'s format: the buffer is reallocated (zero-filled) only when its byte size
    // changes, the write position and the health counts go to 0. A take of 0 frames
    // allocates nothing and ends at the first block. Returns 0 when the buffer cannot be had.
    int arm(const AudioStreamConfig& input, double seconds);

    // Any thread.
    bool isRecording() const;
    // GUI thread: ends the take; returns once no block is being written into it.
    void stop();

    // GUI thread: stops, frees the buffer and forgets the take.
    void reset();

    // GUI thread: the take so far. A take that still records is stopped first, so the buffer
    // is never read while a block is being written.
    RecordedTake take();
    size_t bufferBytes() const { return buffer_.size(); }

    // Audio thread: stores one block of the input stream (its own sample format) at the
    // write position. Null input (the driver had none) records silence. Never allocates,
    // locks or waits.
    void processBlock(const void* input, unsigned long frames, const BlockStatus& status = {});
    // Audio thread: the same for a block of `sourceChannels` channels in the take's sample
    // format (the output block that carries the hosted instrument). A stereo block recorded
    // mono keeps the mean of both sides.
    void processBlock(const void* input, unsigned long frames, int sourceChannels,
                      const BlockStatus& status = {});
    // Audio thread: the same for a block of a stream that opened more device channels than
    // the take keeps; `map` says which ones (worked out when the stream opened).
    void processBlock(const void* input, unsigned long frames, const InputChannelMap& map,
                      const BlockStatus& status = {});
    // Audio thread of an output stream: counts an output underflow against the take in
    // progress (an xrun seen by the output side only).
    void noteOutputStatus(const BlockStatus& status);

  private:
    enum State : int { kIdle, kArmed, kWriting, kStopRequested, kDone };

    // Audio thread: claims the buffer for one block, or false when no take records.
    bool beginBlock();
    // Audio thread: counts the block against the take's health (frames it carries, its
    // flags, and the frames the stream clock says went by before it).
    void countBlock(unsigned long frames, const BlockStatus& status);
    // Audio thread: hands the buffer back; `full` ends the take.
    void endBlock(bool full);
    // Audio thread: one block from claiming the buffer to handing it back; `write(count)`
    // stores the block's first `count` frames (those the take still has room for).
    template <typename Write>
    void recordBlock(unsigned long frames, const BlockStatus& status, Write write);
    void writeFrames(const void* input, int64_t count);
    void writeMixedDown(const void* input, int64_t count);
    void writePicked(const void* input, int64_t count, const InputChannelMap& map);

    std::atomic<int> state_{kIdle};
    // Owned as the class comment says.
    std::vector<uint8_t> buffer_;
    int64_t capacityFrames_ = 0;
    int64_t position_ = 0;
    AudioStreamConfig format_;
    bool timedFromStart_ = false; // every block of the take so far came with a time
    double firstBlockTime_ = 0.0; // the clock at the take's first frame, by the earliest reading
    TakeHealth health_;
    // Counted by an output stream's thread, which never owns the buffer.
    std::atomic<int> outputUnderflows_{0};
};

} // namespace tg
