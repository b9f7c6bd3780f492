// The MIDI messages sent to the sound source, and the monitor's text for any message.
#pragma once

#include "core/Records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// Up to three bytes of one channel message.
struct MidiMessage {
    uint8_t bytes[3] = {0, 0, 0};
    int count = 0; // 1..3
};

// The Multi-Sample fields the MIDI side needs, copied out of a TGmsl so that this layer
// does not depend on the model.
struct MidiOutSettings {
    uint16_t channel = 0;       // 0-15, low nibble of the status byte
    uint16_t programActive = 1; // flag
    uint16_t program = 0;       // 0-127
    uint16_t autoSendReset = 1; // flag
    // Per controller 0-31: MSB active, MSB value, LSB active, LSB value (LSB is c + 32).
    uint16_t controllerTable[kControllerRows][4] = {};
    // Per controller 64-120: active, value.
    uint16_t parameterTable[kParameterRows][2] = {};
};

MidiOutSettings midiOutSettingsOf(const TGmsl& msl);

// Program Change, when the program is active; false (and nothing to send) otherwise.
bool programChangeMessage(const MidiOutSettings& settings, MidiMessage& message);
MidiMessage resetAllControllersMessage(const MidiOutSettings& settings);

// Control Change `controller` (0-120) when its table entry is active; false otherwise.
bool controllerMessage(const MidiOutSettings& settings, int controller, MidiMessage& message);

// Every active controller 0-119 in ascending order. Controller 120 is left out of the bulk
// send on purpose (it can still be sent on its own).
std::vector<MidiMessage> allControllerMessages(const MidiOutSettings& settings);

// The monitor text of a message of 1 to 3 bytes (missing data bytes count as 0).
std::string midiMessageText(const uint8_t* bytes, size_t count);

} // namespace tg
