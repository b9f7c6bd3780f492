// The notification interface through which panels and device managers follow the model.
#pragma once

#include <string>

namespace tg {

// Every notification has an empty body, so a listener overrides only what it shows.
// Notifications arrive on the GUI thread, after the change has been made, in the order the
// listeners were registered.
class TonegrabberModelListener {
  public:
    virtual ~TonegrabberModelListener() = default;

    // Projects were added, removed or reordered (names and order of the project list).
    virtual void projectListChanged() {}
    // The current Project is now `index` (or none is left when the Project count is 0).
    virtual void currentProjectChanged(int index) { (void)index; }
    // Multi-Samples of the current Project were added, removed or reordered.
    virtual void multiSampleListChanged() {}
    // The current Multi-Sample of the current Project is now `index`.
    virtual void currentMultiSampleChanged(int index) { (void)index; }
    // A value was written through the keyed settings accessor; `key` is the key as given
    // (for example "msl_recordsettings_xfadelength" or "prefs_datapath").
    virtual void settingChanged(const std::string& key) { (void)key; }
    // The preferences record was replaced as a whole (loaded, restored, or made the
    // current Multi-Sample's settings).
    virtual void preferencesChanged() {}

    // Name, folder, data path or modified flag of Project `index` changed (renamed, saved,
    // loaded over, relocated).
    virtual void projectChanged(int index) { (void)index; }
    // Name or settings of Multi-Sample `index` of the current Project changed as a whole
    // (renamed, pasted over).
    virtual void multiSampleChanged(int index) { (void)index; }
    // The selected key of the current Multi-Sample is now `note` (0..127), or -1 for none.
    virtual void currentKeyChanged(int note) { (void)note; }
    // Key records of Multi-Sample `msl` of Project `project` changed: selection, lock, names,
    // markers or audio. -1 for `msl` means every Multi-Sample of that Project.
    virtual void keysChanged(int project, int msl)
    {
        (void)project;
        (void)msl;
    }
};

} // namespace tg
