#include "shell/dialogs/RecordingCheckDialog.h"

#include "audiofile/WavFile.h"
#include "core/Names.h"
#include "core/NoteNames.h"
#include "devices/AudioEngine.h"
#include "devices/Player.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cstring>

namespace tg::shell {

RecordingCheckDialog::RecordingCheckDialog(const Project& project, const TGmsl& msl, int note,
                                           QWidget* parent)
    : QDialog(parent), key_(msl.keys[note]), file_(keySampleFileName(project, msl, note))
{
    setWindowTitle(QStringLiteral("Check recorded Keysample"));
    keyName_ =
        new QLineEdit(QString::fromLatin1(key_.name, int(strnlen(key_.name, kNameSize))), this);
    keyName_->setMaxLength(kNameSize);
    keyName_->setPlaceholderText(QString::fromStdString(noteName(note)));
    note_ = new QPushButton(QStringLiteral("Note"), this);
    loop_ = new QPushButton(QStringLiteral("Loop"), this);
    stop_ = new QPushButton(QStringLiteral("Stop"), this);
    problem_ = new QLabel(this);
    problem_->setWordWrap(true);
    keep_ = new QPushButton(QStringLiteral("Keep and record next"), this);
    discard_ = new QPushButton(QStringLiteral("Discard and re-record"), this);
    keep_->setDefault(true);

    auto* prehearBox = new QGroupBox(QStringLiteral("Prehear"), this);
    auto* prehearRow = new QHBoxLayout(prehearBox);
    for (QPushButton* button : {note_, loop_, stop_})
        prehearRow->addWidget(button);
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Key Name"), keyName_);
    auto* answers = new QHBoxLayout;
    answers->addStretch();
    answers->addWidget(keep_);
    answers->addWidget(discard_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(prehearBox);
    layout->addWidget(problem_);
    layout->addLayout(answers);

    connect(note_, &QPushButton::clicked, this, [this] { prehear(false); });
    connect(loop_, &QPushButton::clicked, this, [this] { prehear(true); });
    connect(stop_, &QPushButton::clicked, this, &RecordingCheckDialog::stopPrehear);
    connect(keep_, &QPushButton::clicked, this, &QDialog::accept);
    connect(discard_, &QPushButton::clicked, this, &QDialog::reject);
}

RecordingCheckDialog::~RecordingCheckDialog()
{
    stopPrehear();
}

QString RecordingCheckDialog::keyName() const
{
    return keyName_->text();
}

QString RecordingCheckDialog::prehearProblem() const
{
    return problem_->text();
}

void RecordingCheckDialog::prehear(bool withLoop)
{
    problem_->clear();
    if (!audio::outputOpen()) {
        problem_->setText(QStringLiteral("No audio output is open to prehear on."));
        return;
    }
    WaveFormat format;
    std::vector<uint8_t> data;
    std::string message;
    if (!readWav(file_, format, data, message) || format.nBlockAlign == 0) {
        problem_->setText(QString::fromStdString(message));
        return;
    }
    const int64_t frames = int64_t(data.size() / format.nBlockAlign);
    // The note plays to the end of its release; with the loop, to the loop's end, after
    // which the loop repeats until Stop.
    const bool loops = withLoop && key_.Loop_Out > key_.Loop_In;
    const int64_t end = loops ? key_.Loop_Out : key_.Release_Out + 1;
    const int64_t noteFrames = std::clamp<int64_t>(end, 1, frames);
    const int64_t start = std::clamp<int64_t>(key_.Note_In, 0, noteFrames - 1);
    const int32_t output = audio::currentOutputConfig().device;
    if (!TGaudio_playSample(output, format, data.data(), size_t(noteFrames) * format.nBlockAlign,
                            loops ? key_.Loop_In : 0, loops ? key_.Loop_Out : 0, nullptr, 0,
                            message, start))
        problem_->setText(QString::fromStdString(message));
}

void RecordingCheckDialog::stopPrehear()
{
    if (audio::outputOpen() && audio::player().isPlaying())
        audio::player().requestStop();
}

} // namespace tg::shell
