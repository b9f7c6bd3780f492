// The hosted instrument in real time: a thread of its own renders it into the player's
// ring buffer, from which the output callback plays it and, with "-Vst Plugin-" as the
// audio input, the recorder takes it.
#pragma once

#include "devices/AudioStreamConfig.h"
#include "devices/HostedInstrument.h"
#include "devices/Player.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace tg {

// Thread rules: start(), stop(), sendMidi() and resetNotes() are for one controlling thread
// (the GUI's or the CLI's). The instrument itself is touched only by the host's render
// thread while it runs. Messages reach it through a lock-free queue; its audio leaves
// through the player's ring buffer; the render loop neither allocates nor waits on a lock
// that the audio callback holds.
class InstrumentHost {
  public:
    ~InstrumentHost();

    // Takes the instrument and starts rendering it in `output`'s format (rate, channels,
    // bits) into `player`'s ring buffer, keeping about `aheadFrames` frames buffered ahead
    // of the output (the latency the instrument adds). The instrument must run at the
    // output's rate; the ring must already be sized. 0 with `msg` filled otherwise.
    int start(std::unique_ptr<HostedInstrument> instrument, const AudioStreamConfig& output,
              Player& player, std::string& msg, uint32_t aheadFrames = 1024);
    // Stops the thread and gives the instrument back (null when none ran).
    std::unique_ptr<HostedInstrument> stop();
    bool running() const { return thread_.joinable(); }

    // Queues a three-byte channel message; false when the queue is full.
    bool sendMidi(uint8_t status, uint8_t data1, uint8_t data2);
    // Queues a reset of every voice (the run's stop).
    bool resetNotes();

    // Frames rendered since start (any thread).
    int64_t framesRendered() const { return rendered_.load(std::memory_order_relaxed); }

  private:
    struct Message {
        uint8_t bytes[3];
        bool reset;
    };
    static constexpr size_t kQueueSize = 1024; // a power of two

    bool push(const Message& message);
    void renderLoop();

    std::unique_ptr<HostedInstrument> instrument_;
    Player* player_ = nullptr;
    AudioStreamConfig format_;
    uint32_t aheadBytes_ = 0;
    std::thread thread_;
    std::atomic<bool> quit_{false};
    std::atomic<int64_t> rendered_{0};
    std::array<Message, kQueueSize> queue_{};
    std::atomic<size_t> queueHead_{0}; // written by the controlling thread
    std::atomic<size_t> queueTail_{0}; // written by the render thread
};

} // namespace tg
