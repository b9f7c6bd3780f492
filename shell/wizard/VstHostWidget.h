// "VST Host": the set-up of the hosted instrument. The user picks a SoundFont file and one of
// its presets (by bank, program and name) or an installed LV2 instrument, sets its
// parameters, tries it from a row of keys, and keeps the choice for recording.
#pragma once

#include "devices/InstrumentCatalog.h"
#include "devices/InstrumentHost.h"
#include "devices/InstrumentSpec.h"

#include <QDialog>

#include <memory>
#include <vector>

class QDoubleSpinBox;
class QLineEdit;
class QListWidget;
class QRadioButton;
class QStackedWidget;
class QTableWidget;

namespace tg {
class AudioManager;
}

namespace tg::shell {

constexpr const char* kVstHostTitle = "VST Host";

class VstHostWidget : public QDialog {
    Q_OBJECT
  public:
    // Starts from the choice kept in "VstHostWidget/PluginPath".
    explicit VstHostWidget(QWidget* parent = nullptr);
    ~VstHostWidget() override;

    // The instrument as chosen now.
    InstrumentSpec choice() const;

    // Lists the presets of a SoundFont file (a message box says why a file cannot be read).
    void loadSoundFont(const QString& path);
    // Shows the control inputs of the chosen LV2 instrument.
    void showLv2Controls();

    // Plays `note` on the chosen instrument through the audio output (Note On or Note Off);
    // false after saying why when nothing can be played.
    bool playNote(int note, bool on);

  public slots:
    // Keeps the choice for the next recording and session.
    void accept() override;

  private:
    void buildSoundFontPage(QWidget* page);
    void buildLv2Page(QWidget* page);
    QWidget* buildKeys();
    void showChoice(const InstrumentSpec& choice);
    void stopPlaying();

    QRadioButton* soundFont_;
    QRadioButton* lv2_;
    QStackedWidget* pages_;
    QLineEdit* path_;
    QTableWidget* presets_;
    QDoubleSpinBox* gain_;
    QListWidget* instruments_;
    QTableWidget* controls_;
    std::vector<SoundFontPreset> presetList_;
    std::vector<Lv2Control> controlList_;

    std::unique_ptr<AudioManager> audio_;
    InstrumentHost host_;
    std::string playingSpec_; // the text form of what host_ runs
};

} // namespace tg::shell
