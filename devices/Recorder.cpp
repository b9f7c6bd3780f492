// Arming, filling and reading the one-shot record buffer, and the lock-free hand-over of the
// buffer between the GUI thread and the audio thread.
#include "devices/Recorder.h"

#include <cmath>
#include <cstring>
#include <new>
#include <thread>

namespace tg {

namespace {
// A stall this long would have raised the driver's flags; a clock reading that far ahead is
// a broken reading.
constexpr int64_t kClockJumpSeconds = 10;
} // namespace

int Recorder::arm(const AudioStreamConfig& input, double seconds)
{
    stop();
    format_ = input;
    const float exactFrames = static_cast<float>(input.sampleRate) * static_cast<float>(seconds);
    int64_t frames = exactFrames > 0.0f ? static_cast<int64_t>(exactFrames) : 0;
    int64_t frameBytes = bytesPerFrame(input);
    if (frameBytes <= 0)
        frames = 0;
    const size_t bytes = static_cast<size_t>(frames * frameBytes);
    if (bytes != buffer_.size()) {
        std::vector<uint8_t>().swap(buffer_);
        try {
            buffer_.assign(bytes, 0);
        } catch (const std::bad_alloc&) {
            capacityFrames_ = 0;
            state_.store(kIdle, std::memory_order_release);
            return 0;
        }
    } else if (!buffer_.empty()) {
        std::memset(buffer_.data(), 0, buffer_.size());
    }
    capacityFrames_ = frames;
    position_ = 0;
    timedFromStart_ = false;
    health_ = TakeHealth{};
    outputUnderflows_.store(0, std::memory_order_relaxed);
    // Publishes everything above to the audio thread, which reads it after its claim.
    state_.store(kArmed, std::memory_order_release);
    return 1;
}

bool Recorder::isRecording() const
{
    const int state = state_.load(std::memory_order_acquire);
    return state == kArmed || state == kWriting || state == kStopRequested;
}

void Recorder::stop()
{
    for (;;) {
        int state = state_.load(std::memory_order_acquire);
        switch (state) {
        case kArmed:
            // No block is being written: the take ends here.
            if (state_.compare_exchange_weak(state, kDone, std::memory_order_acq_rel))
                return;
            break;
        case kWriting:
            // A block is being written: ask it to end the take when it is through.
            state_.compare_exchange_weak(state, kStopRequested, std::memory_order_acq_rel);
            break;
        case kStopRequested:
            // The block in progress acknowledges within its own (short, non-blocking) work.
            std::this_thread::yield();
            break;
        default:
            return;
        }
    }
}

void Recorder::reset()
{
    stop();
    std::vector<uint8_t>().swap(buffer_);
    capacityFrames_ = 0;
    position_ = 0;
    health_ = TakeHealth{};
    state_.store(kIdle, std::memory_order_release);
}

RecordedTake Recorder::take()
{
    stop();
    RecordedTake result;
    result.data = &buffer_;
    result.format = format_;
    result.frames = position_;
    result.health = health_;
    result.health.outputUnderflows = outputUnderflows_.load(std::memory_order_relaxed);
    return result;
}

bool Recorder::beginBlock()
{
    int expected = kArmed;
    return state_.compare_exchange_strong(expected, kWriting, std::memory_order_acquire,
                                          std::memory_order_relaxed);
}

void Recorder::endBlock(bool full)
{
    if (full) {
        state_.store(kDone, std::memory_order_release);
        return;
    }
    int expected = kWriting;
    if (!state_.compare_exchange_strong(expected, kArmed, std::memory_order_release,
                                        std::memory_order_relaxed))
        state_.store(kDone, std::memory_order_release); // acknowledges the stop request
}

void Recorder::countBlock(unsigned long frames, const BlockStatus& status)
{
    if (status.inputOverflow)
        ++health_.inputOverflows;
    if (status.outputUnderflow)
        outputUnderflows_.fetch_add(1, std::memory_order_relaxed);
    const int64_t before = position_;
    int64_t missing = health_.framesExpected - health_.framesReceived;
    if (before == 0) {
        timedFromStart_ = status.timed;
        firstBlockTime_ = status.time;
    } else if (!status.timed) {
        timedFromStart_ = false;
    } else if (timedFromStart_) {
        // Frames the clock says went by before this block, against those that arrived. Hosts
        // read their clock when the callback runs, anywhere within its period (JACK's
        // estimate runs from the period's start), so a reading is late by up to a block and
        // never early; right after an xrun JACK restarts that estimate, and one reading can be
        // late by nearly two blocks. The origin follows the earliest reading seen, and a hole
        // counts only once it spans two whole blocks: a late reading alone never makes one.
        const double rate = double(format_.sampleRate);
        const double elapsed = (status.time - firstBlockTime_) * rate;
        int64_t deficit = std::isfinite(elapsed) ? std::llround(elapsed) - before : 0;
        if (deficit < 0) {
            firstBlockTime_ += double(deficit) / rate;
            deficit = 0;
        }
        if (!std::isfinite(elapsed) || deficit > int64_t(rate) * kClockJumpSeconds) {
            // Seconds gone in one step: not a hole but a clock that jumped (JACK's estimate
            // can after an xrun). The clock no longer judges this take; the driver's overflow
            // flags do.
            timedFromStart_ = false;
        } else if (deficit >= 2 * int64_t(frames) && deficit > missing) {
            missing = deficit;
        }
    }
    const int64_t room = capacityFrames_ - before;
    const int64_t taken = int64_t(frames) < room ? int64_t(frames) : (room > 0 ? room : 0);
    health_.framesReceived = before + taken;
    health_.framesExpected = health_.framesReceived + missing;
    health_.clocked = timedFromStart_;
}

void Recorder::noteOutputStatus(const BlockStatus& status)
{
    if (status.outputUnderflow && isRecording())
        outputUnderflows_.fetch_add(1, std::memory_order_relaxed);
}

namespace {

// One sample of the stream's format (8-bit signed) as a signed integer, and back into the
// WAV byte image (8-bit unsigned).
int64_t readStreamSample(const uint8_t* at, int bits)
{
    switch (bits) {
    case 8:
        return int8_t(at[0]);
    case 24:
        return int32_t(uint32_t(at[0]) << 8 | uint32_t(at[1]) << 16 | uint32_t(at[2]) << 24) >> 8;
    case 32:
        return int32_t(uint32_t(at[0]) | uint32_t(at[1]) << 8 | uint32_t(at[2]) << 16 |
                       uint32_t(at[3]) << 24);
    default:
        return int16_t(uint16_t(at[0] | at[1] << 8));
    }
}

void writeImageSample(int64_t value, int bits, uint8_t* at)
{
    if (bits == 8) {
        at[0] = uint8_t(value + 128);
        return;
    }
    const int bytes = bits / 8;
    for (int i = 0; i < bytes; ++i)
        at[i] = uint8_t(uint64_t(value) >> (8 * i));
}

} // namespace

void Recorder::writeFrames(const void* input, int64_t count)
{
    const int64_t frameBytes = bytesPerFrame(format_);
    uint8_t* dest = buffer_.data() + position_ * frameBytes;
    const size_t bytes = static_cast<size_t>(count * frameBytes);
    if (format_.bits == 8) {
        // The stream delivers 8-bit samples signed; the WAV image keeps them unsigned.
        const auto* source = static_cast<const uint8_t*>(input);
        for (size_t i = 0; i < bytes; ++i)
            dest[i] = source != nullptr ? uint8_t(source[i] ^ 0x80u) : uint8_t(0x80);
    } else if (input != nullptr) {
        std::memcpy(dest, input, bytes);
    } else {
        std::memset(dest, 0, bytes);
    }
}

void Recorder::writeMixedDown(const void* input, int64_t count)
{
    const int sampleBytes = format_.bits / 8;
    const auto* source = static_cast<const uint8_t*>(input);
    uint8_t* dest = buffer_.data() + position_ * sampleBytes;
    for (int64_t i = 0; i < count; ++i) {
        const int64_t first = readStreamSample(source + 2 * i * sampleBytes, format_.bits);
        const int64_t second = readStreamSample(source + (2 * i + 1) * sampleBytes, format_.bits);
        writeImageSample((first + second) / 2, format_.bits, dest + i * sampleBytes);
    }
}

void Recorder::writePicked(const void* input, int64_t count, const InputChannelMap& map)
{
    const int sampleBytes = format_.bits / 8;
    const int takeChannels = format_.channels;
    const auto* source = static_cast<const uint8_t*>(input);
    uint8_t* dest = buffer_.data() + position_ * takeChannels * sampleBytes;
    for (int64_t frame = 0; frame < count; ++frame) {
        const uint8_t* from = source + frame * map.streamChannels * sampleBytes;
        for (int channel = 0; channel < takeChannels; ++channel, dest += sampleBytes) {
            std::memcpy(dest, from + map.source[channel] * sampleBytes, size_t(sampleBytes));
            if (format_.bits == 8) // the stream's 8-bit samples are signed, the image's not
                dest[0] ^= 0x80u;
        }
    }
}

template <typename Write>
void Recorder::recordBlock(unsigned long frames, const BlockStatus& status, Write write)
{
    if (!beginBlock())
        return;
    countBlock(frames, status);
    const int64_t count = health_.framesReceived - position_;
    if (count > 0) {
        write(count);
        position_ += count;
    }
    endBlock(count < int64_t(frames));
}

void Recorder::processBlock(const void* input, unsigned long frames, const InputChannelMap& map,
                            const BlockStatus& status)
{
    recordBlock(frames, status, [&](int64_t count) {
        if (input == nullptr || map.identity())
            writeFrames(input, count);
        else if (map.takeChannels == format_.channels && format_.channels <= 2)
            writePicked(input, count, map);
        else // a map for another format: silence rather than a misread block
            writeFrames(nullptr, count);
    });
}

void Recorder::processBlock(const void* input, unsigned long frames, int sourceChannels,
                            const BlockStatus& status)
{
    recordBlock(frames, status, [&](int64_t count) {
        if (sourceChannels == 0 || sourceChannels == format_.channels || input == nullptr)
            writeFrames(input, count);
        else if (sourceChannels == 2 && format_.channels == 1)
            writeMixedDown(input, count);
        else // no layout to take the take's channels from: silence rather than a misread block
            writeFrames(nullptr, count);
    });
}

void Recorder::processBlock(const void* input, unsigned long frames, const BlockStatus& status)
{
    // The take's format is read only once the block owns it: 0 channels stands for its own.
    processBlock(input, frames, 0, status);
}

} // namespace tg
