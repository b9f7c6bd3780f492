// The device panel: the global audio output and MIDI input, and the current Project's audio
// input, recording format and MIDI output, with "-Various-" where its Multi-Samples differ.
#pragma once

#include "core/ModelListener.h"
#include "shell/panels/ProjectWideSetting.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QSpinBox;

namespace tg {
class Model;
}

namespace tg::shell {

class InputOutputWidget : public QWidget, public TonegrabberModelListener {
    Q_OBJECT
  public:
    static const char* const kVarious; // "-Various-"

    explicit InputOutputWidget(Model& model, QWidget* parent = nullptr);
    ~InputOutputWidget() override;

    QComboBox* audioOutDevice() const { return audioOut_; }
    QComboBox* midiInDevice() const { return midiIn_; }
    QSpinBox* midiInChannel() const { return midiInChannel_; }
    QCheckBox* midiThrough() const { return midiThrough_; }
    QComboBox* audioInDevice() const { return audioIn_; }
    QComboBox* audioFormat() const { return format_; }
    QComboBox* leftChannel() const { return leftChannel_; }
    QComboBox* rightChannel() const { return rightChannel_; }
    QComboBox* midiOutDevice() const { return midiOut_; }
    QSpinBox* midiOutChannel() const { return midiOutChannel_; }
    QSpinBox* midiOutProgram() const { return program_; }

    void currentProjectChanged(int index) override;
    void currentMultiSampleChanged(int index) override;
    void multiSampleListChanged() override;
    void multiSampleChanged(int index) override;
    void settingChanged(const std::string& key) override;

  signals:
    // The audio output, the MIDI input, its channel or Through was chosen (and stored in the
    // preferences): playback takes them up at once.
    void globalDevicesChanged();

  private:
    QComboBox* projectCombo(const std::vector<std::string>& entries, ProjectWideSetting setting,
                            const QString& what);
    QSpinBox* projectSpin(int minimum, int maximum, ProjectWideSetting setting,
                          const QString& what);
    QComboBox* channelCombo(ProjectWideSetting setting, const char* objectName);
    // Fills a channel box with the names the Project's audio input device offers; the box
    // and its label hide when the device offers none.
    void showChannels(QComboBox* box, QLabel* label, ProjectWideSetting setting,
                      const std::vector<std::string>& names);
    void refresh();
    void showIn(QComboBox* box, ProjectWideSetting setting);
    void showIn(QSpinBox* box, ProjectWideSetting setting, int shownOffset);
    // Asks before overwriting a setting of several Multi-Samples; false when declined.
    bool confirmOverwrite(const QString& what);
    void choose(ProjectWideSetting setting, const QString& what, const std::string& value);

    Model& model_;
    bool refreshing_ = false;
    QComboBox* audioOut_ = nullptr;
    QComboBox* midiIn_ = nullptr;
    QSpinBox* midiInChannel_ = nullptr;
    QCheckBox* midiThrough_ = nullptr;
    QComboBox* audioIn_ = nullptr;
    QComboBox* format_ = nullptr;
    QComboBox* leftChannel_ = nullptr;
    QComboBox* rightChannel_ = nullptr;
    QLabel* leftChannelLabel_ = nullptr;
    QLabel* rightChannelLabel_ = nullptr;
    QComboBox* midiOut_ = nullptr;
    QSpinBox* midiOutChannel_ = nullptr;
    QSpinBox* program_ = nullptr;
};

} // namespace tg::shell
