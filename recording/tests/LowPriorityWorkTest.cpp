// Work between takes runs nicer than the thread that asks for it, which keeps its own priority.
#include "recording/LowPriorityWork.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

namespace tg {
namespace {

int niceOf(pid_t thread)
{
    return getpriority(PRIO_PROCESS, id_t(thread));
}

TEST(LowPriorityWork, RunsNicerElsewhereAndPassesItsExceptionOn)
{
    const int caller = niceOf(gettid());
    int worker = caller;
    std::thread::id where;
    runAtLowPriority([&] {
        worker = niceOf(gettid());
        where = std::this_thread::get_id();
    });
    EXPECT_NE(where, std::this_thread::get_id());
    EXPECT_EQ(worker, std::min(19, caller + 10));
    EXPECT_EQ(niceOf(gettid()), caller);
    EXPECT_THROW(runAtLowPriority([] { throw std::runtime_error("search failed"); }),
                 std::runtime_error);
}

} // namespace
} // namespace tg
