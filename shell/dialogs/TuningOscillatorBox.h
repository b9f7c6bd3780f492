// The record dialog's "Tuning Oscillator" group: a reference tone on the audio output to tune
// the sound source against before it is sampled.
#pragma once

#include "devices/TuningOscillator.h"

#include <QGroupBox>

class QComboBox;
class QLabel;
class QPushButton;
class QSpinBox;
class QTimer;

namespace tg::shell {

// The waveform, note and volume are remembered in the INI file; changing one while the tone
// plays restarts it with the new choice, so a musician can step through notes by ear.
class TuningOscillatorBox : public QGroupBox {
    Q_OBJECT
  public:
    explicit TuningOscillatorBox(QWidget* parent = nullptr);

    QComboBox* waveformBox() const { return waveform_; }
    QComboBox* noteBox() const { return note_; }
    QSpinBox* volumeBox() const { return volume_; }
    QPushButton* playButton() const { return play_; }
    // Why the tone could not be played, or empty.
    QString problem() const;
    bool isPlaying() const { return oscillator_.isPlaying(); }

  public slots:
    // "Start" plays the tone, "Stop" stops it.
    void togglePlaying();
    void stop();
    // A recording starts: the tone stops and stays off, so that it never sounds in a take.
    void stopForRecording();

  private:
    void play();
    void restartIfPlaying();
    void remember(const char* key, const QVariant& value);
    TuningTone chosenTone() const;

    QComboBox* waveform_ = nullptr;
    QComboBox* note_ = nullptr;
    QSpinBox* volume_ = nullptr;
    QPushButton* play_ = nullptr;
    QLabel* problem_ = nullptr;
    // While the button says "Stop": notices a tone that ended without it (a Key-Sample
    // played from a key or by MIDI takes the output over).
    QTimer* watch_ = nullptr;
    TuningOscillator oscillator_;
};

} // namespace tg::shell
