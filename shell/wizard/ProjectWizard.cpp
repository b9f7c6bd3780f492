#include "shell/wizard/ProjectWizard.h"

#include "core/Model.h"
#include "devices/DeviceTables.h"
#include "devices/InputChannelChoice.h"
#include "audiofile/RecordFormats.h"

#include <algorithm>

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace tg::shell {

namespace {

constexpr int kKeyCounts[] = {37, 49, 61, 76, 88, 128};

const char* const kRecordingLengthHelp =
    "The recording length should be adapted to the sound to be sampled.<br><br>Try these "
    "values:<br><br>~5 s for drums<br>~12 s for pads/medium length tones<br>~25 s for "
    "pianos<br><br>The option to record release tails is only for advanced users. Beginners "
    "should set the release length to zero and adjust the release time in a sample player.";
const char* const kKeyStepHelp =
    "The key step is the distance between the keys that will be sampled. If you want to sample "
    "chromatically, you should enter 1. When sampling MIDI gear, a key step of 6 (every 6th "
    "note) often is sufficient. <br><br>Use as high values as possible to save sample space and "
    "time.";
const char* const kVelocityLayersHelp =
    "For each velocity layer Tonegrabber will create a dedicated multisample within the "
    "project.<br>If your instrument is not velocity-sensitive just keep 1. Otherwise 2 to 4 "
    "layers might be ok.<br><br>More velocity layers increase the required storage space and "
    "the time to record your instrument.";
const char* const kMidiOutSettingsHelp =
    "The channel has to match your instrument's MIDI receive channel.<br><br>If you don't want "
    "Tonegrabber to send program changes set MIDI Program to 0.";

// A combo box of `names` with `current` selected; a current name the list lacks (a device not
// connected now) is put first so that the preferences' choice stays the default.
QComboBox* namesBox(const std::vector<std::string>& names, const QString& current)
{
    auto* box = new QComboBox;
    for (const std::string& name : names)
        box->addItem(QString::fromStdString(name));
    if (box->findText(current) < 0)
        box->insertItem(0, current);
    box->setCurrentIndex(box->findText(current));
    return box;
}

QWidget* labelled(const QString& label, QWidget* field)
{
    auto* row = new QWidget;
    auto* layout = new QFormLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addRow(label, field);
    return row;
}

} // namespace

// A page whose fields are registered by the wizard that lays it out.
class SetupPage : public QWizardPage {
  public:
    using QWizardPage::registerField;
};

RadioChoice::RadioChoice(const QStringList& texts, int initial, QWidget* parent) : QWidget(parent)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    for (int i = 0; i < texts.size(); ++i) {
        auto* radio = new QRadioButton(texts[i]);
        group_.addButton(radio, i);
        layout->addWidget(radio);
    }
    group_.button(initial)->setChecked(true);
    connect(&group_, &QButtonGroup::idToggled, this, [this](int id, bool on) {
        if (on)
            emit choiceChanged(id);
    });
}

ProjectWizard::ProjectWizard(const Model& model, QWidget* parent) : QWizard(parent), model_(model)
{
    setWindowTitle(QString::fromLatin1(kProjectWizardTitle));
    setObjectName(QStringLiteral("ProjectWizard"));
    setWizardStyle(QWizard::ClassicStyle);
    addPages();
}

SetupPage* ProjectWizard::makePage(Page id, const QString& title, const QString& subTitle,
                                   const QString& help)
{
    auto* page = new SetupPage;
    page->setTitle(title);
    page->setSubTitle(subTitle);
    auto* layout = new QVBoxLayout(page);
    if (!help.isEmpty()) {
        auto* text = new QLabel(help);
        text->setWordWrap(true);
        text->setObjectName(QStringLiteral("help"));
        layout->addWidget(text);
        layout->addSpacing(12);
    }
    setPage(id, page);
    return page;
}

