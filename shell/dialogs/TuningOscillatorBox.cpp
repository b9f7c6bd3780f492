#include "shell/dialogs/TuningOscillatorBox.h"

#include "core/IniKeys.h"
#include "core/NoteNames.h"
#include "shell/IniFile.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace tg::shell {

namespace {

const QString kSine = QStringLiteral("Sine");
const QString kRect = QStringLiteral("Rect");
const QString kStart = QStringLiteral("Start");
const QString kStop = QStringLiteral("Stop");
constexpr int kWatchMs = 200;

QVariant storedValue(const char* key, const QVariant& fallback)
{
    return openIniFile()->value(QString::fromLatin1(key), fallback);
}

} // namespace

TuningOscillatorBox::TuningOscillatorBox(QWidget* parent)
    : QGroupBox(QStringLiteral("Tuning Oscillator"), parent)
{
    setObjectName(QStringLiteral("tuningOscillator"));
    const TuningTone defaults;
    waveform_ = new QComboBox(this);
    waveform_->setObjectName(QStringLiteral("tuningWaveform"));
    waveform_->addItems({kSine, kRect});
    const int waveform =
        waveform_->findText(storedValue(ini::kTuningOscillatorWaveform, kSine).toString());
    waveform_->setCurrentIndex(std::max(0, waveform));

    note_ = new QComboBox(this);
    note_->setObjectName(QStringLiteral("tuningNote"));
    for (int note = kTuningLowestNote; note <= kTuningHighestNote; ++note)
        note_->addItem(QStringLiteral("%1  %2 Hz")
                           .arg(QString::fromStdString(noteName(note)))
                           .arg(tuningFrequency(note), 0, 'f', 2),
                       note);
    const int note = note_->findData(storedValue(ini::kTuningOscillatorNote, defaults.note));
    note_->setCurrentIndex(note >= 0 ? note : note_->findData(defaults.note));

    volume_ = new QSpinBox(this);
    volume_->setObjectName(QStringLiteral("tuningVolume"));
    volume_->setRange(kTuningQuietestDb, 0);
    volume_->setSuffix(QStringLiteral(" dB"));
    volume_->setValue(storedValue(ini::kTuningOscillatorVolume, defaults.volumeDb).toInt());

    play_ = new QPushButton(kStart, this);
    play_->setObjectName(QStringLiteral("tuningPlay"));
    play_->setAutoDefault(false); // Return belongs to the dialog's Start Recording
    problem_ = new QLabel(this);
    problem_->setWordWrap(true);
    problem_->hide();

    auto* row = new QHBoxLayout;
    row->addWidget(waveform_);
    row->addWidget(new QLabel(QStringLiteral("Note:"), this));
    row->addWidget(note_);
    row->addWidget(new QLabel(QStringLiteral("Volume:"), this));
    row->addWidget(volume_);
    row->addStretch();
    row->addWidget(play_);
    auto* rows = new QVBoxLayout(this);
    rows->addLayout(row);
    rows->addWidget(problem_);

    watch_ = new QTimer(this);
    watch_->setInterval(kWatchMs);
    connect(watch_, &QTimer::timeout, this, [this] {
        if (!oscillator_.isPlaying())
            stop();
    });

    connect(play_, &QPushButton::clicked, this, &TuningOscillatorBox::togglePlaying);
    connect(waveform_, &QComboBox::currentTextChanged, this,
            [this](const QString& text) { remember(ini::kTuningOscillatorWaveform, text); });
    connect(note_, qOverload<int>(&QComboBox::currentIndexChanged), this,
            [this] { remember(ini::kTuningOscillatorNote, note_->currentData()); });
    connect(volume_, qOverload<int>(&QSpinBox::valueChanged), this,
            [this](int value) { remember(ini::kTuningOscillatorVolume, value); });
}

QString TuningOscillatorBox::problem() const
{
    return problem_->text();
}

TuningTone TuningOscillatorBox::chosenTone() const
{
    TuningTone tone;
    tone.waveform = waveform_->currentText() == kRect ? TuningWaveform::Rect : TuningWaveform::Sine;
    tone.note = note_->currentData().toInt();
    tone.volumeDb = volume_->value();
    return tone;
}

void TuningOscillatorBox::togglePlaying()
{
    if (oscillator_.isPlaying())
        stop();
    else
        play();
}

void TuningOscillatorBox::play()
{
    problem_->clear();
    problem_->hide();
    const std::string output =
        storedValue(ini::kOutputAudioDeviceName, QString()).toString().toStdString();
    std::string message;
    if (!oscillator_.start(chosenTone(), output, message)) {
        problem_->setText(QString::fromStdString(message));
        problem_->show();
        play_->setText(kStart);
        return;
    }
    play_->setText(kStop);
    watch_->start();
}

void TuningOscillatorBox::stop()
{
    watch_->stop();
    oscillator_.stop();
    play_->setText(kStart);
}

void TuningOscillatorBox::stopForRecording()
{
    stop();
    setEnabled(false);
}

void TuningOscillatorBox::restartIfPlaying()
{
    if (oscillator_.isPlaying())
        play();
}

void TuningOscillatorBox::remember(const char* key, const QVariant& value)
{
    openIniFile()->setValue(QString::fromLatin1(key), value);
    restartIfPlaying();
}

} // namespace tg::shell
