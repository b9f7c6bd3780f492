// The play list and the output callback's half that plays it.
#include "devices/Player.h"

#include "core/Message.h"
#include "devices/SampleConversion.h"

#include <QMutexLocker>

#include <chrono>
#include <cstring>
#include <new>
#include <thread>

namespace tg {

namespace {

// Longest wait for the audio thread to play the fade-out block before the list is reused.
// A stalled server must not hang the GUI; after this the callback is assumed gone.
constexpr auto kStopWaitLimit = std::chrono::seconds(2);

uint8_t silenceByte(int bits)
{
    return bits == 8 ? 0x80 : 0x00;
}

// Copies `bytes` from `source` into a fresh buffer; false when memory cannot be had.
bool copyPart(const uint8_t* source, size_t bytes, std::vector<uint8_t>& part)
{
    try {
        part.assign(source, source + bytes);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

} // namespace

void fadeOutBlock(uint8_t* data, unsigned long frames, int channels, int bits)
{
    const int sampleBytes = bits / 8;
    for (unsigned long frame = 0; frame < frames; ++frame) {
        const double gain = frames > 1 ? double(frames - 1 - frame) / double(frames - 1) : 0.0;
        uint8_t* sample = data + frame * size_t(channels) * sampleBytes;
        for (int channel = 0; channel < channels; ++channel, sample += sampleBytes) {
            switch (bits) {
            case 8:
                sample[0] = uint8_t(128 + int(double(int(sample[0]) - 128) * gain));
                break;
            case 16: {
                int16_t value;
                std::memcpy(&value, sample, 2);
                value = int16_t(double(value) * gain);
                std::memcpy(sample, &value, 2);
                break;
            }
            case 24: {
                int32_t value = int32_t((uint32_t(sample[0]) << 8) | (uint32_t(sample[1]) << 16) |
                                        (uint32_t(sample[2]) << 24));
                value = int32_t(double(value) * gain);
                sample[0] = uint8_t(uint32_t(value) >> 8);
                sample[1] = uint8_t(uint32_t(value) >> 16);
                sample[2] = uint8_t(uint32_t(value) >> 24);
                break;
            }
            case 32: {
                int32_t value;
                std::memcpy(&value, sample, 4);
                value = int32_t(double(value) * gain);
                std::memcpy(sample, &value, 4);
                break;
            }
            default:
                break;
            }
        }
    }
}

void Player::halt()
{
    if (playing_.load(std::memory_order_acquire) && outputRunning_.load()) {
        stopRequested_.store(1, std::memory_order_release);
        const auto deadline = std::chrono::steady_clock::now() + kStopWaitLimit;
        while (playing_.load(std::memory_order_acquire) && outputRunning_.load() &&
               std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    playing_.store(0, std::memory_order_release);
    stopRequested_.store(0, std::memory_order_release);
    releaseRequested_.store(0, std::memory_order_release);
}

void Player::clear()
{
    halt();
    for (PlayItem& item : items_)
        item = PlayItem();
    itemCount_ = 0;
    current_ = 0;
    next_ = 1;
    finished_.store(0);
    cursorOutputFrames_.store(0);
    cursorRatio_.store(1.0f);
}

void Player::requestStop()
{
    if (outputRunning_.load())
        stopRequested_.store(1, std::memory_order_release);
    else
        playing_.store(0, std::memory_order_release);
}

void Player::releaseKey()
{
    bool hasRelease = false;
    for (int i = 0; i + 1 < itemCount_; ++i)
        if (items_[i].repeat)
            hasRelease = true;
    if (hasRelease)
        releaseRequested_.store(1, std::memory_order_release);
    else
        requestStop();
}

int Player::addPlayItem(PlayItem item)
{
    if (isPlaying() || itemCount_ >= kMaxItems)
        return 0;
    const int32_t frameBytes = bytesPerFrame(item.format);
    if (frameBytes <= 0 || item.data.size() % size_t(frameBytes) != 0)
        return 0;
    item.frames = int64_t(item.data.size() / size_t(frameBytes));
    if (item.frames <= 0)
        return 0;
    item.position = 0;
    items_[itemCount_++] = std::move(item);
    return 1;
}

int64_t Player::framesBefore(int index) const
{
    int64_t total = 0;
    for (int i = 0; i < index && i < itemCount_; ++i)
        total += items_[i].frames;
    return total;
}

int Player::setPlayPosition(int64_t frame)
{
    halt();
    if (frame < 0)
        return 0;
    int64_t total = 0;
    for (int i = 0; i < itemCount_; ++i) {
        if (total + items_[i].frames > frame) {
            current_ = i;
            next_ = i + 1;
            items_[i].position = frame - total;
            for (int later = i + 1; later < itemCount_; ++later)
                items_[later].position = 0;
            cursorOutputFrames_.store(frame);
            cursorRatio_.store(items_[i].ratio);
            finished_.store(0, std::memory_order_release);
            stopRequested_.store(0, std::memory_order_release);
            releaseRequested_.store(0, std::memory_order_release);
            ++startCount_;
            // Published last: the audio thread reads the list only after it sees this.
            playing_.store(1, std::memory_order_release);
            return 1;
        }
        total += items_[i].frames;
    }
    return 0;
}

int64_t Player::cursorFrame() const
{
    return int64_t(double(cursorOutputFrames_.load()) * double(cursorRatio_.load()));
}

int Player::playSample(const AudioStreamConfig& output, const WaveFormat& format,
                       const uint8_t* data, size_t noteBytes, int32_t loopStart, int32_t loopEnd,
                       const uint8_t* releaseData, size_t releaseBytes, std::string& msg,
                       int64_t startFrame)
{
    clear();
    if (data == nullptr)
        noteBytes = 0;
    if (releaseData == nullptr)
        releaseBytes = 0;
    const size_t blockAlign = format.nBlockAlign;
    if (blockAlign == 0)
        return 1; // an empty format carries no frames: nothing to play

    // Whole frames only, and the loop cut to the frames the note data really holds.
    noteBytes -= noteBytes % blockAlign;
    releaseBytes -= releaseBytes % blockAlign;
    const int64_t noteFrames = int64_t(noteBytes / blockAlign);
    int64_t loopFrom = loopStart;
    int64_t loopTo = loopEnd < noteFrames ? loopEnd : noteFrames;
    size_t notePartBytes = noteBytes;
    size_t loopPartBytes = 0;
    if (loopFrom >= 0 && loopTo > loopFrom) {
        notePartBytes = size_t(loopFrom) * blockAlign;
        loopPartBytes = size_t(loopTo - loopFrom) * blockAlign;
    }

    std::vector<uint8_t> parts[kMaxItems];
    auto failAll = [&](const char* text) {
        for (std::vector<uint8_t>& part : parts)
            std::vector<uint8_t>().swap(part);
        return setMessage(msg, "%s", text);
    };
    if (notePartBytes > 0 && !copyPart(data, notePartBytes, parts[0]))
        return failAll("TGaudio_playSample(): unable to allocate memory for the note audio buffer");
    if (loopPartBytes > 0 && !copyPart(data + notePartBytes, loopPartBytes, parts[1]))
        return failAll("TGaudio_playSample(): unable to allocate memory for the loop audio buffer");
    if (releaseBytes > 0 && !copyPart(releaseData, releaseBytes, parts[2]))
        return failAll(
            "TGaudio_playSample(): unable to allocate memory for the release audio buffer");

    float ratio = 1.0f;
    if (output.channels != format.nChannels ||
        output.sampleRate != int32_t(format.nSamplesPerSec) ||
        output.bits != format.wBitsPerSample) {
        const WaveFormat target = waveFormatOf(output);
        for (std::vector<uint8_t>& part : parts) {
            if (part.empty())
                continue;
            std::string converterMessage;
            if (!convertForPlayback(part, format, target, converterMessage))
                return failAll(converterMessage.c_str());
        }
        if (output.sampleRate > 0)
            ratio = float(double(format.nSamplesPerSec) / double(output.sampleRate));
    }

    for (int i = 0; i < kMaxItems; ++i) {
        if (parts[i].empty())
            continue;
        PlayItem item;
        item.format = output;
        item.data = std::move(parts[i]);
        item.ratio = ratio;
        item.repeat = i == 1 ? 1 : 0;
        addPlayItem(std::move(item));
    }
    if (itemCount_ == 0) {
        requestStop();
        return 1;
    }
    setPlayPosition(int64_t(double(startFrame) / double(ratio)));
    return 1;
}

void Player::advanceItem()
{
    int next = next_;
    // After a key release the loop is skipped when a release part follows it.
    if (releaseRequested_.load(std::memory_order_acquire) && next < itemCount_ &&
        items_[next].repeat && next + 1 < itemCount_)
        ++next;
    current_ = next;
    next_ = next + 1;
    if (current_ < itemCount_)
        items_[current_].position = 0;
}

void Player::renderBlock(uint8_t* out, unsigned long frames, const AudioStreamConfig& format)
{
    const size_t frameBytes = size_t(bytesPerFrame(format));
    const size_t blockBytes = frames * frameBytes;
    const uint8_t silence = silenceByte(format.bits);

    if (pluginMode()) {
        const size_t got = ring_.read(out, blockBytes);
        std::memset(out + got, silence, blockBytes - got);
        return;
    }
    if (!playing_.load(std::memory_order_acquire)) {
        std::memset(out, silence, blockBytes);
        return;
    }

    size_t done = 0; // frames
    while (done < frames) {
        if (current_ >= itemCount_) {
            std::memset(out + done * frameBytes, silence, (frames - done) * frameBytes);
            finished_.store(1, std::memory_order_release);
            break;
        }
        PlayItem& item = items_[current_];
        const int64_t left = item.frames - item.position;
        const size_t take = size_t(left) < frames - done ? size_t(left) : frames - done;
        std::memcpy(out + done * frameBytes, item.data.data() + size_t(item.position) * frameBytes,
                    take * frameBytes);
        item.position += int64_t(take);
        done += take;
        if (item.position >= item.frames) {
            const bool leaveLoop =
                releaseRequested_.load(std::memory_order_acquire) && current_ + 1 < itemCount_;
            if (item.repeat && !leaveLoop)
                item.position %= item.frames;
            else
                advanceItem();
        }
    }
    if (current_ < itemCount_)
        cursorOutputFrames_.store(framesBefore(current_) + items_[current_].position);

    if (stopRequested_.load(std::memory_order_acquire)) {
        fadeOutBlock(out, frames, format.channels, format.bits);
        stopRequested_.store(0, std::memory_order_release);
        playing_.store(0, std::memory_order_release);
    } else if (finished_.load(std::memory_order_acquire)) {
        playing_.store(0, std::memory_order_release);
    }
}

size_t Player::writePluginAudio(const uint8_t* data, size_t bytes)
{
    QMutexLocker lock(&ringLock_);
    return ring_.write(data, bytes);
}

void Player::resizePluginRing(size_t bytes)
{
    QMutexLocker lock(&ringLock_);
    ring_.resize(bytes);
}

void Player::clearPluginRing()
{
    QMutexLocker lock(&ringLock_);
    ring_.clear();
}

} // namespace tg