void ProjectWizard::addPages()
{
    const Preferences& prefs = model_.preferences();
    const DeviceTables& tables = deviceTables();

    makePage(Introduction, tr("Introduction"), tr("Welcome to the Project Wizard."),
             tr("This wizard creates a new Project for recording an instrument: it asks for the "
                "recording mode, where the samples go, the audio and MIDI devices, which keys "
                "and velocities to record, and how long each note is held.<br><br>Press Next to "
                "begin."));

    SetupPage* page = makePage(RecordingMode, tr("Recording Mode"),
                               tr("How the instrument is played and recorded."),
                               tr("Automatic recording plays and records every key by itself. "
                                  "Semi-automatic recording lets you play each key and check "
                                  "each take. Plugin recording records the instrument set up "
                                  "in the VST Host."));
    auto* mode = new RadioChoice({tr("Automatic recording (MIDI instruments)"),
                                  tr("Semi-automatic recording"),
                                  tr("Plugin recording (VST2/64 bit) - open VST Host first")},
                                 0);
    mode->setObjectName(QStringLiteral("recordingMode"));
    page->layout()->addWidget(mode);
    page->registerField(QStringLiteral("project.recording_mode"), mode, "choice",
                        SIGNAL(choiceChanged(int)));
    page->registerField(QStringLiteral("project.plugin_recording"), mode->button(2));

    page = makePage(ProjectName, tr("Project Name"), tr("The name of the new Project."),
                    tr("The Project's name names its file and its Key-Sample files."));
    auto* name = new QLineEdit(QStringLiteral("MyProject"));
    name->setObjectName(QStringLiteral("projectName"));
    page->layout()->addWidget(labelled(tr("Project Name:"), name));
    page->registerField(QStringLiteral("project.name"), name);

    page = makePage(DataPath, tr("Project's Data Path"),
                    tr("The folder the recorded Key-Samples are stored in."),
                    tr("Choose an existing folder with enough free space for the recording."));
    auto* path = new QLineEdit(QString::fromUtf8(prefs.datapath));
    path->setObjectName(QStringLiteral("dataPath"));
    auto* browse = new QPushButton(tr("Browse"));
    connect(browse, &QPushButton::clicked, this, [this, path] {
        const QString folder =
            QFileDialog::getExistingDirectory(this, tr("Select Data Path"), path->text());
        if (!folder.isEmpty())
            path->setText(folder);
    });
    auto* pathRow = new QHBoxLayout;
    pathRow->addWidget(path);
    pathRow->addWidget(browse);
    static_cast<QVBoxLayout*>(page->layout())->addLayout(pathRow);
    page->registerField(QStringLiteral("project.data_path"), path);

    addAudioInPage();

    page = makePage(SampleFormat, tr("Sample Format"),
                    tr("Sample rate, channels and bit depth of the recording."),
                    tr("44.1 kHz, stereo, 16 bit suits most uses."));
    std::vector<std::string> formats;
    for (int i = 0; i < kRecordFormatCount; ++i)
        formats.emplace_back(recordFormatTable()[i].name);
    QComboBox* format = namesBox(formats, QString::fromUtf8(prefs.AudioInFormat));
    format->setObjectName(QStringLiteral("sampleFormat"));
    page->layout()->addWidget(labelled(tr("Sample Format:"), format));
    page->registerField(QStringLiteral("project.sample_format"), format, "currentText");

    page = makePage(MidiOutDevices, tr("MIDI Out Devices"),
                    tr("The MIDI output the instrument is played through."),
                    tr("Choose the port your instrument is connected to."));
    QComboBox* midiOut = namesBox(tables.midiOut, QString::fromUtf8(prefs.MIDIoutDevice));
    midiOut->setObjectName(QStringLiteral("midiOutDevice"));
    page->layout()->addWidget(labelled(tr("MIDI Out Device:"), midiOut));
    page->registerField(QStringLiteral("project.midi_out_device"), midiOut, "currentText");

    page =
        makePage(MidiOutSettings, tr("MIDI Out Settings"),
                 tr("The MIDI channel and program of the instrument."), tr(kMidiOutSettingsHelp));
    auto* channel = new QSpinBox;
    channel->setRange(1, 16);
    channel->setObjectName(QStringLiteral("midiChannel"));
    auto* program = new QSpinBox;
    program->setRange(0, 127);
    program->setObjectName(QStringLiteral("midiProgram"));
    page->layout()->addWidget(labelled(tr("MIDI Channel:"), channel));
    page->layout()->addWidget(labelled(tr("MIDI Program:"), program));
    page->registerField(QStringLiteral("project.midi_out_channel"), channel);
    page->registerField(QStringLiteral("project.midi_out_program"), program);

    page = makePage(SamplingRange, tr("Sampling Range"), tr("The range of keys to be recorded."),
                    tr("Choose the number of keys your instrument has."));
    QStringList rangeTexts;
    for (int keys : kKeyCounts)
        rangeTexts << tr("%1 Keys").arg(keys);
    auto* range = new RadioChoice(rangeTexts, 0);
    range->setObjectName(QStringLiteral("samplingRange"));
    page->layout()->addWidget(range);
    for (int i = 0; i < rangeTexts.size(); ++i)
        page->registerField(QStringLiteral("project.sampling_range_%1").arg(kKeyCounts[i]),
                            range->button(i));

    page = makePage(VelocityLayers, tr("Velocity Layers"),
                    tr("How many velocities each key is recorded at."), tr(kVelocityLayersHelp));
    auto* layers = new QSpinBox;
    layers->setRange(1, 127);
    layers->setObjectName(QStringLiteral("velocityLayers"));
    page->layout()->addWidget(labelled(tr("Velocity Layers:"), layers));
    page->registerField(QStringLiteral("project.velocity_layers"), layers);

    page = makePage(KeyStep, tr("Key Step"), tr("The distance between the recorded keys."),
                    tr(kKeyStepHelp));
    auto* step = new QSpinBox;
    step->setRange(1, 127);
    step->setObjectName(QStringLiteral("keyStep"));
    page->layout()->addWidget(labelled(tr("Key Step:"), step));
    page->registerField(QStringLiteral("project.key_step"), step);

    page = makePage(RecordingLength, tr("Recording Length"),
                    tr("How long each note is held and its release recorded."),
                    tr(kRecordingLengthHelp));
    auto* note = new QDoubleSpinBox;
    note->setRange(0.0, 3600.0);
    note->setDecimals(2);
    note->setValue(prefs.recordsettings.notelength1);
    note->setObjectName(QStringLiteral("noteLength"));
    auto* release = new QDoubleSpinBox;
    release->setRange(0.0, 1800.0);
    release->setDecimals(2);
    release->setValue(prefs.recordsettings.releaselength1);
    release->setObjectName(QStringLiteral("releaseLength"));
    page->layout()->addWidget(labelled(tr("Note Length (in seconds):"), note));
    page->layout()->addWidget(labelled(tr("Release Length (in seconds):"), release));
    page->registerField(QStringLiteral("project.note_length"), note, "value");
    page->registerField(QStringLiteral("project.release_length"), release, "value");

    addAutoLoopPages();

    makePage(Completed, tr("Project Configuration Completed"),
             tr("Tonegrabber is now ready for recording."),
             tr("Press Finish to create the Project. The record dialog opens at once; once the "
                "recording is accepted the Project is saved."));
    setStartId(Introduction);
}

