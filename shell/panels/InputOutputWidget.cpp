// The device panel.
#include "shell/panels/InputOutputWidget.h"

#include "core/IniKeys.h"
#include "core/Model.h"
#include "devices/DeviceTables.h"
#include "devices/InputChannelChoice.h"
#include "audiofile/RecordFormats.h"
#include "shell/IniFile.h"
#include "shell/MessageBoxes.h"
#include "shell/panels/ControllerTableWidget.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

namespace tg::shell {

const char* const InputOutputWidget::kVarious = "-Various-";

namespace {

// Item data of a channel box's entries: the channel index, -1 for "Default", and this for
// "-Various-".
constexpr int kVariousChannel = -2;

// A table's entries, or just its closing pseudo entry when start-up did not fill it (no
// driver, or a test without devices).
std::vector<std::string> entriesOr(std::vector<std::string> entries, const char* none)
{
    if (entries.empty())
        entries.push_back(none);
    return entries;
}

std::vector<std::string> audioInNames()
{
    std::vector<std::string> names;
    for (const AudioInputEntry& entry : deviceTables().audioIn)
        names.push_back(entry.name);
    if (names.empty())
        names = {kVstPluginEntry, kNoAudioInEntry};
    return names;
}

std::vector<std::string> formatNames()
{
    std::vector<std::string> names;
    for (int i = 0; i < kRecordFormatCount; ++i)
        names.push_back(recordFormatTable()[i].name);
    return names;
}

QComboBox* comboOf(const std::vector<std::string>& entries)
{
    auto* box = new QComboBox;
    for (const std::string& entry : entries)
        box->addItem(QString::fromStdString(entry));
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(12);
    return box;
}

// Shows `text` in `box`; a text not in the list (a device that is gone) is added, so the
// stored name stays visible instead of silently showing another device.
void showText(QComboBox* box, const QString& text)
{
    int row = box->findText(text);
    if (row < 0) {
        box->addItem(text);
        row = box->count() - 1;
    }
    box->setCurrentIndex(row);
}

} // namespace

InputOutputWidget::InputOutputWidget(Model& model, QWidget* parent) : QWidget(parent), model_(model)
{
    setObjectName(QStringLiteral("InputOutputWidget"));
    auto* layout = new QVBoxLayout(this);
    const auto ini = openIniFile();

    auto* audioOutGroup = new QGroupBox(tr("Audio Out"));
    auto* audioOutForm = new QFormLayout(audioOutGroup);
    audioOut_ = comboOf(entriesOr(deviceTables().audioOut, kNoAudioOutEntry));
    showText(audioOut_, ini->value(ini::kOutputAudioDeviceName, kNoAudioOutEntry).toString());
    connect(audioOut_, &QComboBox::textActivated, this, [this](const QString& name) {
        openIniFile()->setValue(ini::kOutputAudioDeviceName, name);
        emit globalDevicesChanged();
    });
    audioOutForm->addRow(tr("Audio Out Device"), audioOut_);
    layout->addWidget(audioOutGroup);

    auto* midiInGroup = new QGroupBox(tr("Midi In"));
    auto* midiInForm = new QFormLayout(midiInGroup);
    midiIn_ = comboOf(entriesOr(deviceTables().midiIn, kNoMidiInEntry));
    showText(midiIn_, ini->value(ini::kInputMidiDeviceName, kNoMidiInEntry).toString());
    connect(midiIn_, &QComboBox::textActivated, this, [this](const QString& name) {
        openIniFile()->setValue(ini::kInputMidiDeviceName, name);
        emit globalDevicesChanged();
    });
    midiInChannel_ = new QSpinBox;
    midiInChannel_->setRange(1, 16);
    midiInChannel_->setValue(ini->value(ini::kInputMidiDeviceChannel, 1).toInt());
    midiInChannel_->setToolTip(tr("The channel whose messages Through passes on"));
    connect(midiInChannel_, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int channel) {
        openIniFile()->setValue(ini::kInputMidiDeviceChannel, channel);
        emit globalDevicesChanged();
    });
    midiThrough_ = new QCheckBox(tr("Through"));
    midiThrough_->setChecked(ini->value(ini::kInputMidiThrough, false).toBool());
    midiThrough_->setToolTip(tr("Play the sound source from the MIDI keyboard: its messages go "
                                "to the MIDI output on the Multi-Sample's channel, instead of "
                                "playing the recorded Key-Samples"));
    connect(midiThrough_, &QCheckBox::toggled, this, [this](bool through) {
        openIniFile()->setValue(ini::kInputMidiThrough, through);
        emit globalDevicesChanged();
    });
    midiInForm->addRow(tr("MIDI In Device"), midiIn_);
    midiInForm->addRow(tr("Channel"), midiInChannel_);
    midiInForm->addRow(QString(), midiThrough_);
    layout->addWidget(midiInGroup);

