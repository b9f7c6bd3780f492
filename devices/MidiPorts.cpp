// RtMidi objects and ports, with the fall-back from the ALSA sequencer to JACK MIDI.
#include "devices/MidiPorts.h"

#include "core/Message.h"
#include "devices/AlsaMessages.h"

#include <RtMidi.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include <unistd.h>

namespace tg::midi {

namespace {

constexpr unsigned int kInputQueueLimit = 100;

struct MidiState {
    std::unique_ptr<RtMidiIn> in;
    std::unique_ptr<RtMidiOut> out;
    bool inPortOpen = false;
    bool outPortOpen = false;
    MidiInHandler handler;
};

MidiState& state()
{
    static MidiState midi;
    return midi;
}

// The APIs to try, in order, as the environment allows.
std::vector<RtMidi::Api> candidateApis()
{
    const char* forced = std::getenv("TONEGRABBER_MIDI_API");
    if (forced != nullptr && std::strcmp(forced, "alsa") == 0)
        return {RtMidi::LINUX_ALSA};
    if (forced != nullptr && std::strcmp(forced, "jack") == 0)
        return {RtMidi::UNIX_JACK};
    // Without the sequencer device ALSA cannot come up at all; skipping it spares RtMidi's
    // error printout on every start in containers.
    if (::access("/dev/snd/seq", F_OK) != 0)
        return {RtMidi::UNIX_JACK};
    return {RtMidi::LINUX_ALSA, RtMidi::UNIX_JACK};
}

// Creates an object on the first API that can be had and shows ports; an API that comes up
// with no ports is kept only when no later one does better.
template <typename Object, typename Make>
int createWithFallback(std::unique_ptr<Object>& object, Make make, std::string& msg)
{
    silenceAlsaLibraryMessages();
    object.reset();
    std::unique_ptr<Object> portless;
    std::string lastError;
    for (RtMidi::Api api : candidateApis()) {
        try {
            std::unique_ptr<Object> candidate = make(api);
            if (candidate->getPortCount() > 0) {
                object = std::move(candidate);
                return 1;
            }
            if (!portless)
                portless = std::move(candidate);
        } catch (const RtMidiError& error) {
            lastError = error.getMessage();
        }
    }
    if (portless) {
        object = std::move(portless);
        return 1;
    }
    if (lastError.empty())
        lastError = "no MIDI API available";
    return setMessage(msg, "%s", lastError.c_str());
}

template <typename Object> std::string apiName(Object* object)
{
    if (object == nullptr)
        return "";
    switch (object->getCurrentApi()) {
    case RtMidi::LINUX_ALSA:
        return "alsa";
    case RtMidi::UNIX_JACK:
        return "jack";
    default:
        return RtMidi::getApiName(object->getCurrentApi());
    }
}

template <typename Object> std::vector<std::string> listPorts(Object* object, std::string& msg)
{
    std::vector<std::string> names;
    if (object == nullptr) {
        setMessage(msg, "MIDI device not created");
        return names;
    }
    try {
        const unsigned int count = object->getPortCount();
        for (unsigned int i = 0; i < count; ++i)
            names.push_back(object->getPortName(i));
    } catch (const RtMidiError& error) {
        setMessage(msg, "%s", error.getMessage().c_str());
        names.clear();
    }
    return names;
}

void forwardMidiIn(double, std::vector<unsigned char>* message, void* user)
{
    auto* midi = static_cast<MidiState*>(user);
    if (message != nullptr && midi->handler)
        midi->handler(*message);
}

} // namespace

int createMidiIn(std::string& msg)
{
    MidiState& midi = state();
    midi.inPortOpen = false;
    if (!createWithFallback(
            midi.in,
            [](RtMidi::Api api) {
                return std::make_unique<RtMidiIn>(api, "RtMidi Input Client", kInputQueueLimit);
            },
            msg))
        return 0;
    // Set once for the object's life; RtMidi's input filters stay at their defaults (sysex,
    // timing clock and active sensing ignored) so a clock source cannot flood the monitor.
    midi.in->setCallback(forwardMidiIn, &midi);
    return 1;
}

int createMidiOut(std::string& msg)
{
    MidiState& midi = state();
    midi.outPortOpen = false;
    return createWithFallback(
        midi.out,
        [](RtMidi::Api api) { return std::make_unique<RtMidiOut>(api, "RtMidi Output Client"); },
        msg);
}

void destroyMidi()
{
    MidiState& midi = state();
    closeMidiInPort();
    closeMidiOutPort();
    midi.in.reset();
    midi.out.reset();
}

bool midiInCreated()
{
    return state().in != nullptr;
}

bool midiOutCreated()
{
    return state().out != nullptr;
}

std::string midiInApiName()
{
    return apiName(state().in.get());
}

std::string midiOutApiName()
{
    return apiName(state().out.get());
}

std::vector<std::string> listMidiInPorts(std::string& msg)
{
    return listPorts(state().in.get(), msg);
}

std::vector<std::string> listMidiOutPorts(std::string& msg)
{
    return listPorts(state().out.get(), msg);
}

int openMidiOutPort(int index, std::string& msg)
{
    MidiState& midi = state();
    if (!midi.out)
        return setMessage(msg, "MIDI device not created");
    try {
        closeMidiOutPort();
        midi.out->openPort(static_cast<unsigned int>(index), "RtMidi Output");
        midi.outPortOpen = midi.out->isPortOpen();
    } catch (const RtMidiError& error) {
        midi.outPortOpen = false;
        return setMessage(msg, "%s", error.getMessage().c_str());
    }
    return midi.outPortOpen ? 1 : setMessage(msg, "MIDI output port %d could not be opened", index);
}

int openMidiInPort(int index, std::string& msg)
{
    MidiState& midi = state();
    if (!midi.in)
        return setMessage(msg, "MIDI device not created");
    try {
        closeMidiInPort();
        midi.in->openPort(static_cast<unsigned int>(index), "RtMidi Input");
        midi.inPortOpen = midi.in->isPortOpen();
    } catch (const RtMidiError& error) {
        midi.inPortOpen = false;
        return setMessage(msg, "%s", error.getMessage().c_str());
    }
    return midi.inPortOpen ? 1 : setMessage(msg, "MIDI input port %d could not be opened", index);
}

int openMidiInVirtualPort(const std::string& name, std::string& msg)
{
    MidiState& midi = state();
    if (!midi.in)
        return setMessage(msg, "MIDI device not created");
    try {
        closeMidiInPort();
        midi.in->openVirtualPort(name);
        // RtMidi does not count a port of its own as connected; it is open all the same.
        midi.inPortOpen = true;
    } catch (const RtMidiError& error) {
        midi.inPortOpen = false;
        return setMessage(msg, "%s", error.getMessage().c_str());
    }
    return 1;
}

void closeMidiOutPort()
{
    MidiState& midi = state();
    if (midi.out && midi.outPortOpen)
        midi.out->closePort();
    midi.outPortOpen = false;
}

void closeMidiInPort()
{
    MidiState& midi = state();
    if (midi.in && midi.inPortOpen)
        midi.in->closePort();
    midi.inPortOpen = false;
}

bool midiOutPortOpen()
{
    return state().outPortOpen;
}

bool midiInPortOpen()
{
    return state().inPortOpen;
}

void sendMidiMessage(const uint8_t* bytes, size_t count)
{
    MidiState& midi = state();
    if (!midi.out || !midi.outPortOpen || bytes == nullptr || count < 1 || count > 3)
        return;
    try {
        midi.out->sendMessage(bytes, count);
    } catch (const RtMidiError&) {
        // A port that went away mid-session: nothing is sent, as with no port open.
    }
}

void setMidiInHandler(MidiInHandler handler)
{
    state().handler = std::move(handler);
}

} // namespace tg::midi
