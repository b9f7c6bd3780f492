// The desktop program's playback of Key-Samples: keys pressed on the keyboard dock, the play
// buttons and notes arriving on the MIDI input, all on the preferences' audio output.
#pragma once

#include "devices/AudioManager.h"
#include "devices/DeviceModelListener.h"
#include "devices/KeySamplePlayback.h"
#include "devices/MidiManager.h"

#include <QObject>
#include <QString>

#include <memory>

namespace tg {
class Model;
}

namespace tg::shell {

// The audio streams follow the current Multi-Sample (its input, the preferences' output)
// through the model listener; the MIDI input is the one named in the preferences.
class KeyPlayback : public QObject {
    Q_OBJECT
  public:
    explicit KeyPlayback(Model& model, QObject* parent = nullptr);

    // After the device layer was initialized: takes the output and MIDI input the
    // preferences name ("Output/AudioDeviceName", "Input/MidiDeviceName") and opens the
    // streams of the current Multi-Sample.
    void openDevices();
    // Takes up the output, MIDI input, its channel and Through the preferences name now
    // (the device panel calls this after a choice); nothing before openDevices().
    void applyDevicePreferences();

    AudioManager& audio() { return audio_; }
    MidiManager& midi() { return midi_; }
    KeyPlayer& keys() { return keys_; }

  public slots:
    // A key went down: its Key-Sample plays, its loop repeating until the key goes up.
    void pressKey(int note);
    void releaseKey(int note);
    // Plays the current key as if held (the Play button), until releaseKey() or stop().
    void playCurrentKey();
    void releaseCurrentKey();
    void stop();

  signals:
    // A Key-Sample could not be played; the text says why.
    void playbackFailed(const QString& message);

  private:
    Model& model_;
    AudioManager audio_;
    MidiManager midi_;
    KeyPlayer keys_;
    std::unique_ptr<DeviceModelListener> listener_; // from openDevices() on
    bool devicesOpen_ = false;
    std::string midiInput_; // the MIDI input last opened
};

} // namespace tg::shell
