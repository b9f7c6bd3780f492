// The batch auto-note/auto-loop dialog.
#include "shell/dialogs/AutoDialog.h"

#include "analysis/BatchJob.h"
#include "core/Model.h"
#include "shell/dialogs/BatchJobRun.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace tg::shell {

namespace {

template <typename Button>
Button* named(const char* objectName, const QString& text, QWidget* parent)
{
    auto* button = new Button(text, parent);
    button->setObjectName(QString::fromLatin1(objectName));
    return button;
}

} // namespace

AutoDialog::AutoDialog(Model& model, QWidget* parent) : QDialog(parent), model_(model)
{
    setObjectName(QStringLiteral("AutoDialog"));
    setWindowTitle(tr("Auto-Note/Auto-Loop for all (selected Project or Multi-Sample)"));
    auto* layout = new QVBoxLayout(this);

    auto* what = new QGroupBox(tr("Do what?"), this);
    auto* whatLayout = new QVBoxLayout(what);
    autoNote_ = named<QCheckBox>("autoNote",
                                 tr("Auto-Note (using the Multi-Sample Record Settings)"), what);
    autoNote_->setChecked(true);
    autoLoop_ = named<QCheckBox>("autoLoop", tr("Auto-Loop"), what);
    loopFromSettings_ =
        named<QRadioButton>("loopFromSettings", tr("Use the Multi-Sample Record Settings"), what);
    loopFromSettings_->setChecked(true);
    loopFromLoaded_ = named<QRadioButton>(
        "loopFromLoaded", tr("Use the loaded Key-Sample's Loop-Search-Markers"), what);
    auto* loopSource = new QVBoxLayout;
    loopSource->setContentsMargins(20, 0, 0, 0);
    loopSource->addWidget(loopFromSettings_);
    loopSource->addWidget(loopFromLoaded_);
    whatLayout->addWidget(autoNote_);
    whatLayout->addWidget(autoLoop_);
    whatLayout->addLayout(loopSource);
    layout->addWidget(what);
    const auto followLoop = [this](bool on) {
        loopFromSettings_->setEnabled(on);
        loopFromLoaded_->setEnabled(on);
    };
    connect(autoLoop_, &QCheckBox::toggled, this, followLoop);
    followLoop(false);

    equalNoteLength_ = named<QCheckBox>(
        "equalNoteLength", tr("Make all Note Lengths equal the loaded Key-Sample's Note Length"),
        this);
    equalSilence_ = named<QCheckBox>(
        "equalSilence", tr("Set all Silence Markers equal the loaded Key-Sample's Silence Markers"),
        this);
    releaseOff_ = named<QCheckBox>("releaseOff", tr("Turn Release off"), this);
    layout->addWidget(equalNoteLength_);
    layout->addWidget(equalSilence_);
    layout->addWidget(releaseOff_);

    auto* scope = new QGroupBox(tr("Process selected Key-Samples in:"), this);
    auto* scopeLayout = new QHBoxLayout(scope);
    inMultiSample_ = named<QRadioButton>("inMultiSample", tr("Selected Multi-Sample"), scope);
    inMultiSample_->setChecked(true);
    inProject_ = named<QRadioButton>("inProject", tr("Selected Project"), scope);
    scopeLayout->addWidget(inMultiSample_);
    scopeLayout->addWidget(inProject_);
    layout->addWidget(scope);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    auto* startButton = named<QPushButton>("start", tr("Start"), this);
    startButton->setDefault(true);
    auto* cancelButton = named<QPushButton>("cancel", tr("Cancel"), this);
    buttons->addWidget(startButton);
    buttons->addWidget(cancelButton);
    layout->addLayout(buttons);
    connect(startButton, &QPushButton::clicked, this, &AutoDialog::start);
    connect(cancelButton, &QPushButton::clicked, this, &QDialog::reject);
}

void AutoDialog::start()
{
    const Project* project = model_.currentProject();
    if (project == nullptr)
        return;
    BatchAutoOptions options;
    options.autoNote = autoNote_->isChecked();
    options.autoLoop = autoLoop_->isChecked();
    options.loopSource =
        loopFromLoaded_->isChecked() ? LoopSource::LoadedKey : LoopSource::Settings;
    options.equalNoteLength = equalNoteLength_->isChecked();
    options.equalSilence = equalSilence_->isChecked();
    options.releaseOff = releaseOff_->isChecked();
    options.loadedMsl = project->currentMsl;
    options.loadedNote = model_.currentKey();
    const KeyScope scope = inProject_->isChecked() ? KeyScope::Project : KeyScope::MultiSample;
    const int msl = project->currentMsl;
    // The markers are the result; the job's own closing message is empty.
    if (runBatchJob(this, model_, autoNoteLoopWork(scope, msl, options),
                    multiSamplesInScope(*project, scope, msl)) != 0)
        accept();
}

} // namespace tg::shell
