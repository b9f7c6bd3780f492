// A single-reader/single-writer byte ring buffer between a producer thread and the audio
// thread: neither side locks or allocates once it is sized.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tg {

class SampleRingBuffer {
  public:
    // Any thread, with neither side running: capacity rounded up to a power of two bytes.
    void resize(size_t bytes);
    size_t capacity() const { return storage_.size(); }

    // Writer side: copies up to `bytes` in, returns how many fitted.
    size_t write(const uint8_t* data, size_t bytes);
    // Reader side: copies up to `bytes` out, returns how many there were.
    size_t read(uint8_t* data, size_t bytes);

    size_t readAvailable() const;
    size_t writeAvailable() const { return capacity() - readAvailable(); }

    // Only while neither side runs (streams stopped): forgets what is held.
    void clear();

  private:
    std::vector<uint8_t> storage_;
    size_t mask_ = 0;
    // Running counts; the difference is what is held. Each is written by one side only.
    std::atomic<size_t> written_{0};
    std::atomic<size_t> readCount_{0};
};

} // namespace tg
