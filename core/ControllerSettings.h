// The MIDI controllers a Multi-Sample sends, by controller number: 0-31 are the MSB pairs of
// the controller table, 32-63 its LSB pairs (for controller number - 32), 64-120 the
// parameter table.
#pragma once

#include <string>

namespace tg {

class Model;
struct TGmsl;

constexpr int kHighestStoredController = 120;

struct ControllerEntry {
    bool active = false;
    int value = 0;
};

// False when `controller` is outside 0-120.
bool controllerEntry(const TGmsl& msl, int controller, ControllerEntry& entry);

// The key listeners hear when controller `controller` of the current Multi-Sample changed:
// "msl_cc_<number>".
std::string controllerKey(int controller);
// The controller number of such a key, or -1.
int controllerOfKey(const std::string& key);

// Writes the entry into the current Multi-Sample (value limited to 0-127), marks the
// Project modified and tells the listeners settingChanged(controllerKey(controller)). False
// when there is no current Multi-Sample or the number is outside 0-120.
bool setControllerEntry(Model& model, int controller, const ControllerEntry& entry);

} // namespace tg
