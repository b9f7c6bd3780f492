// Heavy work between takes, kept out of the audio threads' way.
#pragma once

#include <functional>

namespace tg {

// Runs `work` on a helper thread of lower scheduling priority and waits for it; an exception
// it throws comes out here. The streams stay open between takes, and where the audio threads
// have no real-time priority (a JACK server or sound server without real-time rights, the
// usual case on a desktop) a loop search at full priority beside them makes them miss their
// periods, and the next take is lost to dropped frames.
void runAtLowPriority(const std::function<void()>& work);

} // namespace tg
