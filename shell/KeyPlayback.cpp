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
    const QSettings ini(QString::fromStdString(ini::iniFilePath()), QSettings::IniFormat);
    audio_.setOutputDeviceName(ini.value(ini::kOutputAudioDeviceName).toString().toStdString());
    const std::string midiInput = ini.value(ini::kInputMidiDeviceName).toString().toStdString();
    if (!midiInput.empty())
        midi_.midiInDeviceChanged(midiInput);
    listener_ = std::make_unique<DeviceModelListener>(model_, &audio_, &midi_);
    if (const TGmsl* msl = model_.currentMultiSample()) {
        audio_.currentMultiSampleChanged(*msl);
        midi_.currentMultiSampleChanged(*msl);
    }
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
