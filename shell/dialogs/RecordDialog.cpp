#include "shell/dialogs/RecordDialog.h"

#include "core/IniKeys.h"
#include "core/Model.h"
#include "devices/AudioManager.h"
#include "devices/DeviceTables.h"
#include "devices/InstrumentSpec.h"
#include "devices/MidiManager.h"
#include "recording/OfflineTakeSource.h"
#include "recording/PluginTakeSource.h"
#include "recording/RealTimeTakeSource.h"
#include "shell/IniFile.h"
#include "shell/dialogs/RecordingCheckDialog.h"
#include "shell/dialogs/TuningOscillatorBox.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSpinBox>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <cstring>

namespace tg::shell {

namespace {

// The longest the run's timer sleeps, so that a take that ends early is seen soon.
constexpr int64_t kLongestWaitMs = 1000;

// The log's line breaks are written as \r\n; the text box wants plain ones.
QString plainText(const std::string& text)
{
    QString lines = QString::fromStdString(text);
    lines.remove(QLatin1Char('\r'));
    return lines;
}

// True when a Multi-Sample of the command takes its audio from the hosted instrument.
bool recordsHostedInstrument(Model& model, int command)
{
    RecordList list;
    if (!buildRecordList(model, command, list).ok())
        return false;
    return std::any_of(list.entries.begin(), list.entries.end(), [](const RecordEntry& entry) {
        return std::strcmp(entry.msl->AudioInDevice, kVstPluginEntry) == 0;
    });
}

std::string preferredOutputDevice()
{
    const QString output =
        openIniFile()->value(QString::fromLatin1(ini::kOutputAudioDeviceName)).toString();
    return output.isEmpty() ? std::string(kNoAudioOutEntry) : output.toStdString();
}

} // namespace

RecordDialog::RecordDialog(Model& model, int command, bool automatic, QWidget* parent,
                           const QString& titleText)
    : QDialog(parent), model_(model), command_(command), automatic_(automatic),
      titleText_(titleText)
{
    buildLayout();
    readOptions();
    runTimer_ = new QTimer(this);
    runTimer_->setSingleShot(true);
    connect(runTimer_, &QTimer::timeout, this, &RecordDialog::onRunTimerTimeout);
    connect(start_, &QPushButton::clicked, this, &RecordDialog::onStartClicked);
    connect(close_, &QPushButton::clicked, this, &RecordDialog::reject);
    refusedOpen_ = !makeRun();
    setWindowTitle(QString::fromStdString(run_->title()));
}

RecordDialog::~RecordDialog()
{
    closing_ = true;
    if (run_ != nullptr)
        run_->close();
}

void RecordDialog::buildLayout()
{
    onlyEmpty_ = new QCheckBox(QStringLiteral("Record only empty Key-Samples"), this);
    keepLocked_ = new QCheckBox(QStringLiteral("Keep locked Key-Samples"), this);
    closeAfter_ = new QCheckBox(QStringLiteral("Close Dialog after Recording"), this);
    verbose_ = new QCheckBox(QStringLiteral("Enable Verbose Mode"), this);
    offline_ = new QCheckBox(QStringLiteral("Offline Bouncing (Plug-in only)"), this);
    maxRecLength_ = new QSpinBox(this);
    maxRecLength_->setRange(0, 1000);
    maxRecLength_->setValue(20);
    maxRecLength_->setSuffix(QStringLiteral(" s"));
    countdown_ = new QLabel(QStringLiteral("Countdown:"), this);
    nextKey_ = new QLabel(this);
    recording_ = new QLabel(this);
    size_ = new QLabel(QStringLiteral("0.0 MB"), this);
    progress_ = new QProgressBar(this);
    log_ = new QPlainTextEdit(this);
    log_->setReadOnly(true);
    start_ = new QPushButton(QStringLiteral("Start Recording"), this);
    close_ = new QPushButton(QStringLiteral("Close"), this);
    start_->setDefault(true); // Return starts, counts down and stops, as the button reads

    auto* options = new QGroupBox(QStringLiteral("Options"), this);
    auto* optionRows = new QVBoxLayout(options);
    for (QCheckBox* box : {onlyEmpty_, keepLocked_, closeAfter_, verbose_, offline_})
        optionRows->addWidget(box);

    auto* take = new QGroupBox(QStringLiteral("Recording"), this);
    auto* takeRows = new QFormLayout(take);
    takeRows->addRow(countdown_);
    takeRows->addRow(nextKey_);
    takeRows->addRow(QStringLiteral("Max Rec Length"), maxRecLength_);
    takeRows->addRow(QStringLiteral("Recorded Size"), size_);
    takeRows->addRow(recording_);
    // The semi-automatic labels mean nothing when every note has its fixed length.
    for (QWidget* semiOnly : {static_cast<QWidget*>(nextKey_), static_cast<QWidget*>(recording_)})
        semiOnly->setVisible(!automatic_);

    auto* top = new QHBoxLayout;
    top->addWidget(options);
    top->addWidget(take);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(start_);
    buttons->addWidget(close_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    // Connected before the run's own handler: the tone stops before a take can begin.
    auto* oscillator = new TuningOscillatorBox(this);
    connect(start_, &QPushButton::clicked, oscillator, &TuningOscillatorBox::stopForRecording);
    connect(this, &QDialog::finished, oscillator, &TuningOscillatorBox::stop);
    layout->addWidget(oscillator);
    layout->addWidget(progress_);
    layout->addWidget(log_, 1);
    layout->addLayout(buttons);
    resize(620, 520);
}

void RecordDialog::readOptions()
{
    bindOption(onlyEmpty_, ini::kRecordOnlyEmptyKeys);
    bindOption(keepLocked_, ini::kKeepLockedKeys);
    bindOption(closeAfter_, ini::kCloseDialogAfterRecording);
    bindOption(verbose_, ini::kEnableVerboseMode);
    // Bouncing is offered when the hosted instrument is chosen and is the source of a
    // Multi-Sample. Without an audio output it is the only way to sample the instrument.
    const bool hosted =
        !storedInstrumentSpec().empty() && recordsHostedInstrument(model_, command_);
    offline_->setEnabled(hosted);
    offline_->setChecked(hosted && preferredOutputDevice() == kNoAudioOutEntry);
}

void RecordDialog::bindOption(QCheckBox* box, const char* key)
{
    box->setChecked(
        openIniFile()->value(QString::fromLatin1(key), ini::kRecordDialogOptionDefault).toBool());
    connect(box, &QCheckBox::toggled, this,
            [key](bool on) { openIniFile()->setValue(QString::fromLatin1(key), on); });
}

void RecordDialog::makeSource(RunOptions& options, bool hostedInput)
{
    offlineSource_ = nullptr;
    skippingClock_ = nullptr;
    InstrumentSpec choice;
    std::string ignored;
    const bool hostedChosen = parseInstrumentSpec(storedInstrumentSpec(), choice, ignored) != 0;
    if (offline_->isChecked() && hostedChosen) {
        auto offline = std::make_unique<OfflineTakeSource>(choice);
        offlineSource_ = offline.get();
        source_ = std::move(offline);
        // The instrument renders straight into the takes: it stands in for the output.
        options.audioOutputDevice = kVstPluginEntry;
        auto skipping = std::make_unique<SkippingRunClock>();
        skippingClock_ = skipping.get();
        clock_ = std::move(skipping);
        return;
    }
    if (audio_ == nullptr) {
        audio_ = std::make_unique<AudioManager>();
        midi_ = std::make_unique<MidiManager>();
    }
    options.audioOutputDevice = preferredOutputDevice();
    audio_->setOutputDeviceName(options.audioOutputDevice);
    // The hosted instrument in real time is heard on the user's output, and recorded there.
    if (hostedInput && hostedChosen)
        source_ = std::make_unique<PluginTakeSource>(*audio_, choice);
    else
        source_ = std::make_unique<RealTimeTakeSource>(*audio_, *midi_);
    clock_ = std::make_unique<SteadyRunClock>();
}

bool RecordDialog::makeRun()
{
    RunOptions options;
    options.command = command_;
    options.automatic = automatic_;
    options.titleText = titleText_.toStdString();
    options.recordOnlyEmptyKeys = onlyEmpty_->isChecked();
    options.keepLockedKeys = keepLocked_->isChecked();
    options.closeAfterRecording = closeAfter_->isChecked();
    options.verbose = verbose_->isChecked();
    options.maxRecLength = maxRecLength_->value();

    run_.reset();
    makeSource(options, recordsHostedInstrument(model_, command_));
    RunObserver& observer = *this;
    run_ = std::make_unique<RecordingRun>(model_, options, *source_, *clock_, observer);
    if (!run_->open().ok()) {
        start_->setEnabled(false);
        return false;
    }
    return true;
}

void RecordDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (refusedOpen_)
        QTimer::singleShot(0, this, &RecordDialog::reject);
}

void RecordDialog::setOptionsEnabled(bool enabled)
{
    // The run keeps the options it started with.
    for (QWidget* option : {static_cast<QWidget*>(onlyEmpty_), static_cast<QWidget*>(keepLocked_),
                            static_cast<QWidget*>(closeAfter_), static_cast<QWidget*>(verbose_),
                            static_cast<QWidget*>(maxRecLength_)})
        option->setEnabled(enabled);
    offline_->setEnabled(enabled && recordsHostedInstrument(model_, command_) &&
                         !storedInstrumentSpec().empty());
}

void RecordDialog::onStartClicked()
{
    if (run_ == nullptr || run_->finished())
        return;
    switch (run_->state()) {
    case RecordingRun::State::Idle:
        // The options may have changed since the dialog opened.
        log_->clear();
        if (!makeRun()) {
            QTimer::singleShot(0, this, &RecordDialog::reject);
            return;
        }
        setOptionsEnabled(false);
        start_->setText(QStringLiteral("Stop Recording"));
        run_->start();
        break;
    case RecordingRun::State::Waiting:
        run_->startCountdown();
        break;
    case RecordingRun::State::Checking:
        return; // the check dialog answers for the take
    default:
        run_->stop();
        break;
    }
    scheduleRunTimer();
}

void RecordDialog::scheduleRunTimer()
{
    if (run_ == nullptr || run_->finished())
        return;
    const int64_t due = run_->nextDueMs();
    if (due < 0)
        return; // waiting for the user
    if (skippingClock_ != nullptr) {
        runTimer_->start(0); // back to the event loop between steps, so the dialog is drawn
        return;
    }
    runTimer_->start(int(std::clamp<int64_t>(due - clock_->nowMs(), 0, kLongestWaitMs)));
}

void RecordDialog::onRunTimerTimeout()
{
    if (run_ == nullptr || run_->finished())
        return;
    if (skippingClock_ != nullptr)
        skippingClock_->advanceTo(run_->nextDueMs());
    run_->service();
    if (offlineSource_ != nullptr && !offlineSource_->lastError().empty() && !run_->finished()) {
        const QString fault = QString::fromStdString(offlineSource_->lastError());
        run_->close();
        QMessageBox::critical(this, QStringLiteral("Error"), fault);
        return;
    }
    scheduleRunTimer();
}

void RecordDialog::reject()
{
    runTimer_->stop();
    closing_ = true;
    if (run_ != nullptr)
        run_->close();
    closing_ = false;
    QDialog::reject();
}

QString RecordDialog::logText() const
{
    return log_->toPlainText();
}

void RecordDialog::log(const std::string& text)
{
    log_->appendPlainText(plainText(text));
    // Long steps (saving, the loop search) follow; the line is drawn before them.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void RecordDialog::progress(const std::string& title, int done, int total)
{
    setWindowTitle(QString::fromStdString(title));
    progress_->setRange(0, std::max(1, total));
    progress_->setValue(done);
}

void RecordDialog::countdownText(const std::string& text)
{
    countdown_->setText(QString::fromStdString(text));
}

void RecordDialog::nextKeyText(const std::string& text)
{
    nextKey_->setText(QString::fromStdString(text));
    countdown_->setText(QStringLiteral("Countdown:"));
    recording_->clear();
}

void RecordDialog::sizeText(const std::string& text)
{
    size_->setText(QString::fromStdString(text));
}

void RecordDialog::recordingText(const std::string& text)
{
    recording_->setText(QString::fromStdString(text));
}

void RecordDialog::buttonText(const std::string& text)
{
    start_->setText(QString::fromStdString(text));
}

void RecordDialog::message(const std::string& title, const std::string& text)
{
    const QString boxTitle = QString::fromStdString(title);
    const QString boxText = QString::fromStdString(text);
    if (title == "Error")
        QMessageBox::critical(this, boxTitle, boxText);
    else
        QMessageBox::information(this, boxTitle, boxText);
}

void RecordDialog::checkTake(int note)
{
    openCheckDialog(note);
}

void RecordDialog::openCheckDialog(int note)
{
    const RecordEntry* entry = run_->currentEntry();
    if (entry == nullptr)
        return;
    start_->setEnabled(false);
    check_ = new RecordingCheckDialog(*entry->project, *entry->msl, note, this);
    check_->setAttribute(Qt::WA_DeleteOnClose);
    connect(check_, &QDialog::finished, this, [this](int result) {
        const QString name = check_->keyName();
        check_ = nullptr;
        start_->setEnabled(true);
        if (run_ == nullptr || run_->state() != RecordingRun::State::Checking)
            return;
        if (result == QDialog::Accepted)
            run_->keepTake(name.toStdString());
        else
            run_->discardTake();
        scheduleRunTimer();
    });
    check_->open();
}

void RecordDialog::finished(bool close)
{
    runTimer_->stop();
    start_->setText(QStringLiteral("Start Recording"));
    start_->setEnabled(false);
    if (check_ != nullptr)
        check_->close();
    if (close && !closing_)
        accept();
}

} // namespace tg::shell
