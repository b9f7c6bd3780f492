// Building the messages sent to the sound source, and decoding messages for the monitor.
#include "devices/MidiMessages.h"

#include "core/Message.h"

#include <cstring>

namespace tg {

namespace {

MidiMessage make(uint8_t status, int data1, int data2, int count)
{
    MidiMessage message;
    message.bytes[0] = status;
    message.bytes[1] = uint8_t(data1 & 0x7F);
    message.bytes[2] = uint8_t(data2 & 0x7F);
    message.count = count;
    return message;
}

uint8_t channelNibble(const MidiOutSettings& settings)
{
    return uint8_t(settings.channel & 0x0F);
}

// The channel-mode messages (controllers 121-127) by their controller number.
const char* channelModeText(int controller, int value)
{
    switch (controller) {
    case 121:
        return "chnl mode msg: reset all controllers";
    case 122:
        return value > 0 ? "chnl mode msg: local control on" : "chnl mode msg: local control off";
    case 123:
        return "chnl mode msg: all notes off";
    case 124:
        return "chnl mode msg: omni mode off";
    case 125:
        return "chnl mode msg: omni mode on";
    case 126:
        return "chnl mode msg: mono mode on";
    default:
        return "chnl mode msg: poly mode on";
    }
}

std::string controlChangeText(long controller, long value)
{
    if (controller < 32)
        return formatText("Control %ld: MSB=%ld", controller, value);
    if (controller < 64)
        return formatText("Control %ld: LSB(for Ctrl%ld)=%ld", controller, controller - 32, value);
    if (controller <= 120)
        return formatText("control %ld: value=%ld", controller, value);
    return channelModeText(int(controller), int(value));
}

const char* systemText(uint8_t status)
{
    switch (status) {
    case 0xF1:
        return "common msg: MTC quarter-frame";
    case 0xF2:
        return "common msg: song position pointer";
    case 0xF3:
        return "common msg: song select";
    case 0xF4:
    case 0xF5:
        return "common msg: undefined";
    case 0xF6:
        return "common msg: tune request";
    case 0xF7:
        return "common msg: end of exclusive";
    case 0xF8:
        return "real-time msg: timing clock";
    case 0xF9:
    case 0xFD:
        return "real-time msg: undefined";
    case 0xFA:
        return "real-time msg: start";
    case 0xFB:
        return "real-time msg: continue";
    case 0xFC:
        return "real-time msg: stop";
    case 0xFE:
        return "real-time msg: active sensing";
    case 0xFF:
        return "real-time msg: system reset";
    default:
        return nullptr;
    }
}

} // namespace

MidiOutSettings midiOutSettingsOf(const TGmsl& msl)
{
    MidiOutSettings settings;
    settings.channel = msl.MIDIoutChannel;
    settings.programActive = msl.MIDIoutProgram_active;
    settings.program = msl.MIDIoutProgram;
    settings.autoSendReset = msl.AutoSendReset;
    std::memcpy(settings.controllerTable, msl.controllerTable, sizeof settings.controllerTable);
    std::memcpy(settings.parameterTable, msl.parameterTable, sizeof settings.parameterTable);
    return settings;
}

bool programChangeMessage(const MidiOutSettings& settings, MidiMessage& message)
{
    if (!settings.programActive)
        return false;
    message = make(uint8_t(0xC0 | channelNibble(settings)), settings.program, 0, 2);
    return true;
}

MidiMessage resetAllControllersMessage(const MidiOutSettings& settings)
{
    return make(uint8_t(0xB0 | channelNibble(settings)), 121, 0, 3);
}

bool controllerMessage(const MidiOutSettings& settings, int controller, MidiMessage& message)
{
    bool active = false;
    int value = 0;
    if (controller >= 0 && controller < 32) {
        active = settings.controllerTable[controller][0] != 0;
        value = settings.controllerTable[controller][1];
    } else if (controller >= 32 && controller < 64) {
        active = settings.controllerTable[controller - 32][2] != 0;
        value = settings.controllerTable[controller - 32][3];
    } else if (controller >= 64 && controller <= 120) {
        active = settings.parameterTable[controller - 64][0] != 0;
        value = settings.parameterTable[controller - 64][1];
    }
    if (!active)
        return false;
    message = make(uint8_t(0xB0 | channelNibble(settings)), controller, value, 3);
    return true;
}

std::vector<MidiMessage> allControllerMessages(const MidiOutSettings& settings)
{
    std::vector<MidiMessage> messages;
    for (int controller = 0; controller < 120; ++controller) {
        MidiMessage message;
        if (controllerMessage(settings, controller, message))
            messages.push_back(message);
    }
    return messages;
}

std::string midiMessageText(const uint8_t* bytes, size_t count)
{
    if (bytes == nullptr || count == 0)
        return formatText("'unknown' byte1=%ld byte2=%ld", 0L, 0L);
    const uint8_t status = bytes[0];
    const long data1 = count > 1 ? bytes[1] : 0;
    const long data2 = count > 2 ? bytes[2] : 0;
    const long channel = (status & 15) + 1;

    std::string text;
    switch (status & 0xF0) {
    case 0x80:
        text = formatText("note %ld off, vel=%ld", data1, data2);
        break;
    case 0x90:
        text = data2 > 0 ? formatText("note %ld on, vel=%ld", data1, data2)
                         : formatText("note %ld on, vel=0 (=off)", data1);
        break;
    case 0xA0:
        text = formatText("after touch, n=%ld, p=%ld", data1, data2);
        break;
    case 0xB0:
        text = controlChangeText(data1, data2);
        break;
    case 0xC0:
        text = formatText("program change: ID=%ld", data1);
        break;
    case 0xD0:
        text = formatText("channel pressure = %ld", data1);
        break;
    case 0xE0:
        text = formatText("pitch bend: LSB=%ld MSB=%ld", data1, data2);
        break;
    default: {
        const char* system = systemText(status);
        if (system != nullptr)
            return system;
        // Running-status data bytes and 0xF0 (start of exclusive) have no row of their own.
        return formatText("'unknown' byte1=%ld byte2=%ld", long(status), data1);
    }
    }
    return text + formatText(" channel=%ld", channel);
}

} // namespace tg
