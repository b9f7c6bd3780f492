#include "recording/LowPriorityWork.h"

#include <cerrno>
#include <exception>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

namespace tg {

namespace {
// Ten steps nicer: the search still gets the CPU the audio threads leave, about a tenth of a
// core's share when they compete for it.
constexpr int kNicer = 10;
} // namespace

void runAtLowPriority(const std::function<void()>& work)
{
    std::exception_ptr failure;
    std::thread helper([&] {
        // On Linux a thread has its own nice value, set through its thread id; where that is
        // refused the work simply runs at the usual priority.
        const id_t self = id_t(gettid());
        errno = 0;
        const int nice = getpriority(PRIO_PROCESS, self);
        if (errno == 0)
            setpriority(PRIO_PROCESS, self, nice + kNicer);
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
    });
    helper.join();
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace tg
