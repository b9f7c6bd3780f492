// What can be hosted: the presets of a SoundFont file, the LV2 instruments installed on this
// machine, and the control inputs of one of them, for the user to choose from.
#pragma once

#include <string>
#include <vector>

namespace tg {

struct SoundFontPreset {
    int bank;
    int program;
    std::string name;
};

// The presets of the SoundFont at `path` in bank, then program order; 0 with a message
// when the file cannot be read as a SoundFont. Sample data is not loaded.
int listSoundFontPresets(const std::string& path, std::vector<SoundFontPreset>& presets,
                         std::string& msg);

struct Lv2InstrumentEntry {
    std::string uri;
    std::string name;
};

// The installed LV2 plug-ins of the instrument class (LV2_PATH when set), by name.
std::vector<Lv2InstrumentEntry> listLv2Instruments();

struct Lv2Control {
    std::string symbol;
    std::string name;
    float minimum;
    float maximum;
    float defaultValue;
};

// The control inputs of the installed plug-in `uri` in port order; 0 with a message when it
// is not installed.
int listLv2Controls(const std::string& uri, std::vector<Lv2Control>& controls, std::string& msg);

} // namespace tg
