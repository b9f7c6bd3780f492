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
