// The objects that receive the input peak levels, and the list the audio thread walks.
#pragma once

#include <atomic>

namespace tg {

// Receives the peak of every input block, on the audio thread: hand the values on (a queued
// signal, an atomic) and return; never block or allocate here.
class LevelListener {
  public:
    virtual ~LevelListener() = default;
    virtual void onInputPeak(float first, float second) = 0;
};

// A fixed number of slots written by the GUI thread and read by the audio thread without a
// lock: adding publishes the pointer before the count, so the audio thread sees only
// complete entries, and nothing is allocated while streams run. A removed listener leaves
// its slot empty; remove a listener before destroying it, and while the streams are closed
// if a callback might still be calling it.
class LevelListenerList {
  public:
    static constexpr int kCapacity = 16;

    // GUI thread. False when all slots are taken or the listener is already there.
    bool add(LevelListener* listener)
    {
        int count = count_.load(std::memory_order_relaxed);
        for (int i = 0; i < count; ++i) {
            if (slots_[i].load(std::memory_order_relaxed) == listener)
                return false;
            if (slots_[i].load(std::memory_order_relaxed) == nullptr) {
                slots_[i].store(listener, std::memory_order_release);
                return true;
            }
        }
        if (count == kCapacity)
            return false;
        slots_[count].store(listener, std::memory_order_release);
        count_.store(count + 1, std::memory_order_release);
        return true;
    }

    // GUI thread.
    void remove(LevelListener* listener)
    {
        int count = count_.load(std::memory_order_relaxed);
        for (int i = 0; i < count; ++i)
            if (slots_[i].load(std::memory_order_relaxed) == listener)
                slots_[i].store(nullptr, std::memory_order_release);
    }

    // Audio thread.
    bool empty() const { return count_.load(std::memory_order_acquire) == 0; }

    // Audio thread: calls every listener with the two peaks.
    void notify(float first, float second) const
    {
        int count = count_.load(std::memory_order_acquire);
        for (int i = 0; i < count; ++i)
            if (LevelListener* listener = slots_[i].load(std::memory_order_acquire))
                listener->onInputPeak(first, second);
    }

  private:
    std::atomic<LevelListener*> slots_[kCapacity] = {};
    std::atomic<int> count_{0};
};

} // namespace tg
