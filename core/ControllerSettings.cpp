// Controller entries by controller number.
#include "core/ControllerSettings.h"

#include "core/Model.h"
#include "core/Records.h"

#include <algorithm>
#include <cstdlib>

namespace tg {

namespace {

// The active flag and the value of a controller number inside the record.
struct EntrySlots {
    uint16_t* active = nullptr;
    uint16_t* value = nullptr;
};

EntrySlots slotsOf(TGmsl& msl, int controller)
{
    if (controller < 0 || controller > kHighestStoredController)
        return {};
    if (controller < 32)
        return {&msl.controllerTable[controller][0], &msl.controllerTable[controller][1]};
    if (controller < 64)
        return {&msl.controllerTable[controller - 32][2], &msl.controllerTable[controller - 32][3]};
    return {&msl.parameterTable[controller - 64][0], &msl.parameterTable[controller - 64][1]};
}

constexpr const char* kKeyPrefix = "msl_cc_";

} // namespace

bool controllerEntry(const TGmsl& msl, int controller, ControllerEntry& entry)
{
    const EntrySlots slots = slotsOf(const_cast<TGmsl&>(msl), controller);
    if (slots.active == nullptr)
        return false;
    entry.active = *slots.active != 0;
    entry.value = *slots.value;
    return true;
}

std::string controllerKey(int controller)
{
    return kKeyPrefix + std::to_string(controller);
}

int controllerOfKey(const std::string& key)
{
    const std::string prefix = kKeyPrefix;
    if (key.size() <= prefix.size() || key.size() > prefix.size() + 3 ||
        key.compare(0, prefix.size(), prefix) != 0)
        return -1;
    int number = 0;
    for (size_t i = prefix.size(); i < key.size(); ++i) {
        if (key[i] < '0' || key[i] > '9')
            return -1;
        number = number * 10 + (key[i] - '0');
    }
    return number <= kHighestStoredController ? number : -1;
}

bool setControllerEntry(Model& model, int controller, const ControllerEntry& entry)
{
    TGmsl* msl = model.currentMultiSample();
    if (msl == nullptr)
        return false;
    const EntrySlots slots = slotsOf(*msl, controller);
    if (slots.active == nullptr)
        return false;
    *slots.active = entry.active ? 1 : 0;
    *slots.value = uint16_t(std::clamp(entry.value, 0, 127));
    model.currentProject()->modified = 1;
    const std::string key = controllerKey(controller);
    model.notifyListeners([&](TonegrabberModelListener& l) { l.settingChanged(key); });
    return true;
}

} // namespace tg