    auto* audioInGroup = new QGroupBox(tr("Audio In"));
    auto* audioInForm = new QFormLayout(audioInGroup);
    audioIn_ =
        projectCombo(audioInNames(), ProjectWideSetting::AudioInDevice, tr("audio input device"));
    format_ =
        projectCombo(formatNames(), ProjectWideSetting::AudioInFormat, tr("audio input format"));
    // Device names can be long and are cut; the few format names are short and always read whole.
    format_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    format_->setMinimumWidth(format_->sizeHint().width());
    audioInForm->addRow(tr("Audio In Device"), audioIn_);
    audioInForm->addRow(tr("Audio Format"), format_);
    leftChannel_ = channelCombo(ProjectWideSetting::AudioInChannelLeft, "audioInChannelLeft");
    rightChannel_ = channelCombo(ProjectWideSetting::AudioInChannelRight, "audioInChannelRight");
    leftChannelLabel_ = new QLabel(tr("Left Channel"));
    rightChannelLabel_ = new QLabel(tr("Right Channel"));
    audioInForm->addRow(leftChannelLabel_, leftChannel_);
    audioInForm->addRow(rightChannelLabel_, rightChannel_);
    layout->addWidget(audioInGroup);

    auto* midiOutGroup = new QGroupBox(tr("Midi Out"));
    auto* midiOutForm = new QFormLayout(midiOutGroup);
    midiOut_ = projectCombo(entriesOr(deviceTables().midiOut, kNoMidiOutEntry),
                            ProjectWideSetting::MidiOutDevice, tr("MIDI output device"));
    // The channel is stored 0-based and shown 1-based.
    midiOutChannel_ =
        projectSpin(1, 16, ProjectWideSetting::MidiOutChannel, tr("MIDI output channel"));
    program_ = projectSpin(0, 127, ProjectWideSetting::MidiOutProgram, tr("MIDI program"));
    midiOutForm->addRow(tr("MIDI Out Device"), midiOut_);
    midiOutForm->addRow(tr("Channel"), midiOutChannel_);
    midiOutForm->addRow(tr("Program"), program_);

    // The controllers the current Multi-Sample sends with its program, in a window of their
    // own: 121 rows do not fit the dock.
    auto* controllerWindow = new QWidget(this, Qt::Tool);
    controllerWindow->setWindowTitle(tr("MIDI Controllers"));
    auto* controllers = new QTabWidget;
    controllers->addTab(new MidiControllerWidget(model_), tr("Controllers"));
    controllers->addTab(new ParameterWidget(model_), tr("Parameters"));
    (new QVBoxLayout(controllerWindow))->addWidget(controllers);
    controllerWindow->resize(360, 480);
    auto* showControllers = new QPushButton(tr("Controllers..."));
    connect(showControllers, &QPushButton::clicked, controllerWindow, [controllerWindow] {
        controllerWindow->show();
        controllerWindow->raise();
    });
    midiOutForm->addRow(QString(), showControllers);
    layout->addWidget(midiOutGroup);
    layout->addStretch(1);

    refresh();
    model_.addListener(this);
}

InputOutputWidget::~InputOutputWidget()
{
    model_.removeListener(this);
}

QComboBox* InputOutputWidget::projectCombo(const std::vector<std::string>& entries,
                                           ProjectWideSetting setting, const QString& what)
{
    QComboBox* box = comboOf(entries);
    connect(box, &QComboBox::textActivated, this, [this, setting, what](const QString& text) {
        if (!refreshing_ && text != QLatin1String(kVarious))
            choose(setting, what, text.toStdString());
    });
    return box;
}

QSpinBox* InputOutputWidget::projectSpin(int minimum, int maximum, ProjectWideSetting setting,
                                         const QString& what)
{
    auto* box = new QSpinBox;
    // One step below the range stands for "-Various-"; a user cannot step down to it.
    box->setSpecialValueText(QString::fromLatin1(kVarious));
    box->setRange(minimum, maximum);
    box->setKeyboardTracking(false);
    const int offset = minimum; // the stored value is the shown one minus this, for channels
    connect(box, QOverload<int>::of(&QSpinBox::valueChanged), this,
            [this, box, setting, what, minimum, offset](int value) {
                if (refreshing_ || value < minimum)
                    return;
                if (box->minimum() < minimum)
                    box->setMinimum(minimum);
                const int stored =
                    setting == ProjectWideSetting::MidiOutChannel ? value - offset : value;
                choose(setting, what, std::to_string(stored));
            });
    return box;
}

QComboBox* InputOutputWidget::channelCombo(ProjectWideSetting setting, const char* objectName)
{
    QComboBox* box = comboOf({});
    box->setObjectName(QString::fromLatin1(objectName));
    connect(box, QOverload<int>::of(&QComboBox::activated), this, [this, box, setting](int row) {
        const int channel = box->itemData(row).toInt();
        if (!refreshing_ && channel != kVariousChannel)
            choose(setting, tr("audio input channels"), std::to_string(channel));
    });
    return box;
}

