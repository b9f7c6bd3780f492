// The semi-automatic recording run in a terminal: Enter starts each key's countdown and
// stops its take; after each take the user keeps it, discards it (the same key comes
// again), names the key or asks to prehear it.
#pragma once

#include <atomic>

namespace tg {
class RecordingRun;
class RunClock;
class SkippingRunClock;
} // namespace tg

namespace tg::cli {

struct SemiSession {
    RecordingRun& run; // opened, not started
    const RunClock& clock;
    // Offline bouncing: time moves straight to the run's next timer, and a take is bounced
    // as soon as its countdown starts. Null in real time.
    SkippingRunClock* skipping = nullptr;
    // Nothing is asked: every countdown starts at once and every take is kept.
    bool keepEveryTake = false;
    // Set by a signal handler (Ctrl-C): the run is closed, keeping every finished take.
    const std::atomic<int>* stopSignal = nullptr;
};

// Reads the user's answers from standard input and the run's progress goes to stderr, until
// the run ends. Returns false when it was ended early: `q`, the end of the input or a stop
// signal (the run is then closed, and every take kept so far stays saved).
bool driveSemiAutomatic(const SemiSession& session);

} // namespace tg::cli