void ProjectWizard::addAudioInPage()
{
    SetupPage* page = makePage(AudioIn, tr("Audio In Device"),
                               tr("The audio input the instrument is recorded from."),
                               tr("Choose the device and the channels your instrument's "
                                  "outputs are connected to."));
    std::vector<std::string> devices;
    for (const AudioInputEntry& entry : deviceTables().audioIn)
        devices.push_back(entry.name);
    audioIn_ = namesBox(devices, QString::fromUtf8(model_.preferences().AudioInDevice));
    audioIn_->setObjectName(QStringLiteral("audioInDevice"));
    left_ = new QComboBox;
    left_->setObjectName(QStringLiteral("leftChannel"));
    right_ = new QComboBox;
    right_->setObjectName(QStringLiteral("rightChannel"));
    page->layout()->addWidget(labelled(tr("Audio In Device:"), audioIn_));
    leftRow_ = labelled(tr("Left Channel:"), left_);
    rightRow_ = labelled(tr("Right Channel:"), right_);
    page->layout()->addWidget(leftRow_);
    page->layout()->addWidget(rightRow_);
    page->registerField(QStringLiteral("project.audio_in_channel_left"), left_, "currentText");
    page->registerField(QStringLiteral("project.audio_in_channel_right"), right_, "currentText");
    connect(audioIn_, &QComboBox::currentTextChanged, this, &ProjectWizard::onCurrentTextChanged);
    connect(left_, &QComboBox::currentTextChanged, this, &ProjectWizard::onLeftChannelChanged);
    connect(right_, &QComboBox::currentTextChanged, this, &ProjectWizard::onRightChannelChanged);
    onCurrentTextChanged(audioIn_->currentText());
}

