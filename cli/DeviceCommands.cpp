// `devices`: the audio and MIDI device tables with their pseudo entries, and the format table.
#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "devices/AudioEngine.h"
#include "devices/DeviceTables.h"
#include "devices/InputChannelChoice.h"
#include "devices/MidiPorts.h"
#include "audiofile/RecordFormats.h"

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

namespace tg::cli {

namespace {

struct DevicesOptions {
    bool json = false;
};

void printList(const char* title, const std::vector<std::string>& names)
{
    std::cout << title << ":\n";
    for (const std::string& name : names)
        std::cout << "  " << name << '\n';
}

int runDevices(const DevicesOptions& options)
{
    DeviceTables tables;
    std::string log;
    buildMidiDeviceTables(tables, log);
    std::string msg;
    const int audioOk = buildAudioDeviceTables(tables, msg);
    audio::terminate();
    midi::destroyMidi();
    if (!audioOk)
        return fail(msg, options.json);

    std::vector<std::string> audioIn;
    // The channels of devices with more than two, for `record --input-channels`.
    nlohmann::json audioInChannels = nlohmann::json::object();
    for (const AudioInputEntry& entry : tables.audioIn) {
        audioIn.push_back(entry.name);
        const std::vector<std::string> channels = choosableInputChannels(tables, entry.name);
        if (!channels.empty())
            audioInChannels[entry.name] = channels;
    }
    const RecordFormatRow* formats = recordFormatTable();

    if (options.json) {
        nlohmann::json formatList = nlohmann::json::array();
        for (int i = 0; i < kRecordFormatCount; ++i)
            formatList.push_back({{"code", formats[i].code},
                                  {"name", formats[i].name},
                                  {"rate", formats[i].rate},
                                  {"channels", formats[i].channels},
                                  {"bits", formats[i].bits}});
        printJson({{"audioIn", audioIn},
                   {"audioInChannels", audioInChannels},
                   {"audioOut", tables.audioOut},
                   {"midiIn", tables.midiIn},
                   {"midiOut", tables.midiOut},
                   {"formats", formatList}});
        return kExitOk;
    }
    printList("Audio input devices", audioIn);
    for (const auto& [device, channels] : audioInChannels.items()) {
        std::cout << "  channels of " << device << ":";
        for (size_t i = 0; i < channels.size(); ++i)
            std::cout << ' ' << (i + 1) << '=' << channels[i].get<std::string>();
        std::cout << '\n';
    }
    printList("Audio output devices", tables.audioOut);
    printList("MIDI input devices", tables.midiIn);
    printList("MIDI output devices", tables.midiOut);
    std::cout << "Recording formats:\n";
    for (int i = 0; i < kRecordFormatCount; ++i) {
        char code[16];
        std::snprintf(code, sizeof code, "0x%X", unsigned(formats[i].code));
        std::cout << "  " << code << "  " << formats[i].name << '\n';
    }
    return kExitOk;
}

} // namespace

void addDeviceCommands(CliApp& app)
{
    auto options = std::make_shared<DevicesOptions>();
    CLI::App* devices = app.addCommand(
        "devices",
        "Lists audio and MIDI devices (with the pseudo entries) and the recording formats",
        [options] { return runDevices(*options); });
    devices->add_flag("--json", options->json, "Print one JSON document");
}

} // namespace tg::cli
