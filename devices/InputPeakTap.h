// A level listener that keeps the highest input peak until a reader takes it.
#pragma once

#include "devices/LevelListeners.h"

#include <atomic>

namespace tg {

// The audio thread raises the two stored peaks with a compare-and-swap (no lock, no
// allocation); the reader (a GUI timer, the CLI's loop) takes them and starts over from 0.
// Peaks between two reads are thus never lost, however slowly the reader polls.
class InputPeakTap : public LevelListener {
  public:
    void onInputPeak(float first, float second) override
    {
        raise(first_, first);
        raise(second_, second);
        blocks_.fetch_add(1, std::memory_order_relaxed);
    }

    // The highest peaks since the previous take.
    void take(float& first, float& second)
    {
        first = first_.exchange(0.0f, std::memory_order_relaxed);
        second = second_.exchange(0.0f, std::memory_order_relaxed);
    }

    // Input blocks seen so far: tells "silence" from "no input stream at all".
    long blocks() const { return blocks_.load(std::memory_order_relaxed); }

  private:
    static void raise(std::atomic<float>& slot, float value)
    {
        float current = slot.load(std::memory_order_relaxed);
        while (value > current &&
               !slot.compare_exchange_weak(current, value, std::memory_order_relaxed)) {
        }
    }

    std::atomic<float> first_{0.0f};
    std::atomic<float> second_{0.0f};
    std::atomic<long> blocks_{0};
};

} // namespace tg
