// "Project Wizard": the pages that gather the set-up record of a new recording Project (mode,
// name, data path, audio input and its channels, format, MIDI output and settings, key range,
// velocity layers, key step, lengths and auto-loop), with the checks of the name and folder.
#pragma once

#include "recording/ProjectSetup.h"

#include <QButtonGroup>
#include <QWidget>
#include <QWizard>

class QComboBox;

namespace tg {
class Model;
}

namespace tg::shell {

class SetupPage;

constexpr const char* kProjectWizardTitle = "Project Wizard";

// A column of radio buttons whose checked position is one wizard field ("choice").
class RadioChoice : public QWidget {
    Q_OBJECT
    Q_PROPERTY(int choice READ choice NOTIFY choiceChanged)
  public:
    // `texts` top to bottom; `initial` is checked.
    RadioChoice(const QStringList& texts, int initial, QWidget* parent = nullptr);
    int choice() const { return group_.checkedId(); }
    QAbstractButton* button(int position) const { return group_.button(position); }

  signals:
    void choiceChanged(int choice);

  private:
    QButtonGroup group_;
};

class ProjectWizard : public QWizard {
    Q_OBJECT
  public:
    enum Page {
        Introduction,
        RecordingMode,
        ProjectName,
        DataPath,
        AudioIn,
        SampleFormat,
        MidiOutDevices,
        MidiOutSettings,
        SamplingRange,
        VelocityLayers,
        KeyStep,
        RecordingLength,
        AutoLoop,
        AutoLoopComplexity,
        AutoLoopStart,
        Completed,
    };

    ProjectWizard(const Model& model, QWidget* parent = nullptr);

    // The answers as the set-up record a new Project is made from.
    ProjectSetupRecord setupRecord() const;

    int nextId() const override;
    bool validateCurrentPage() override;

  public slots:
    // The audio input device changed: its channels fill the two channel boxes.
    void onCurrentTextChanged(const QString& device);
    void onLeftChannelChanged(const QString& channel);
    void onRightChannelChanged(const QString& channel);

  private:
    void addPages();
    SetupPage* makePage(Page id, const QString& title, const QString& subTitle,
                        const QString& help);
    void addAudioInPage();
    void addAutoLoopPages();
    // Position of `channel` among the current device's channels; -1 for "Default" or none.
    int channelIndex(const QString& channel) const;

    const Model& model_;
    QComboBox* audioIn_ = nullptr;
    QComboBox* left_ = nullptr;
    QComboBox* right_ = nullptr;
    // The rows of the two channel boxes, shown only for a device with channels to choose.
    QWidget* leftRow_ = nullptr;
    QWidget* rightRow_ = nullptr;
    int leftChannel_ = -1;
    int rightChannel_ = -1;
};

} // namespace tg::shell
