// The render thread of the real-time hosted instrument.
#include "devices/InstrumentHost.h"

#include "core/Message.h"
#include "devices/FloatFrames.h"

#include <chrono>

namespace tg {

namespace {

constexpr uint32_t kRenderBlock = 128;
// How long the render thread rests when the ring is full enough: a small part of the
// buffered time, so the output never runs dry while it sleeps.
constexpr auto kRest = std::chrono::microseconds(500);

} // namespace

InstrumentHost::~InstrumentHost()
{
    stop();
}

int InstrumentHost::start(std::unique_ptr<HostedInstrument> instrument,
                          const AudioStreamConfig& output, Player& player, std::string& msg,
                          uint32_t aheadFrames)
{
    stop();
    if (instrument == nullptr)
        return setMessage(msg, "No instrument to host");
    if (instrument->sampleRate() != output.sampleRate)
        return setMessage(msg, "The instrument runs at %d Hz, the audio output at %d Hz",
                          int(instrument->sampleRate()), int(output.sampleRate));
    const int32_t frameBytes = bytesPerFrame(output);
    if (frameBytes <= 0)
        return setMessage(msg, "The audio output has no sample format to render into");
    if (player.pluginRingCapacity() < size_t(frameBytes) * (aheadFrames + kRenderBlock))
        return setMessage(msg, "The instrument's ring buffer is too small for %u frames",
                          unsigned(aheadFrames));
    instrument_ = std::move(instrument);
    player_ = &player;
    format_ = output;
    aheadBytes_ = uint32_t(frameBytes) * aheadFrames;
    quit_.store(false);
    rendered_.store(0);
    queueHead_.store(0);
    queueTail_.store(0);
    thread_ = std::thread([this] { renderLoop(); });
    return 1;
}

std::unique_ptr<HostedInstrument> InstrumentHost::stop()
{
    if (thread_.joinable()) {
        quit_.store(true);
        thread_.join();
    }
    return std::move(instrument_);
}

bool InstrumentHost::push(const Message& message)
{
    const size_t head = queueHead_.load(std::memory_order_relaxed);
    if (head - queueTail_.load(std::memory_order_acquire) >= kQueueSize)
        return false;
    queue_[head & (kQueueSize - 1)] = message;
    queueHead_.store(head + 1, std::memory_order_release);
    return true;
}

bool InstrumentHost::sendMidi(uint8_t status, uint8_t data1, uint8_t data2)
{
    return push(Message{{status, data1, data2}, false});
}

bool InstrumentHost::resetNotes()
{
    return push(Message{{0, 0, 0}, true});
}

void InstrumentHost::renderLoop()
{
    // Everything the loop needs is allocated here, before the first block.
    std::vector<float> left(kRenderBlock);
    std::vector<float> right(kRenderBlock);
    const int32_t frameBytes = bytesPerFrame(format_);
    std::vector<uint8_t> bytes(size_t(frameBytes) * kRenderBlock);
    while (!quit_.load(std::memory_order_acquire)) {
        size_t tail = queueTail_.load(std::memory_order_relaxed);
        const size_t head = queueHead_.load(std::memory_order_acquire);
        for (; tail != head; ++tail) {
            const Message& message = queue_[tail & (kQueueSize - 1)];
            if (message.reset)
                instrument_->resetNotes();
            else
                instrument_->sendMidi(message.bytes[0], message.bytes[1], message.bytes[2]);
        }
        queueTail_.store(tail, std::memory_order_release);

        if (player_->pluginAudioHeld() >= aheadBytes_) {
            std::this_thread::sleep_for(kRest);
            continue;
        }
        instrument_->render(left.data(), right.data(), kRenderBlock);
        encodeFloatFrames(left.data(), right.data(), kRenderBlock, format_.channels, format_.bits,
                          bytes.data());
        player_->writePluginAudio(bytes.data(), bytes.size());
        rendered_.fetch_add(kRenderBlock, std::memory_order_relaxed);
    }
}

} // namespace tg
