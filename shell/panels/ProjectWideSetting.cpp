// Multi-Sample settings across the current Project.
#include "shell/panels/ProjectWideSetting.h"

#include "core/Model.h"
#include "core/Records.h"
#include "core/SettingsAccessor.h"
#include "devices/InputChannelChoice.h"

#include <algorithm>
#include <cstring>

namespace tg::shell {

namespace {

struct TextField {
    char* data;
    size_t size;
    size_t limit;
};

bool isText(ProjectWideSetting setting)
{
    return setting == ProjectWideSetting::AudioInDevice ||
           setting == ProjectWideSetting::AudioInFormat ||
           setting == ProjectWideSetting::MidiOutDevice;
}

TextField textField(TGmsl& msl, ProjectWideSetting setting)
{
    switch (setting) {
    case ProjectWideSetting::AudioInDevice:
        return {msl.AudioInDevice, sizeof msl.AudioInDevice, size_t(kAudioInDeviceSize)};
    case ProjectWideSetting::AudioInFormat:
        return {msl.AudioInFormat, sizeof msl.AudioInFormat, 36};
    default:
        return {msl.MIDIoutDevice, sizeof msl.MIDIoutDevice, size_t(kMidiOutDeviceSize)};
    }
}

bool isChannel(ProjectWideSetting setting, ChannelSide& side)
{
    side =
        setting == ProjectWideSetting::AudioInChannelLeft ? ChannelSide::Left : ChannelSide::Right;
    return setting == ProjectWideSetting::AudioInChannelLeft ||
           setting == ProjectWideSetting::AudioInChannelRight;
}

uint16_t& numberField(TGmsl& msl, ProjectWideSetting setting)
{
    return setting == ProjectWideSetting::MidiOutChannel ? msl.MIDIoutChannel : msl.MIDIoutProgram;
}

std::string valueOf(TGmsl& msl, ProjectWideSetting setting)
{
    ChannelSide side;
    if (isChannel(setting, side))
        return std::to_string(storedInputChannel(deviceTables(), msl, side));
    if (isText(setting)) {
        const TextField field = textField(msl, setting);
        return std::string(field.data, strnlen(field.data, field.size));
    }
    return std::to_string(numberField(msl, setting));
}

} // namespace

const char* settingKey(ProjectWideSetting setting)
{
    switch (setting) {
    case ProjectWideSetting::AudioInDevice:
        return "msl_AudioInDevice";
    case ProjectWideSetting::AudioInFormat:
        return "msl_AudioInFormat";
    case ProjectWideSetting::MidiOutDevice:
        return "msl_MIDIoutDevice";
    case ProjectWideSetting::MidiOutChannel:
        return "msl_MIDIoutChannel";
    case ProjectWideSetting::MidiOutProgram:
        return "msl_MIDIoutProgram";
    case ProjectWideSetting::AudioInChannelLeft:
        return inputChannelKey(ChannelSide::Left);
    case ProjectWideSetting::AudioInChannelRight:
        return inputChannelKey(ChannelSide::Right);
    }
    return "";
}

std::optional<std::string> commonValue(Model& model, ProjectWideSetting setting)
{
    Project* project = model.currentProject();
    if (!project || project->mslCount < 1)
        return std::nullopt;
    const std::string first = valueOf(project->msl[0], setting);
    for (int i = 1; i < project->mslCount; ++i)
        if (valueOf(project->msl[i], setting) != first)
            return std::nullopt;
    return first;
}

void setForAllMultiSamples(Model& model, ProjectWideSetting setting, const std::string& value)
{
    Project* project = model.currentProject();
    if (!project || !model.currentMultiSample())
        return;
    ChannelSide side;
    if (isChannel(setting, side)) {
        // Not kept in the project file, so the Project is not marked modified.
        for (int i = 0; i < project->mslCount; ++i)
            storeInputChannel(deviceTables(), project->msl[i], side, std::stoi(value));
        model.notifyListeners(
            [&](TonegrabberModelListener& l) { l.settingChanged(settingKey(setting)); });
        return;
    }
    for (int i = 0; i < project->mslCount; ++i) {
        if (i == project->currentMsl)
            continue;
        if (isText(setting)) {
            // Cleared whole, as the accessor does, so no rest of a longer name stays behind.
            const TextField field = textField(project->msl[i], setting);
            std::memset(field.data, 0, field.size);
            std::memcpy(field.data, value.data(),
                        std::min({value.size(), field.limit, field.size - 1}));
        } else {
            numberField(project->msl[i], setting) = uint16_t(std::stoi(value));
        }
    }
    bool ok = false;
    if (isText(setting))
        setSettingText(model, settingKey(setting), value, ok);
    else
        setSettingShort(model, settingKey(setting), int16_t(std::stoi(value)), ok);
}

} // namespace tg::shell
