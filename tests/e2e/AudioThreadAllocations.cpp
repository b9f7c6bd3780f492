// Replaces the global allocation functions of the test binary to catch an audio callback
// that allocates: allocation there can block on the allocator's lock and glitch the stream.
#include "tests/e2e/AudioThreadAllocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace tg::test {

namespace {
thread_local bool isAudioThread = false;
std::atomic<bool> anyMarked{false};
std::atomic<long> allocations{0};

void* allocate(std::size_t size)
{
    if (isAudioThread)
        allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}
} // namespace

void markAudioThread()
{
    isAudioThread = true;
    anyMarked.store(true);
}

bool audioThreadMarked()
{
    return anyMarked.load();
}

long audioThreadAllocations()
{
    return allocations.load();
}

} // namespace tg::test

void* operator new(std::size_t size)
{
    return tg::test::allocate(size);
}

void* operator new[](std::size_t size)
{
    return tg::test::allocate(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}