void InputOutputWidget::showChannels(QComboBox* box, QLabel* label, ProjectWideSetting setting,
                                     const std::vector<std::string>& names)
{
    box->clear();
    box->setVisible(!names.empty());
    label->setVisible(!names.empty());
    if (names.empty())
        return;
    for (size_t i = 0; i < names.size(); ++i)
        box->addItem(QString::fromStdString(names[i]), int(i));
    box->addItem(QStringLiteral("Default"), -1);
    const std::optional<std::string> value = commonValue(model_, setting);
    if (!value) {
        box->insertItem(0, QString::fromLatin1(kVarious), kVariousChannel);
        box->setCurrentIndex(0);
        return;
    }
    // A stored channel the device does not have records as "Default" does.
    const int row = box->findData(std::stoi(*value));
    box->setCurrentIndex(row >= 0 ? row : box->count() - 1);
}

bool InputOutputWidget::confirmOverwrite(const QString& what)
{
    const Project* project = model_.currentProject();
    if (!project || project->mslCount < 2)
        return true;
    return askYesNo(this, tr("Confirmation"),
                    tr("This operation will overwrite the %1 for all Multi-Samples in this "
                       "project. Do you want to proceed?")
                        .arg(what));
}

void InputOutputWidget::choose(ProjectWideSetting setting, const QString& what,
                               const std::string& value)
{
    if (model_.currentMultiSample() && confirmOverwrite(what))
        setForAllMultiSamples(model_, setting, value);
    // Declined, or written: either way the boxes show what the Project now holds.
    refresh();
}

void InputOutputWidget::showIn(QComboBox* box, ProjectWideSetting setting)
{
    const int various = box->findText(QString::fromLatin1(kVarious));
    if (various >= 0)
        box->removeItem(various);
    const std::optional<std::string> value = commonValue(model_, setting);
    if (value) {
        showText(box, QString::fromStdString(*value));
    } else {
        box->insertItem(0, QString::fromLatin1(kVarious));
        box->setCurrentIndex(0);
    }
}

void InputOutputWidget::showIn(QSpinBox* box, ProjectWideSetting setting, int shownOffset)
{
    const std::optional<std::string> value = commonValue(model_, setting);
    const int normalMinimum = setting == ProjectWideSetting::MidiOutChannel ? 1 : 0;
    if (value) {
        box->setMinimum(normalMinimum);
        box->setValue(std::stoi(*value) + shownOffset);
    } else {
        box->setMinimum(normalMinimum - 1);
        box->setValue(normalMinimum - 1);
    }
}

void InputOutputWidget::refresh()
{
    refreshing_ = true;
    const bool project = model_.currentMultiSample() != nullptr;
    for (QWidget* box : std::initializer_list<QWidget*>{
             audioIn_, format_, leftChannel_, rightChannel_, midiOut_, midiOutChannel_, program_})
        box->setEnabled(project);
    if (!project) {
        for (QWidget* hidden : std::initializer_list<QWidget*>{
                 leftChannel_, rightChannel_, leftChannelLabel_, rightChannelLabel_})
            hidden->setVisible(false);
    } else {
        showIn(audioIn_, ProjectWideSetting::AudioInDevice);
        showIn(format_, ProjectWideSetting::AudioInFormat);
        // Channels are chosen for one device: none while the Multi-Samples differ on it.
        const std::optional<std::string> device =
            commonValue(model_, ProjectWideSetting::AudioInDevice);
        const std::vector<std::string> names =
            device ? choosableInputChannels(deviceTables(), *device) : std::vector<std::string>{};
        showChannels(leftChannel_, leftChannelLabel_, ProjectWideSetting::AudioInChannelLeft,
                     names);
        showChannels(rightChannel_, rightChannelLabel_, ProjectWideSetting::AudioInChannelRight,
                     names);
        // A mono take keeps the left channel only.
        const std::optional<std::string> format =
            commonValue(model_, ProjectWideSetting::AudioInFormat);
        WaveFormat wave;
        rightChannel_->setEnabled(!format || !formatFromName(format->c_str(), wave) ||
                                  wave.nChannels != 1);
        showIn(midiOut_, ProjectWideSetting::MidiOutDevice);
        showIn(midiOutChannel_, ProjectWideSetting::MidiOutChannel, 1);
        showIn(program_, ProjectWideSetting::MidiOutProgram, 0);
    }
    refreshing_ = false;
}

void InputOutputWidget::currentProjectChanged(int)
{
    refresh();
}

void InputOutputWidget::currentMultiSampleChanged(int)
{
    refresh();
}

void InputOutputWidget::multiSampleListChanged()
{
    refresh();
}

void InputOutputWidget::multiSampleChanged(int)
{
    refresh();
}

void InputOutputWidget::settingChanged(const std::string& key)
{
    // The MIDI output device is listened for as "msl_MIDIOutDevice" (capital O): a change
    // reported under the accessor's own key "msl_MIDIoutDevice" does not refresh the panel.
    // The panel's own changes refresh it anyway.
    static const char* const watched[] = {
        "msl_AudioInDevice", "msl_AudioInFormat",  "msl_AudioInChannelL", "msl_AudioInChannelR",
        "msl_MIDIOutDevice", "msl_MIDIoutChannel", "msl_MIDIoutProgram"};
    for (const char* name : watched)
        if (key == name) {
            refresh();
            return;
        }
}

} // namespace tg::shell
