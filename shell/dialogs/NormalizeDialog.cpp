// The normalize dialog: options in, the normalize or level job out.
#include "shell/dialogs/NormalizeDialog.h"

#include "analysis/BatchJob.h"
#include "core/Model.h"
#include "shell/dialogs/BatchJobRun.h"
#include "shell/dialogs/ScopeChoice.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace tg::shell {

NormalizeDialog::NormalizeDialog(Model& model, QWidget* parent) : QDialog(parent), model_(model)
{
    setObjectName(QStringLiteral("NormalizeDialog"));
    setWindowTitle(tr("Normalize"));
    auto* layout = new QVBoxLayout(this);
    scope_ = new ScopeChoice({tr("Normalize selected Sample "),
                              tr("Normalize all Samples in sel. Multi-Sample"),
                              tr("Normalize all Samples in sel. Project")},
                             KeyScope::MultiSample, this);
    layout->addWidget(scope_);

    auto* target = new QGroupBox(this);
    auto* grid = new QGridLayout(target);
    toValue_ = new QRadioButton(tr("Normalize to a user-defined dB value"), target);
    toValue_->setObjectName(QStringLiteral("toValue"));
    toValue_->setChecked(true);
    targetDb_ = new QDoubleSpinBox(target);
    targetDb_->setObjectName(QStringLiteral("targetDb"));
    targetDb_->setRange(-72.0, 0.0);
    targetDb_->setDecimals(2);
    targetDb_->setSingleStep(0.1);
    targetDb_->setSuffix(QStringLiteral(" dB"));
    toMaximum_ = new QRadioButton(tr("Normalize to the maximum level of a Multi-Sample"), target);
    toMaximum_->setObjectName(QStringLiteral("toMaximum"));
    auto* note = new QLabel(
        tr("Note: Each Sample will be normalized to the max. level of the Multi-Sample it "
           "belongs to."),
        target);
    note->setWordWrap(true);
    grid->addWidget(toValue_, 0, 0);
    grid->addWidget(targetDb_, 0, 1);
    grid->addWidget(toMaximum_, 1, 0, 1, 2);
    grid->addWidget(note, 2, 0, 1, 2);
    layout->addWidget(target);
    connect(toValue_, &QRadioButton::toggled, targetDb_, &QWidget::setEnabled);

    equalLeftRight_ = new QCheckBox(tr("Normalize Left/Right equally"), this);
    equalLeftRight_->setObjectName(QStringLiteral("equalLeftRight"));
    noteAndRelease_ = new QCheckBox(tr("Normalize only Note and Release"), this);
    noteAndRelease_->setObjectName(QStringLiteral("noteAndRelease"));
    layout->addWidget(equalLeftRight_);
    layout->addWidget(noteAndRelease_);

    const struct {
        const char* name;
        const char* text;
        KeyScope scope;
    } finders[] = {
        {"findInSample", "Find highest dB level in selected Sample", KeyScope::Sample},
        {"findInMultiSample", "Find highest dB level in selected Multi-Sample",
         KeyScope::MultiSample},
        {"findInProject", "Find highest dB level in selected Project", KeyScope::Project},
    };
    for (const auto& finder : finders) {
        auto* button = new QPushButton(tr(finder.text), this);
        button->setObjectName(QString::fromLatin1(finder.name));
        button->setAutoDefault(false);
        const int scope = int(finder.scope);
        connect(button, &QPushButton::clicked, this, [this, scope] { findHighestLevel(scope); });
        layout->addWidget(button);
    }

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setObjectName(QStringLiteral("buttons"));
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &NormalizeDialog::normalize);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void NormalizeDialog::normalize()
{
    const Project* project = model_.currentProject();
    if (project == nullptr)
        return;
    NormalizeOptions options;
    options.toMultiSampleMaximum = toMaximum_->isChecked();
    options.targetDb = targetDb_->value();
    options.equalLeftRight = equalLeftRight_->isChecked();
    options.noteAndRelease = noteAndRelease_->isChecked();
    const KeyScope scope = scope_->scope();
    const int msl = project->currentMsl;
    const int result =
        runBatchJob(this, model_, normalizeWork(scope, msl, model_.currentKey(), options),
                    multiSamplesInScope(*project, scope, msl));
    if (result != 0)
        accept();
}

void NormalizeDialog::findHighestLevel(int scope)
{
    const Project* project = model_.currentProject();
    if (project == nullptr)
        return;
    ChannelLevels levels;
    runBatchJob(this, model_,
                highestLevelWork(KeyScope(scope), project->currentMsl, model_.currentKey(),
                                 noteAndRelease_->isChecked(), levels),
                {});
}

} // namespace tg::shell
