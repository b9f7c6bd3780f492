// Kernel choice, the window score and the multi-threaded scan over candidate blocks.
#include "analysis/LoopScoring.h"

#include "analysis/LoopKernels.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>

namespace tg {

namespace {

using SadFunction = uint64_t (*)(const uint8_t*, const uint8_t*, size_t);

SadFunction sadFor(LoopKernel kernel, bool eightBit)
{
    if (kernel == LoopKernel::Automatic)
        kernel = bestLoopKernel();
    switch (kernel) {
#if defined(TG_LOOPKERNEL_X86)
    case LoopKernel::Avx2:
        if (loopKernelAvailable(LoopKernel::Avx2))
            return eightBit ? loopkernel::sad8Avx2 : loopkernel::sad16Avx2;
        [[fallthrough]];
    case LoopKernel::Sse2:
        return eightBit ? loopkernel::sad8Sse2 : loopkernel::sad16Sse2;
#endif
    default:
        return eightBit ? loopkernel::sad8Scalar : loopkernel::sad16Scalar;
    }
}

// Below this many sample differences a second thread costs more than it saves.
constexpr uint64_t kMinimumWorkPerThread = 1u << 20;

} // namespace

bool loopKernelAvailable(LoopKernel kernel)
{
    switch (kernel) {
    case LoopKernel::Automatic:
    case LoopKernel::Scalar:
        return true;
#if defined(TG_LOOPKERNEL_X86)
    case LoopKernel::Sse2:
        return true;
    case LoopKernel::Avx2:
        return __builtin_cpu_supports("avx2") != 0;
#endif
    default:
        return false;
    }
}

const char* loopKernelName(LoopKernel kernel)
{
    switch (kernel) {
    case LoopKernel::Scalar:
        return "scalar";
    case LoopKernel::Sse2:
        return "SSE2";
    case LoopKernel::Avx2:
        return "AVX2";
    default:
        return "automatic";
    }
}

LoopKernel bestLoopKernel()
{
    if (loopKernelAvailable(LoopKernel::Avx2))
        return LoopKernel::Avx2;
    if (loopKernelAvailable(LoopKernel::Sse2))
        return LoopKernel::Sse2;
    return LoopKernel::Scalar;
}

LoopScorer::LoopScorer(const WaveFormat& format, const uint8_t* data, int64_t frames,
                       LoopKernel kernel)
{
    elementsPerFrame_ = format.nChannels;
    const bool eightBit = format.wBitsPerSample == 8;
    sad_ = sadFor(kernel, eightBit);
    if (eightBit) {
        elementBytes_ = 1;
        scale_ = 128; // deliberately half of the 16-bit range
        samples_ = data;
    } else if (format.wBitsPerSample == 16) {
        elementBytes_ = 2;
        samples_ = data;
    } else {
        // 24-bit samples are compared by their upper two bytes. Picking those out once
        // costs one pass over the data; the scan then reads them like 16-bit audio.
        elementBytes_ = 2;
        const size_t count = static_cast<size_t>(frames) * elementsPerFrame_;
        converted_.resize(count * 2);
        for (size_t i = 0; i < count; ++i) {
            converted_[2 * i] = data[3 * i + 1];
            converted_[2 * i + 1] = data[3 * i + 2];
        }
        samples_ = converted_.data();
    }
}

int16_t LoopScorer::score(int64_t s, int64_t c, int64_t window) const
{
    const size_t frameBytes = elementsPerFrame_ * elementBytes_;
    const uint64_t d = sad_(samples_ + static_cast<size_t>(s) * frameBytes,
                            samples_ + static_cast<size_t>(c) * frameBytes,
                            static_cast<size_t>(window) * elementsPerFrame_) *
                       scale_;
    const uint64_t mean = d / static_cast<uint64_t>(window);
    return static_cast<int16_t>(std::min<uint64_t>(mean, kLoopScoreCap));
}

bool scoreLoopCandidates(const LoopScorer& scorer, int64_t loopStart, int64_t window,
                         const std::vector<int32_t>& candidates, int16_t* scores, int threads,
                         const std::function<bool(size_t scored)>& checkpoint)
{
    const size_t count = candidates.size();
    const size_t blockCount = (count + kLoopCheckpointInterval - 1) / kLoopCheckpointInterval;
    if (threads <= 0)
        threads = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    const uint64_t work = static_cast<uint64_t>(count) * static_cast<uint64_t>(window);
    threads = static_cast<int>(std::min<uint64_t>(
        {static_cast<uint64_t>(threads), std::max<uint64_t>(1, work / kMinimumWorkPerThread),
         std::max<size_t>(1, blockCount)}));

    std::atomic<size_t> nextBlock{0};
    std::atomic<size_t> scored{0};
    std::atomic<bool> cancelled{false};

    // Every thread takes the next block of consecutive candidates until none is left;
    // only the calling thread talks to the progress service.
    auto work_loop = [&](bool caller) {
        for (;;) {
            if (cancelled.load(std::memory_order_relaxed))
                return;
            const size_t block = nextBlock.fetch_add(1, std::memory_order_relaxed);
            if (block >= blockCount)
                return;
            const size_t begin = block * kLoopCheckpointInterval;
            const size_t end = std::min(count, begin + kLoopCheckpointInterval);
            for (size_t i = begin; i < end; ++i)
                scores[i] = scorer.score(loopStart, candidates[i], window);
            const size_t total = scored.fetch_add(end - begin) + (end - begin);
            if (caller && checkpoint && !checkpoint(total))
                cancelled.store(true);
        }
    };

    std::vector<std::thread> workers;
    workers.reserve(static_cast<size_t>(threads - 1));
    for (int t = 1; t < threads; ++t) {
        try {
            workers.emplace_back(work_loop, false);
        } catch (const std::system_error&) {
            break; // no more threads to be had: the ones running share the work
        }
    }
    work_loop(true);
    for (std::thread& worker : workers)
        worker.join();
    return !cancelled.load();
}

} // namespace tg
