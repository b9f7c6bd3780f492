// Key-Sample playback in the desktop program.
#include "shell/KeyPlayback.h"

#include "core/IniKeys.h"
#include "core/Model.h"
#include "devices/AudioEngine.h"

#include <QSettings>

namespace tg::shell {

KeyPlayback::KeyPlayback(Model& model, QObject* parent)
    : QObject(parent), model_(model), keys_(model, audio_)
{
    midi_.setNotePlayer([this](int note) { pressKey(note); });
}

void KeyPlayback::openDevices()
{
    devicesOpen_ = true;
    applyDevicePreferences();
    listener_ = std::make_unique<DeviceModelListener>(model_, &audio_, &midi_);
    if (const TGmsl* msl = model_.currentMultiSample()) {
        audio_.currentMultiSampleChanged(*msl);
        midi_.currentMultiSampleChanged(*msl);
    }
}

void KeyPlayback::applyDevicePreferences()
{
    if (!devicesOpen_)
        return;
    const QSettings ini(QString::fromStdString(ini::iniFilePath()), QSettings::IniFormat);
    const std::string output = ini.value(ini::kOutputAudioDeviceName).toString().toStdString();
    if (output != audio_.outputDeviceName()) {
        audio_.setOutputDeviceName(output);
        // Reopens the streams on the new output (nothing happens while they already match).
        if (const TGmsl* msl = model_.currentMultiSample(); msl && listener_)
            audio_.currentMultiSampleChanged(*msl);
    }
    const std::string midiInput = ini.value(ini::kInputMidiDeviceName).toString().toStdString();
    if (midiInput != midiInput_) {
        midiInput_ = midiInput;
        if (!midiInput.empty())
            midi_.midiInDeviceChanged(midiInput);
    }
    midi_.setThrough(ini.value(ini::kInputMidiThrough, false).toBool(),
                     ini.value(ini::kInputMidiDeviceChannel, 1).toInt());
}

void KeyPlayback::pressKey(int note)
{
    std::string message;
    if (!keys_.play(note, message))
        emit playbackFailed(QString::fromStdString(message));
}

void KeyPlayback::releaseKey(int note)
{
    if (note == keys_.lastNote())
        keys_.release();
}

void KeyPlayback::playCurrentKey()
{
    pressKey(model_.currentKey());
}

void KeyPlayback::releaseCurrentKey()
{
    releaseKey(model_.currentKey());
}

void KeyPlayback::stop()
{
    audio::player().requestStop();
}

} // namespace tg::shell