void ProjectWizard::addAutoLoopPages()
{
    SetupPage* page =
        makePage(AutoLoop, tr("Auto Loop"), tr("Whether loops are searched right after recording."),
                 tr("With Auto-Loop on, each Key-Sample gets a loop as soon as "
                    "it is recorded."));
    auto* onOff = new RadioChoice({tr("Auto-Loop ON"), tr("Auto-Loop OFF")}, 1);
    onOff->setObjectName(QStringLiteral("autoLoop"));
    page->layout()->addWidget(onOff);
    page->registerField(QStringLiteral("project.auto_loop"), onOff->button(0));

    page = makePage(AutoLoopComplexity, tr("Auto Loop Settings (1 of 2)"),
                    tr("What kind of sound is looped."),
                    tr("The more complex the sound, the longer the loop search and crossfade."));
    auto* complexity =
        new RadioChoice({tr("Simple (e.g. organs, raw synthesizer waveforms, static sounds)"),
                         tr("Intermediate (e.g. pads, voices, drum loops)"),
                         tr("Complex (e.g. decaying sounds, swells, drones, rich modulated pads)")},
                        1);
    complexity->setObjectName(QStringLiteral("loopComplexity"));
    page->layout()->addWidget(complexity);
    page->registerField(QStringLiteral("project.auto_loop_simple"), complexity->button(0));
    page->registerField(QStringLiteral("project.auto_loop_intermediate"), complexity->button(1));
    page->registerField(QStringLiteral("project.auto_loop_complex"), complexity->button(2));

    page = makePage(AutoLoopStart, tr("Auto Loop Settings (2 of 2)"),
                    tr("Where in the sample the loop starts."),
                    tr("Later loop starts keep more of the sound's attack and decay."));
    auto* start = new RadioChoice({tr("Loop starts at 30% of the sample's length"),
                                   tr("Loop starts at 50% of the sample's length"),
                                   tr("Loop starts at 70% of the sample's length")},
                                  1);
    start->setObjectName(QStringLiteral("loopStart"));
    page->layout()->addWidget(start);
    page->registerField(QStringLiteral("project.auto_loop_thirty"), start->button(0));
    page->registerField(QStringLiteral("project.auto_loop_fifty"), start->button(1));
    page->registerField(QStringLiteral("project.auto_loop_seventy"), start->button(2));
}

int ProjectWizard::nextId() const
{
    switch (currentId()) {
    case AutoLoop:
        return field(QStringLiteral("project.auto_loop")).toBool() ? AutoLoopComplexity : Completed;
    case Completed:
        return -1;
    default:
        return QWizard::nextId();
    }
}

bool ProjectWizard::validateCurrentPage()
{
    Result check = Result::done();
    if (currentId() == ProjectName)
        check =
            checkSetupName(model_, field(QStringLiteral("project.name")).toString().toStdString());
    else if (currentId() == DataPath)
        check =
            checkSetupDataPath(field(QStringLiteral("project.data_path")).toString().toStdString());
    if (!check.ok()) {
        QMessageBox::warning(this, tr("Error"), QString::fromStdString(check.message));
        return false;
    }
    return QWizard::validateCurrentPage();
}

