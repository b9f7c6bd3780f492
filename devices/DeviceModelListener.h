// Connects AudioManager and MidiManager to the model: the notifications they react to are
// forwarded with the current Multi-Sample's record.
#pragma once

#include "core/ModelListener.h"

#include <string>

namespace tg {

class AudioManager;
class MidiManager;
class Model;

// Registers itself with `model` on construction and removes itself on destruction; either
// manager may be null. GUI thread only, like the model.
class DeviceModelListener : public TonegrabberModelListener {
  public:
    DeviceModelListener(Model& model, AudioManager* audio, MidiManager* midi);
    ~DeviceModelListener() override;
    DeviceModelListener(const DeviceModelListener&) = delete;
    DeviceModelListener& operator=(const DeviceModelListener&) = delete;

    void currentProjectChanged(int index) override;
    void currentMultiSampleChanged(int index) override;
    void settingChanged(const std::string& key) override;

  private:
    void multiSampleSwitched();

    Model& model_;
    AudioManager* audio_;
    MidiManager* midi_;
};

} // namespace tg
