// The hand-over between rendering workers and the writer: order, window and skipped items.
#include "export/RenderAhead.h"

#include "export/ExportPipeline.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

namespace {

TEST(RenderAhead, HandsOverInOrderWithinItsWindowAndDropsSkippedItems)
{
    constexpr size_t kWindow = 3;
    std::atomic<int> outsideWindow{0};
    std::atomic<int> started{0};
    std::atomic<tg::RenderAhead*> self{nullptr}; // workers may start before it is known
    tg::RenderAhead::Work work = [&](size_t index, tg::ExportedKey& out, std::string& message) {
        ++started;
        const tg::RenderAhead* ahead = self.load();
        if (index >= (ahead ? ahead->nextToTake() : 0) + kWindow)
            ++outsideWindow;
        out.note = int(index);
        message = index == 7 ? "failed" : "";
        return index == 7 ? 0 : 1;
    };
    auto ahead = std::make_unique<tg::RenderAhead>(20, 3, kWindow, work);
    self = ahead.get();
    std::string message;
    for (size_t index : {0, 1, 2, 6, 7, 12, 13}) {
        tg::ExportedKey key;
        const int ok = ahead->take(index, key, message);
        EXPECT_EQ(key.note, int(index));
        EXPECT_EQ(ok, index == 7 ? 0 : 1);
        EXPECT_EQ(message, index == 7 ? "failed" : "");
    }
    ahead.reset(); // stops with items left
    EXPECT_EQ(outsideWindow, 0);
    EXPECT_LT(started, 20); // skipped stretches were never rendered in full
}

} // namespace
