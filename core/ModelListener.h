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
};

} // namespace tg
