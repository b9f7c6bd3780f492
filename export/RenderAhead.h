// Key-Samples rendered on worker threads ahead of the one thread that writes them, handed over
// strictly in the order the writer asks for them.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tg {

struct ExportedKey;

// Works through items 0..count-1 of a sequence known in advance on `threads` workers, at most
// `window` items beyond the next one the writer will take, so memory stays bounded however
// slow the writer is. The work must touch no state shared with the writer.
class RenderAhead {
  public:
    // Renders item `index` into `out`. Returns 1, or 0 with `message`.
    using Work = std::function<int(size_t index, ExportedKey& out, std::string& message)>;

    RenderAhead(size_t count, int threads, size_t window, Work work);
    // Stops the workers after their current item and waits for them.
    ~RenderAhead();
    RenderAhead(const RenderAhead&) = delete;
    RenderAhead& operator=(const RenderAhead&) = delete;

    // The first item the writer may still take.
    size_t nextToTake() const;
    // Waits for item `index` (>= nextToTake(); items in between are dropped) and hands over
    // its result: the work's return value, `out` and `message`.
    int take(size_t index, ExportedKey& out, std::string& message);

  private:
    struct Slot;
    void workLoop();

    Work work_;
    size_t window_;
    mutable std::mutex mutex_;
    std::condition_variable workAllowed_;
    std::condition_variable itemDone_;
    std::vector<Slot> slots_;
    size_t nextToStart_ = 0;
    size_t nextToTake_ = 0;
    bool stopping_ = false;
    std::vector<std::thread> workers_;
};

} // namespace tg
