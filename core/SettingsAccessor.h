// The keyed settings accessor: reads and writes a Multi-Sample setting ("msl_...", the current
// Multi-Sample of the current Project) or a preferences setting ("prefs_...") by key. Keys are
// the settings widgets' object names: the dotted key with every "." written as "_", for
// example "msl_recordsettings_xfadelength".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

class Model;

// The value kind of a key; each kind has its own setter and getter, and a key only matches
// in the accessor of its kind.
enum class SettingKind { Text, Short, Long, Char, Double };

// Every setter and getter sets `ok` to whether the key named a field of its kind under a
// target that exists; otherwise nothing changes and getters return an empty text or 0.
// A text is cut to the field's character limit. Setters tell the model's listeners
// settingChanged(key); a Multi-Sample setting also marks its Project modified.
void setSettingText(Model& model, const std::string& key, const std::string& value, bool& ok);
void setSettingShort(Model& model, const std::string& key, int16_t value, bool& ok);
void setSettingLong(Model& model, const std::string& key, int32_t value, bool& ok);
void setSettingChar(Model& model, const std::string& key, uint8_t value, bool& ok);
void setSettingDouble(Model& model, const std::string& key, double value, bool& ok);

std::string settingText(Model& model, const std::string& key, bool& ok);
int16_t settingShort(Model& model, const std::string& key, bool& ok);
int32_t settingLong(Model& model, const std::string& key, bool& ok);
uint8_t settingChar(Model& model, const std::string& key, bool& ok);
double settingDouble(Model& model, const std::string& key, bool& ok);

// The kind of `key`, whether or not its target exists right now. False for unknown keys and
// for keys with neither "msl_" nor "prefs_".
bool findSettingKind(const std::string& key, SettingKind& kind);

// Every key of one target in table order, as widget object names ("prefs_datapath", ...).
// `prefix` is "prefs" or "msl".
struct SettingKey {
    std::string key;
    SettingKind kind;
};
std::vector<SettingKey> settingKeys(const std::string& prefix);

// "Set current Settings as Default": the fields that exist under both "msl." and "prefs."
// (devices, recording format, MIDI values and the whole record-setting block) are copied from
// the current Multi-Sample into the preferences. False when there is no current Multi-Sample.
bool setCurrentSettingsAsDefault(Model& model);

} // namespace tg
