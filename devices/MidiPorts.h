// The MIDI layer over RtMidi: one input object, one output object, their ports and sending.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tg::midi {

// Thread rules: GUI thread (or the CLI's one thread) for everything here; the input handler
// runs on RtMidi's thread and must only hand the bytes on.

// Which RtMidi API is in use: the ALSA sequencer first, JACK MIDI when ALSA cannot be had
// or shows no ports (a container has no /dev/snd/seq); TONEGRABBER_MIDI_API=alsa|jack
// forces one. Returns 0 with RtMidi's message when no API can be had.
int createMidiIn(std::string& msg);
int createMidiOut(std::string& msg);
// Deletes both objects (closing their ports).
void destroyMidi();
bool midiInCreated();
bool midiOutCreated();
// "alsa", "jack" or "" for the object not created.
std::string midiInApiName();
std::string midiOutApiName();

// Port names in RtMidi's order; empty when the object is missing (msg says why).
std::vector<std::string> listMidiInPorts(std::string& msg);
std::vector<std::string> listMidiOutPorts(std::string& msg);

// Closes the open port of that direction and opens the port at `index` (a port of the
// list above), under the name "RtMidi Output" / "RtMidi Input". 0 with RtMidi's message.
int openMidiOutPort(int index, std::string& msg);
int openMidiInPort(int index, std::string& msg);
// Opens an input port of this program's own, named `name`, that other programs send into
// (the monitor's port when no device is chosen). 0 with RtMidi's message.
int openMidiInVirtualPort(const std::string& name, std::string& msg);
void closeMidiOutPort();
void closeMidiInPort();
bool midiOutPortOpen();
bool midiInPortOpen();

// Sends 1-3 bytes on the open output port; nothing happens when none is open.
void sendMidiMessage(const uint8_t* bytes, size_t count);

// Receives every incoming message (RtMidi's thread). Set before opening the input port.
using MidiInHandler = std::function<void(const std::vector<unsigned char>&)>;
void setMidiInHandler(MidiInHandler handler);

} // namespace tg::midi
