// The process-wide model: the open Projects, the current Project view, the preferences, and
// the operations on Projects and Multi-Samples.
#pragma once

#include "core/Message.h"
#include "core/ModelListener.h"
#include "core/Preferences.h"
#include "core/Records.h"

#include <array>
#include <memory>
#include <vector>

namespace tg {

constexpr int kVisibleProjectRows = 12;    // rows of the project list
constexpr int kVisibleMultiSampleRows = 6; // rows of the Multi-Sample list

// Changed only on the GUI thread; there are no locks.
class Model {
  public:
    Model();
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;

    // The one instance of the program.
    static Model& instance();

    // Back to the state at start: no Projects, default preferences, no audio input devices,
    // no listeners. Project records already allocated are kept for reuse.
    void reset();

    // Allocates all 128 Project records at once (start-up). Returns false when memory runs
    // out. Records not allocated here are allocated on first use.
    bool allocateProjects();

    // --- state ---
    int projectCount() const { return projectCount_; }
    int currentProjectIndex() const { return currentProject_; }
    int topProject() const { return topProject_; } // first visible row of the project list
    Project& project(int index);                   // 0 <= index < 128
    const Project& project(int index) const;
    // The current Project, or nullptr when no Project is open.
    Project* currentProject();
    // The Project the Multi-Sample operations work on: the current one, or, once the last
    // Project is gone, the slot it had (its mslCount set to 0).
    Project& view() { return *view_; }
    const Project& view() const { return *view_; }
    // The current Multi-Sample of the current Project, or nullptr when there is none.
    TGmsl* currentMultiSample();

    Preferences& preferences() { return prefs_; }
    const Preferences& preferences() const { return prefs_; }

    // Entries in the audio input device list; the device layer sets it when it builds the
    // list. Every Multi-Sample keeps one channel choice per device.
    int audioInputDeviceCount() const { return audioInputDeviceCount_; }
    void setAudioInputDeviceCount(int count) { audioInputDeviceCount_ = count < 0 ? 0 : count; }

    // Makes `index` the current Project (0 <= index < projectCount).
    void selectProject(int index);
    // Makes `index` the current Multi-Sample of the current Project (0 <= index < mslCount).
    void selectMultiSample(int index);
    // The selected key of the current Project's Multi-Samples (kept in its viewKey), 0..127,
    // or -1 when none is selected. Selecting -1 clears it.
    int currentKey() const;
    void selectKey(int note);

    // --- Project operations ---
    Result newProject();
    Result deleteProject();
    Result duplicateProject();
    Result moveProjectUp();
    Result moveProjectDown();

    // --- Multi-Sample operations (on the current Project view) ---
    Result addMultiSample();
    Result deleteMultiSample();
    Result duplicateMultiSample();
    Result moveMultiSampleUp();
    Result moveMultiSampleDown();

    // --- listeners ---
    void addListener(TonegrabberModelListener* listener);
    void removeListener(TonegrabberModelListener* listener);
    // Calls `notify` on every registered listener in registration order.
    template <typename Notify> void notifyListeners(Notify notify)
    {
        const std::vector<TonegrabberModelListener*> listeners = listeners_;
        for (TonegrabberModelListener* listener : listeners)
            notify(*listener);
    }

  private:
    Project* slot(int index); // allocates on first use; nullptr when memory runs out
    void pointViewAt(int index);
    void keepMultiSampleVisible();
    // After the Multi-Sample list of `p` changed: marks it modified and tells the listeners of
    // the new list and current Multi-Sample.
    void multiSampleListEdited(Project& p);
    void resetChannelLists(TGmsl& msl) const;

    std::array<std::unique_ptr<Project>, kMaxProjects> projects_;
    int projectCount_ = 0;
    int currentProject_ = 0;
    int topProject_ = 0;
    Project* view_ = nullptr;
    Preferences prefs_;
    int audioInputDeviceCount_ = 0;
    std::vector<TonegrabberModelListener*> listeners_;
};

} // namespace tg
