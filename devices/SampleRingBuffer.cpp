// The lock-free ring buffer that carries the hosted instrument's audio to the output.
#include "devices/SampleRingBuffer.h"

#include <algorithm>
#include <cstring>

namespace tg {

void SampleRingBuffer::resize(size_t bytes)
{
    size_t size = 1;
    while (size < bytes)
        size <<= 1;
    storage_.assign(size, 0);
    mask_ = size - 1;
    clear();
}

size_t SampleRingBuffer::readAvailable() const
{
    return written_.load(std::memory_order_acquire) - readCount_.load(std::memory_order_acquire);
}

size_t SampleRingBuffer::write(const uint8_t* data, size_t bytes)
{
    if (storage_.empty())
        return 0;
    const size_t head = written_.load(std::memory_order_relaxed);
    const size_t held = head - readCount_.load(std::memory_order_acquire);
    const size_t count = std::min(bytes, storage_.size() - held);
    const size_t start = head & mask_;
    const size_t first = std::min(count, storage_.size() - start);
    std::memcpy(storage_.data() + start, data, first);
    std::memcpy(storage_.data(), data + first, count - first);
    written_.store(head + count, std::memory_order_release);
    return count;
}

size_t SampleRingBuffer::read(uint8_t* data, size_t bytes)
{
    if (storage_.empty())
        return 0;
    const size_t tail = readCount_.load(std::memory_order_relaxed);
    const size_t held = written_.load(std::memory_order_acquire) - tail;
    const size_t count = std::min(bytes, held);
    const size_t start = tail & mask_;
    const size_t first = std::min(count, storage_.size() - start);
    std::memcpy(data, storage_.data() + start, first);
    std::memcpy(data + first, storage_.data(), count - first);
    readCount_.store(tail + count, std::memory_order_release);
    return count;
}

void SampleRingBuffer::clear()
{
    written_.store(0, std::memory_order_release);
    readCount_.store(0, std::memory_order_release);
}

} // namespace tg
