// Counts heap allocations and pthread mutex locks on threads marked as audio threads.
#pragma once

namespace tg::test {

// Called from a callback (a level listener runs inside the record callback): from now on
// every allocation on this thread is counted.
void markAudioThread();
bool audioThreadMarked();
long audioThreadAllocations();
// pthread mutexes locked on marked threads.
long audioThreadMutexLocks();

} // namespace tg::test
