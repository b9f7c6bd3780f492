// The choices of the Export Settings dialog, by group, with their texts; and the check of a
// settings word against a format's allowed values, so that a word typed on the command line
// is held to what the dialog would have offered.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

struct ExportFormatInfo;

// One radio button: its value in the settings word and its text.
struct SettingsChoice {
    uint32_t value;
    const char* text;
};

// A radio group of the dialog: exactly one of its values is set in a word.
struct SettingsGroup {
    const char* name;   // "frequency", "depth", "channels": how messages name the group
    const char* title;  // the group box's title
    uint32_t fieldMask; // the bits of the group in the word
    std::vector<SettingsChoice> choices;
};

// An on/off choice shown as a check box.
struct SettingsSwitch {
    const char* objectName;
    const char* text;
    uint32_t fieldMask;
    uint32_t off; // the value written when unchecked (0 for a single bit)
    uint32_t on;
};

// The frequency, depth and channel groups, in the dialog's order.
const std::vector<SettingsGroup>& settingsGroups();
// Resampling quality, loop-only, level adjustment and tail removal, in the dialog's order.
const std::vector<SettingsSwitch>& settingsSwitches();

// True when `mask` enables `value` (every bit of the value is set in the mask).
inline bool isChoiceAllowed(uint32_t mask, uint32_t value)
{
    return (value & mask) == value;
}

// The value of `group` set in `word`, or 0 when it holds none or more than one of them.
uint32_t chosenValue(const SettingsGroup& group, uint32_t word);

// Returns 1 when every group of `word` holds exactly one of its values and `mask` allows it;
// otherwise 0 with a message that names the group, the value and what `formatName` allows.
int checkSettingsWord(uint32_t mask, const std::string& formatName, uint32_t word,
                      std::string& message);

// The word the settings dialog starts with: the last used word (or the format's default)
// with the format's corrections; a group whose fallback value the format does not offer
// either (44.1 kHz for a 48 kHz-only format) takes the first value it does offer, so that
// the dialog never starts on a disabled choice.
uint32_t preselectedSettingsWord(const ExportFormatInfo& format, bool hasLastWord,
                                 uint32_t lastWord);

} // namespace tg
