// The device tables the interface lists, built once at start-up: audio and MIDI devices in
// the drivers' order followed by the pseudo entries for the hosted instrument and "none".
#pragma once

#include <string>
#include <vector>

namespace tg {

constexpr int kAudioInEntrySize = 68;  // 67 characters and the terminator
constexpr int kAudioOutEntrySize = 64; // 63 characters and the terminator
constexpr int kMidiEntrySize = 32;     // 31 characters and the terminator

extern const char* const kVstPluginEntry;  // "-Vst Plugin-"
extern const char* const kNoAudioInEntry;  // "-No Audio In-"
extern const char* const kNoAudioOutEntry; // "-No Audio Out-"
extern const char* const kNoMidiInEntry;   // "-No MIDI In-"
extern const char* const kNoMidiOutEntry;  // "-No MIDI Out-"

struct AudioInputEntry {
    std::string name;                  // cut to 67 characters
    std::vector<std::string> channels; // the device's channel names (if it has a choice), then
                                       // "Default"; empty for pseudo entries
};

struct DeviceTables {
    std::vector<AudioInputEntry> audioIn; // devices, "-Vst Plugin-", "-No Audio In-"
    std::vector<std::string> audioOut;    // devices, "-No Audio Out-"
    std::vector<std::string> midiIn;      // ports, "-No MIDI In-"
    std::vector<std::string> midiOut;     // ports, "-Vst Plugin-", "-No MIDI Out-"
    long midiInDevices = 0;               // real ports, pseudo entries not counted
    long midiOutDevices = 0;
    long audioInDevices = 0;
    long audioOutDevices = 0;
};

// The process-wide tables the interface and the managers read.
DeviceTables& deviceTables();

// Start-up's MIDI step: creates the RtMidi objects and fills the MIDI tables of `tables`.
// Appends "\r\n\t-found %ld MIDI In Device(s)\r\n\t-found %ld MIDI Out Device(s)" to `log`
// (and "\r\n\r\nERROR: %s" when a table cannot be allocated). Never fatal: a missing MIDI
// system just leaves the tables with their pseudo entries. Returns 0 when a table could not
// be allocated.
int buildMidiDeviceTables(DeviceTables& tables, std::string& log);

// Start-up's audio step: initializes the audio engine and fills the audio tables. Returns
// 0 with the message in `msg` when the engine cannot start or a table cannot be allocated.
int buildAudioDeviceTables(DeviceTables& tables, std::string& msg);

// Position of `name` in a table, or -1.
int tableIndex(const std::vector<std::string>& table, const std::string& name);
int audioInTableIndex(const DeviceTables& tables, const std::string& name);

} // namespace tg
