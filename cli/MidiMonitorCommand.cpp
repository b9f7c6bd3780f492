// `midi-monitor [--device NAME] [--json]`: prints every message arriving at the MIDI input,
// decoded as the desktop program's monitor shows it, until Ctrl-C or SIGTERM.
#include "cli/CliApp.h"
#include "cli/Commands.h"

#include "core/Message.h"
#include "devices/MidiMessages.h"
#include "devices/MidiPorts.h"

#include <nlohmann/json.hpp>

#include <atomic>
#include <chrono>
#include <csignal>
#include <iostream>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace tg::cli {

namespace {

// The name of the monitor's own port when no device is chosen.
constexpr const char* kMonitorPortName = "Tonegrabber MIDI Monitor";

std::atomic<bool> stopRequested{false};

void requestStop(int)
{
    stopRequested.store(true);
}

// Messages handed over from RtMidi's thread; the main loop prints them.
class MessageQueue {
  public:
    void push(const std::vector<unsigned char>& message)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        messages_.push_back(message);
    }
    std::vector<std::vector<unsigned char>> takeAll()
    {
        std::lock_guard<std::mutex> lock(mutex_);
        std::vector<std::vector<unsigned char>> taken;
        taken.swap(messages_);
        return taken;
    }

  private:
    std::mutex mutex_;
    std::vector<std::vector<unsigned char>> messages_;
};

void printMessage(const std::vector<unsigned char>& message, bool json)
{
    const uint8_t status = message.empty() ? 0 : message[0];
    const int data1 = message.size() > 1 ? message[1] : 0;
    const int data2 = message.size() > 2 ? message[2] : 0;
    const std::string text = midiMessageText(message.data(), std::min<size_t>(message.size(), 3));
    if (json) {
        // One document per line, so a reader can follow the stream.
        std::cout << nlohmann::json{{"status", status},
                                    {"data1", data1},
                                    {"data2", data2},
                                    {"text", text}}
                         .dump()
                  << std::endl;
    } else {
        std::cout << formatText("0x%02X\t%d\t%d\t%s", status, data1, data2, text.c_str())
                  << std::endl;
    }
}

int openInput(const std::string& device, std::string& msg)
{
    if (device.empty())
        return midi::openMidiInVirtualPort(kMonitorPortName, msg);
    const std::vector<std::string> ports = midi::listMidiInPorts(msg);
    for (size_t i = 0; i < ports.size(); ++i)
        if (ports[i] == device)
            return midi::openMidiInPort(int(i), msg);
    setMessage(msg, "There is no MIDI input \"%s\".", device.c_str());
    return 0;
}

int runMonitor(const std::string& device, bool json, bool quiet)
{
    std::string msg;
    if (!midi::createMidiIn(msg))
        return fail(msg, json);
    auto queue = std::make_shared<MessageQueue>();
    midi::setMidiInHandler(
        [queue](const std::vector<unsigned char>& message) { queue->push(message); });
    if (!openInput(device, msg)) {
        midi::destroyMidi();
        return fail(msg, json);
    }
    std::signal(SIGINT, requestStop);
    std::signal(SIGTERM, requestStop);
    if (!quiet)
        std::cerr << formatText("Listening on \"%s\" (MIDI API %s); Ctrl-C ends.\n",
                                device.empty() ? kMonitorPortName : device.c_str(),
                                midi::midiInApiName().c_str());
    while (!stopRequested.load()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        for (const auto& message : queue->takeAll())
            printMessage(message, json);
    }
    midi::closeMidiInPort();
    midi::setMidiInHandler(nullptr);
    for (const auto& message : queue->takeAll())
        printMessage(message, json);
    midi::destroyMidi();
    return kExitOk;
}

} // namespace

void addMidiMonitorCommand(CliApp& app)
{
    struct Args {
        std::string device;
        bool json = false;
        bool quiet = false;
    };
    auto args = std::make_shared<Args>();
    CLI::App* c =
        app.addCommand("midi-monitor", "Prints decoded messages from the MIDI input until Ctrl-C",
                       [args]() { return runMonitor(args->device, args->json, args->quiet); });
    c->add_option("--device", args->device,
                  std::string("MIDI input port to listen to; without it the monitor opens a "
                              "port of its own, \"") +
                      kMonitorPortName + "\"");
    c->add_flag("--json", args->json, "one JSON document per message and line");
    c->add_flag("--quiet", args->quiet, "nothing on stderr");
}

} // namespace tg::cli
