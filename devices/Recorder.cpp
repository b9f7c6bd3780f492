// Arming, filling and reading the one-shot record buffer.
#include "devices/Recorder.h"

#include <QMutexLocker>

#include <cstring>
#include <new>

namespace tg {

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
            return 0;
        }
    } else if (!buffer_.empty()) {
        std::memset(buffer_.data(), 0, buffer_.size());
    }
    capacityFrames_ = frames;
    position_ = 0;
    QMutexLocker lock(&flagLock_);
    flag_ = true;
    return 1;
}

bool Recorder::isRecording()
{
    QMutexLocker lock(&flagLock_);
    return flag_;
}

void Recorder::stop()
{
    QMutexLocker lock(&flagLock_);
    flag_ = false;
}

void Recorder::reset()
{
    stop();
    std::vector<uint8_t>().swap(buffer_);
    capacityFrames_ = 0;
    position_ = 0;
}

RecordedTake Recorder::take() const
{
    RecordedTake result;
    result.data = &buffer_;
    result.format = format_;
    result.frames = position_;
    return result;
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

void Recorder::processBlock(const void* input, unsigned long frames, int sourceChannels)
{
    if (sourceChannels == format_.channels || input == nullptr) {
        processBlock(input, frames);
        return;
    }
    if (sourceChannels != 2 || format_.channels != 1) {
        // No layout to take the take's channels from: silence rather than a misread block.
        processBlock(nullptr, frames);
        return;
    }
    flagLock_.lock();
    const bool recording = flag_;
    flagLock_.unlock();
    if (!recording)
        return;
    const int sampleBytes = format_.bits / 8;
    const int64_t room = capacityFrames_ - position_;
    const int64_t count = static_cast<int64_t>(frames) < room ? static_cast<int64_t>(frames) : room;
    const auto* source = static_cast<const uint8_t*>(input);
    uint8_t* dest = buffer_.data() + position_ * sampleBytes;
    for (int64_t i = 0; i < count; ++i) {
        const int64_t first = readStreamSample(source + 2 * i * sampleBytes, format_.bits);
        const int64_t second = readStreamSample(source + (2 * i + 1) * sampleBytes, format_.bits);
        writeImageSample((first + second) / 2, format_.bits, dest + i * sampleBytes);
    }
    position_ += count > 0 ? count : 0;
    if (count < static_cast<int64_t>(frames)) {
        flagLock_.lock();
        flag_ = false;
        flagLock_.unlock();
    }
}

void Recorder::processBlock(const void* input, unsigned long frames)
{
    flagLock_.lock();
    const bool recording = flag_;
    flagLock_.unlock();
    if (!recording)
        return;

    const int64_t frameBytes = bytesPerFrame(format_);
    const int64_t room = capacityFrames_ - position_;
    const int64_t count = static_cast<int64_t>(frames) < room ? static_cast<int64_t>(frames) : room;
    if (count > 0) {
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
        position_ += count;
    }
    if (count < static_cast<int64_t>(frames)) {
        flagLock_.lock();
        flag_ = false;
        flagLock_.unlock();
    }
}

} // namespace tg
