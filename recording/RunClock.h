// The clock a recording run measures its countdown, note and polling times with.
#pragma once

#include <chrono>
#include <cstdint>

namespace tg {

class RunClock {
  public:
    virtual ~RunClock() = default;
    // Milliseconds since any fixed point; never goes backwards.
    virtual int64_t nowMs() const = 0;
};

// The real clock of the front ends.
class SteadyRunClock : public RunClock {
  public:
    int64_t nowMs() const override
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(
                   std::chrono::steady_clock::now().time_since_epoch())
            .count();
    }
};

} // namespace tg