void ProjectWizard::onCurrentTextChanged(const QString& device)
{
    const std::string name = device.toStdString();
    const std::vector<AudioInputEntry>& entries = deviceTables().audioIn;
    left_->clear();
    right_->clear();
    for (const AudioInputEntry& entry : entries)
        if (entry.name == name)
            for (const std::string& channel : entry.channels) {
                left_->addItem(QString::fromStdString(channel));
                right_->addItem(QString::fromStdString(channel));
            }
    // A stereo input takes the first two channels unless the user says otherwise.
    if (right_->count() > 2)
        right_->setCurrentIndex(1);
    // Only "Default": a mono or stereo device records its channels as they come.
    leftRow_->setVisible(left_->count() > 1);
    rightRow_->setVisible(right_->count() > 1);
    onLeftChannelChanged(left_->currentText());
    onRightChannelChanged(right_->currentText());
}

int ProjectWizard::channelIndex(const QString& channel) const
{
    // "Default" is not among the choosable ones: it stays -1.
    const std::vector<std::string> channels =
        choosableInputChannels(deviceTables(), audioIn_->currentText().toStdString());
    const auto found = std::find(channels.begin(), channels.end(), channel.toStdString());
    return found == channels.end() ? -1 : static_cast<int>(found - channels.begin());
}

void ProjectWizard::onLeftChannelChanged(const QString& channel)
{
    leftChannel_ = channelIndex(channel);
}

void ProjectWizard::onRightChannelChanged(const QString& channel)
{
    rightChannel_ = channelIndex(channel);
}

ProjectSetupRecord ProjectWizard::setupRecord() const
{
    ProjectSetupRecord setup;
    setup.name = field(QStringLiteral("project.name")).toString().toStdString();
    setup.dataPath = field(QStringLiteral("project.data_path")).toString().toStdString();
    setup.audioInDeviceRow =
        audioInTableIndex(deviceTables(), audioIn_->currentText().toStdString());
    setup.audioInDevice = audioIn_->currentText().toStdString();
    setup.audioInChannelLeft = leftChannel_;
    setup.audioInChannelRight = rightChannel_;
    setup.sampleFormat = field(QStringLiteral("project.sample_format")).toString().toStdString();
    setup.automatic = field(QStringLiteral("project.recording_mode")).toInt() != 1;
    setup.pluginRecording = field(QStringLiteral("project.plugin_recording")).toBool();
    setup.midiOutDevice = field(QStringLiteral("project.midi_out_device")).toString().toStdString();
    setup.midiChannel = field(QStringLiteral("project.midi_out_channel")).toInt();
    setup.midiProgram = field(QStringLiteral("project.midi_out_program")).toInt();
    setup.keyCount = 0;
    for (int keys : kKeyCounts)
        if (setup.keyCount == 0 &&
            field(QStringLiteral("project.sampling_range_%1").arg(keys)).toBool())
            setup.keyCount = keys;
    setup.velocityLayers = field(QStringLiteral("project.velocity_layers")).toInt();
    setup.keyStep = field(QStringLiteral("project.key_step")).toInt();
    setup.noteLength = field(QStringLiteral("project.note_length")).toDouble();
    setup.releaseLength =
        static_cast<float>(field(QStringLiteral("project.release_length")).toDouble());
    setup.autoLoop = field(QStringLiteral("project.auto_loop")).toBool();
    setup.complexity = field(QStringLiteral("project.auto_loop_simple")).toBool()
                           ? LoopComplexity::Simple
                       : field(QStringLiteral("project.auto_loop_complex")).toBool()
                           ? LoopComplexity::Complex
                           : LoopComplexity::Intermediate;
    setup.loopStartPercent = field(QStringLiteral("project.auto_loop_thirty")).toBool()    ? 30
                             : field(QStringLiteral("project.auto_loop_seventy")).toBool() ? 70
                                                                                           : 50;
    return setup;
}

} // namespace tg::shell
