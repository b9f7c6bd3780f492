// Key-Sample playback: the play list of note, loop and release parts, and the output side
// of the audio callback that plays it (or the hosted instrument's ring buffer).
#pragma once

#include "audiofile/WaveFormat.h"
#include "devices/AudioStreamConfig.h"
#include "devices/SampleRingBuffer.h"

#include <QRecursiveMutex>

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// One part of a Key-Sample, already in the output stream's format.
struct PlayItem {
    AudioStreamConfig format;  // the output stream's configuration; data is in this format
    int64_t frames = 0;        // bytes / (bits / 8) / channels
    std::vector<uint8_t> data; // the part's bytes, WAV byte image
    int64_t position = 0;      // current frame within the item
    float ratio = 1.0f;        // source sample rate / output sample rate
    uint8_t repeat = 0;        // 1 for the loop part: wraps to its start at its end
};

// Thread rules: the play list is filled on the GUI thread while nothing plays, and read and
// advanced only by renderBlock() on the audio thread while it plays. The flags are atomics
// written by one side and read by the other. Nothing here allocates or locks on the audio
// thread.
class Player {
  public:
    static constexpr int kMaxItems = 3;

    // GUI thread. Stops what plays, splits the sample into note, loop and release parts,
    // converts them to `output`'s format when it differs, and starts at `startFrame` (a
    // frame of the sample, in the sample's own rate). Returns 1 also when there is nothing
    // to play, 0 with `msg` filled when memory or the conversion fails. `loopStart` and
    // `loopEnd` are frames; the loop is the frames from loopStart up to (not including)
    // loopEnd, cut to the frames `noteBytes` holds; loopEnd <= loopStart means no loop.
    int playSample(const AudioStreamConfig& output, const WaveFormat& format, const uint8_t* data,
                   size_t noteBytes, int32_t loopStart, int32_t loopEnd, const uint8_t* releaseData,
                   size_t releaseBytes, std::string& msg, int64_t startFrame);

    // GUI thread, nothing playing. Appends an item at position 0; refuses (0) an item of
    // zero frames, a fourth item, or one whose bytes are not whole frames of its format.
    int addPlayItem(PlayItem item);

    // GUI thread. Makes the first item whose running total of frames (output frames, the
    // items' own unit) exceeds `frame` current, at the remainder; later items restart at 0.
    // Sets playing, clears stop-requested and finished. 0 when the frame lies beyond the list.
    int setPlayPosition(int64_t frame);

    // GUI thread. The audio thread fades the next block out and stops.
    void requestStop();
    // GUI thread: the key went up. With a release part, the repeating loop plays to its end
    // and hands on to the release (a note part still playing skips the loop); without one,
    // the key release is a stop request, as a sampler would cut a looped note with no tail.
    void releaseKey();
    // GUI thread: stops (waiting for the fade) and empties the list.
    void clear();

    bool isPlaying() const { return playing_.load(std::memory_order_acquire) != 0; }
    // GUI thread: how many times playing has been started, so that a caller can tell
    // whether what plays is still what it started.
    uint64_t startCount() const { return startCount_; }
    bool isFinished() const { return finished_.load(std::memory_order_acquire) != 0; }
    int itemCount() const { return itemCount_; }
    const PlayItem& item(int index) const { return items_[index]; }

    // Any thread: the play cursor as a frame of the source sample: output frames played
    // from the start of the list, times the items' ratio (source rate / output rate).
    int64_t cursorFrame() const;

    // Set by the engine: true while an output callback can run. When false, stop requests
    // take effect at once instead of waiting for a fade that no callback would play.
    void setOutputRunning(bool running) { outputRunning_.store(running); }

    // Hosted-instrument mode: the output plays the ring buffer instead of the play list.
    void setPluginMode(bool on) { pluginMode_.store(on ? 1 : 0, std::memory_order_release); }
    bool pluginMode() const { return pluginMode_.load(std::memory_order_acquire) != 0; }
    // Producer side (the instrument's thread): bytes in the output format; returns the
    // bytes taken. Guarded by the recursive ring lock against clearing, never against the
    // audio thread, which reads without locking.
    size_t writePluginAudio(const uint8_t* data, size_t bytes);
    // Producer side: bytes waiting for the output, i.e. how far the instrument is ahead.
    size_t pluginAudioHeld() const { return ring_.readAvailable(); }
    size_t pluginRingCapacity() const { return ring_.capacity(); }
    // With the streams stopped: sizes (bytes) or empties the ring buffer.
    void resizePluginRing(size_t bytes);
    void clearPluginRing();

    // Audio thread: fills `frames` frames of `out` in `format` (WAV byte image: 8-bit
    // unsigned) from the ring buffer or the play list, fading the block out on a stop.
    void renderBlock(uint8_t* out, unsigned long frames, const AudioStreamConfig& format);

  private:
    void halt();
    void advanceItem();
    int64_t framesBefore(int index) const;

    PlayItem items_[kMaxItems];
    int itemCount_ = 0;
    uint64_t startCount_ = 0; // GUI thread
    int current_ = 0;         // audio thread while playing
    int next_ = 1;            // the item that follows the current one
    std::atomic<uint8_t> playing_{0};
    std::atomic<uint8_t> stopRequested_{0};
    std::atomic<uint8_t> finished_{0};
    std::atomic<uint8_t> releaseRequested_{0};
    std::atomic<uint8_t> pluginMode_{0};
    std::atomic<bool> outputRunning_{false};
    std::atomic<int64_t> cursorOutputFrames_{0};
    std::atomic<float> cursorRatio_{1.0f};
    SampleRingBuffer ring_;
    QRecursiveMutex ringLock_;
};

// Multiplies a block by a linear ramp from 1 down to 0 over its frames; 24-bit samples are
// scaled as the top bytes of a 32-bit value, 8-bit ones around their 128 centre.
void fadeOutBlock(uint8_t* data, unsigned long frames, int channels, int bits);

} // namespace tg
