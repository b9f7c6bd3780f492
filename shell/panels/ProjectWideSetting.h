// A Multi-Sample setting seen across the current Project: its common value, or "they differ",
// and setting it on every Multi-Sample at once.
#pragma once

#include <optional>
#include <string>

namespace tg {
class Model;
}

namespace tg::shell {

// The settings the Input/Output panel shows per Project. Text fields hold names from the
// device and format tables; number fields are the stored 16-bit values.
enum class ProjectWideSetting {
    AudioInDevice,
    AudioInFormat,
    MidiOutDevice,
    MidiOutChannel,
    MidiOutProgram,
    // The input channel chosen for each Multi-Sample's own audio input device, in decimal
    // (-1: not chosen). Project files do not keep it: it lasts for the session.
    AudioInChannelLeft,
    AudioInChannelRight
};

// The accessor key of the setting ("msl_AudioInDevice", ...).
const char* settingKey(ProjectWideSetting setting);

// The value all Multi-Samples of the current Project share, as text (numbers in decimal);
// nothing when they differ or there is no Multi-Sample.
std::optional<std::string> commonValue(Model& model, ProjectWideSetting setting);

// Writes `value` into every Multi-Sample of the current Project. The current Multi-Sample is
// written last through the keyed accessor, so listeners hear of the change once, with all
// Multi-Samples already holding the new value, and the Project is marked modified.
void setForAllMultiSamples(Model& model, ProjectWideSetting setting, const std::string& value);

} // namespace tg::shell
