// Replaces the global allocation functions of the test binary to catch an audio callback
// that allocates: allocation there can block on the allocator's lock and glitch the stream.
#include "tests/e2e/AudioThreadChecks.h"

#include <atomic>
#include <cstdlib>
#include <new>

#include <dlfcn.h>
#include <pthread.h>

namespace tg::test {

namespace {
thread_local bool isAudioThread = false;
std::atomic<bool> anyMarked{false};
std::atomic<long> allocations{0};
std::atomic<long> mutexLocks{0};

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

long audioThreadMutexLocks()
{
    return mutexLocks.load();
}

} // namespace tg::test

// Every pthread mutex taken on a marked thread is counted, then the real one is taken.
// (QMutex waits on a futex of its own and does not pass through here.)
extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex)
{
    using Lock = int (*)(pthread_mutex_t*);
    static Lock realLock = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
    if (tg::test::isAudioThread)
        tg::test::mutexLocks.fetch_add(1, std::memory_order_relaxed);
    return realLock(mutex);
}

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

// The nothrow forms must come from the same allocator as the deletes above (the model
// allocates its Projects with them).
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return tg::test::allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept
{
    return operator new(size, tag);
}
