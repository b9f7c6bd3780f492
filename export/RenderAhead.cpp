// The hand-over between rendering workers and the writer: one lock around the slot table, a
// condition for "an item may start" and one for "an item is done".
#include "export/RenderAhead.h"

#include "export/ExportPipeline.h"

#include <algorithm>

namespace tg {

struct RenderAhead::Slot {
    bool done = false;
    int ok = 0;
    ExportedKey out;
    std::string message;
};

RenderAhead::RenderAhead(size_t count, int threads, size_t window, Work work)
    : work_(std::move(work)), window_(std::max<size_t>(1, window)), slots_(count)
{
    const int workers = std::max(1, std::min(threads, int(std::min<size_t>(count, 64))));
    workers_.reserve(size_t(workers));
    for (int i = 0; i < workers; ++i)
        workers_.emplace_back([this] { workLoop(); });
}

RenderAhead::~RenderAhead()
{
    {
        std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    workAllowed_.notify_all();
    for (std::thread& worker : workers_)
        worker.join();
}

size_t RenderAhead::nextToTake() const
{
    std::lock_guard<std::mutex> lock(mutex_);
    return nextToTake_;
}

void RenderAhead::workLoop()
{
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        workAllowed_.wait(lock, [this] {
            return stopping_ || nextToStart_ >= slots_.size() ||
                   nextToStart_ < nextToTake_ + window_;
        });
        if (stopping_ || nextToStart_ >= slots_.size())
            return;
        const size_t index = nextToStart_++;
        lock.unlock();
        Slot result;
        result.ok = work_(index, result.out, result.message);
        result.done = true;
        lock.lock();
        // An item the writer skipped meanwhile is not kept.
        if (index >= nextToTake_)
            slots_[index] = std::move(result);
        itemDone_.notify_all();
    }
}

int RenderAhead::take(size_t index, ExportedKey& out, std::string& message)
{
    std::unique_lock<std::mutex> lock(mutex_);
    for (size_t skipped = nextToTake_; skipped < index && skipped < slots_.size(); ++skipped)
        slots_[skipped] = Slot();
    nextToTake_ = std::max(nextToTake_, index);
    // Skipping moved the window: the item may not have started yet.
    nextToStart_ = std::max(nextToStart_, nextToTake_);
    workAllowed_.notify_all();
    itemDone_.wait(lock, [&] { return slots_[index].done; });
    Slot& slot = slots_[index];
    const int ok = slot.ok;
    out = std::move(slot.out);
    message = std::move(slot.message);
    slot = Slot();
    nextToTake_ = index + 1;
    workAllowed_.notify_all();
    return ok;
}

} // namespace tg
