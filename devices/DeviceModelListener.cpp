// Forwarding model notifications to the device managers.
#include "devices/DeviceModelListener.h"

#include "core/ControllerSettings.h"
#include "core/Model.h"
#include "devices/AudioManager.h"
#include "devices/MidiManager.h"

namespace tg {

DeviceModelListener::DeviceModelListener(Model& model, AudioManager* audio, MidiManager* midi)
    : model_(model), audio_(audio), midi_(midi)
{
    model_.addListener(this);
}

DeviceModelListener::~DeviceModelListener()
{
    model_.removeListener(this);
}

void DeviceModelListener::multiSampleSwitched()
{
    const TGmsl* msl = model_.currentMultiSample();
    if (msl == nullptr)
        return;
    if (audio_ != nullptr)
        audio_->currentMultiSampleChanged(*msl);
    if (midi_ != nullptr)
        midi_->currentMultiSampleChanged(*msl);
}

// Another Project brings its own current Multi-Sample.
void DeviceModelListener::currentProjectChanged(int)
{
    multiSampleSwitched();
}

void DeviceModelListener::currentMultiSampleChanged(int)
{
    multiSampleSwitched();
}

void DeviceModelListener::settingChanged(const std::string& key)
{
    const TGmsl* msl = model_.currentMultiSample();
    if (msl == nullptr || key.rfind("msl_", 0) != 0)
        return;
    if (audio_ != nullptr)
        audio_->multiSampleSettingChanged(*msl, key);
    if (midi_ != nullptr) {
        const int controller = controllerOfKey(key);
        if (controller >= 0)
            midi_->controllerChanged(*msl, controller);
        else
            midi_->multiSampleSettingChanged(*msl, key);
    }
}

} // namespace tg
