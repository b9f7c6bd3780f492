// The one-shot recorder: a buffer allocated whole when armed, filled by the audio thread.
#pragma once

#include "devices/AudioStreamConfig.h"

#include <QMutex>

#include <cstdint>
#include <vector>

namespace tg {

// What a finished recording holds: read it only after isRecording() turned false.
struct RecordedTake {
    const std::vector<uint8_t>* data = nullptr; // WAV byte image (8-bit stored unsigned)
    AudioStreamConfig format;                   // the input configuration it was armed with
    int64_t frames = 0;                         // frames written
};

class Recorder {
  public:
    // GUI thread. Arms a take of (int)(rate x seconds) frames in `input`'s format: the
    // buffer is reallocated (zero-filled) only when its byte size changes, the write
    // position goes to 0 and the record flag to 1. A take of 0 frames allocates nothing; its
    // flag drops at the first block. Returns 0 when the buffer cannot be had.
    int arm(const AudioStreamConfig& input, double seconds);

    // Any thread: the record flag, read and cleared under the flag lock.
    bool isRecording();
    void stop();

    // GUI thread, with the streams closed: frees the buffer and drops the flag.
    void reset();

    // GUI thread, after the flag dropped.
    RecordedTake take() const;
    size_t bufferBytes() const { return buffer_.size(); }

    // Audio thread: stores one block of the input stream (its own sample format) at the
    // write position. Null input (the driver had none) records silence. Takes the flag lock
    // only to read and, at the end of the take, to clear the flag; never allocates.
    void processBlock(const void* input, unsigned long frames);
    // Audio thread: the same for a block of `sourceChannels` channels in the take's sample
    // format (the output block that carries the hosted instrument). A stereo block recorded
    // mono keeps the mean of both sides.
    void processBlock(const void* input, unsigned long frames, int sourceChannels);

  private:
    QMutex flagLock_;
    bool flag_ = false; // guarded by flagLock_
    // Written by the audio thread alone while the flag is set.
    std::vector<uint8_t> buffer_;
    int64_t capacityFrames_ = 0;
    int64_t position_ = 0;
    AudioStreamConfig format_;
};

} // namespace tg
