// Building the start-up device tables from PortAudio's and RtMidi's lists.
#include "devices/DeviceTables.h"

#include "core/Message.h"
#include "devices/AudioEngine.h"
#include "devices/MidiPorts.h"

#include <new>

namespace tg {

const char* const kVstPluginEntry = "-Vst Plugin-";
const char* const kNoAudioInEntry = "-No Audio In-";
const char* const kNoAudioOutEntry = "-No Audio Out-";
const char* const kNoMidiInEntry = "-No MIDI In-";
const char* const kNoMidiOutEntry = "-No MIDI Out-";

namespace {

// Entries are fixed-size name fields: names are cut, never grown.
std::string cut(const std::string& name, int entrySize)
{
    return name.size() < size_t(entrySize) ? name : name.substr(0, size_t(entrySize - 1));
}

} // namespace

DeviceTables& deviceTables()
{
    static DeviceTables tables;
    return tables;
}

int tableIndex(const std::vector<std::string>& table, const std::string& name)
{
    for (size_t i = 0; i < table.size(); ++i)
        if (table[i] == name)
            return int(i);
    return -1;
}

int audioInTableIndex(const DeviceTables& tables, const std::string& name)
{
    for (size_t i = 0; i < tables.audioIn.size(); ++i)
        if (tables.audioIn[i].name == name)
            return int(i);
    return -1;
}

int buildMidiDeviceTables(DeviceTables& tables, std::string& log)
{
    std::string msg;
    std::vector<std::string> inPorts;
    std::vector<std::string> outPorts;
    if (midi::midiInCreated() || midi::createMidiIn(msg))
        inPorts = midi::listMidiInPorts(msg);
    if (midi::midiOutCreated() || midi::createMidiOut(msg))
        outPorts = midi::listMidiOutPorts(msg);

    int ok = 1;
    try {
        tables.midiIn.clear();
        for (const std::string& port : inPorts)
            tables.midiIn.push_back(cut(port, kMidiEntrySize));
        tables.midiIn.push_back(kNoMidiInEntry);
        tables.midiInDevices = long(inPorts.size());
    } catch (const std::bad_alloc&) {
        tables.midiIn.clear();
        tables.midiInDevices = 0;
        log +=
            formatText("\r\n\r\nERROR: %s", "unable to allocate memory for the MIDI input devices");
        ok = 0;
    }
    try {
        tables.midiOut.clear();
        for (const std::string& port : outPorts)
            tables.midiOut.push_back(cut(port, kMidiEntrySize));
        tables.midiOut.push_back(kVstPluginEntry);
        tables.midiOut.push_back(kNoMidiOutEntry);
        tables.midiOutDevices = long(outPorts.size());
    } catch (const std::bad_alloc&) {
        tables.midiOut.clear();
        tables.midiOutDevices = 0;
        log += formatText("\r\n\r\nERROR: %s",
                          "unable to allocate memory for the MIDI output devices");
        ok = 0;
    }
    log += formatText("\r\n\t-found %ld MIDI In Device(s)\r\n\t-found %ld MIDI Out Device(s)",
                      tables.midiInDevices, tables.midiOutDevices);
    return ok;
}

int buildAudioDeviceTables(DeviceTables& tables, std::string& msg)
{
    if (!audio::initialize(msg))
        return 0;
    std::string listMessage;
    const std::vector<audio::AudioDevice> inputs = audio::listInputDevices(listMessage);
    const std::vector<audio::AudioDevice> outputs = audio::listOutputDevices(listMessage);
    try {
        tables.audioIn.clear();
        for (const audio::AudioDevice& device : inputs) {
            AudioInputEntry entry;
            entry.name = cut(device.name, kAudioInEntrySize);
            std::string channelMessage;
            entry.channels = audio::inputChannelNames(device.index, channelMessage);
            entry.channels.push_back("Default");
            tables.audioIn.push_back(std::move(entry));
        }
        tables.audioIn.push_back({kVstPluginEntry, {}});
        tables.audioIn.push_back({kNoAudioInEntry, {}});
        tables.audioInDevices = long(inputs.size());
    } catch (const std::bad_alloc&) {
        tables.audioIn.clear();
        return setMessage(msg, "unable to allocate memory for the Audio input devices");
    }
    try {
        tables.audioOut.clear();
        for (const audio::AudioDevice& device : outputs)
            tables.audioOut.push_back(cut(device.name, kAudioOutEntrySize));
        tables.audioOut.push_back(kNoAudioOutEntry);
        tables.audioOutDevices = long(outputs.size());
    } catch (const std::bad_alloc&) {
        tables.audioOut.clear();
        return setMessage(msg, "unable to allocate memory for the Audio output devices");
    }
    return 1;
}

} // namespace tg
