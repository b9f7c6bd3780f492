// The change-gain dialog: the clipping question on the GUI thread, then the gain job.
#include "shell/dialogs/ChangeGainDialog.h"

#include "analysis/BatchJob.h"
#include "core/Model.h"
#include "shell/MessageBoxes.h"
#include "shell/dialogs/BatchJobRun.h"
#include "shell/dialogs/ScopeChoice.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

namespace tg::shell {

ChangeGainDialog::ChangeGainDialog(Model& model, QWidget* parent) : QDialog(parent), model_(model)
{
    setObjectName(QStringLiteral("ChangeGainDialog"));
    setWindowTitle(tr("Change Gain"));
    auto* layout = new QVBoxLayout(this);
    scope_ = new ScopeChoice({tr("Gain Change selected Sample "),
                              tr("Gain Change all Samples in sel. Multi-Sample"),
                              tr("Gain Change all Samples in sel. Project")},
                             KeyScope::MultiSample, this);
    layout->addWidget(scope_);

    auto* gainRow = new QHBoxLayout;
    gainRow->addWidget(new QLabel(tr("Change Gain to a user-defined dB value"), this));
    gainDb_ = new QDoubleSpinBox(this);
    gainDb_->setObjectName(QStringLiteral("gainDb"));
    gainDb_->setRange(-72.0, 72.0);
    gainDb_->setDecimals(2);
    gainDb_->setSuffix(QStringLiteral(" dB"));
    gainRow->addWidget(gainDb_);
    layout->addLayout(gainRow);

    auto* channelBox = new QGroupBox(this);
    auto* channelLayout = new QHBoxLayout(channelBox);
    channels_ = new QButtonGroup(this);
    const struct {
        const char* name;
        const char* text;
        GainChannels channels;
    } choices[] = {{"bothChannels", "Left and Right", GainChannels::Both},
                   {"onlyLeft", "Only Left", GainChannels::Left},
                   {"onlyRight", "Only Right", GainChannels::Right}};
    for (const auto& choice : choices) {
        auto* button = new QRadioButton(tr(choice.text), channelBox);
        button->setObjectName(QString::fromLatin1(choice.name));
        button->setChecked(choice.channels == GainChannels::Both);
        channels_->addButton(button, int(choice.channels));
        channelLayout->addWidget(button);
    }
    layout->addWidget(channelBox);

    noteAndRelease_ = new QCheckBox(tr("Gain Change only Note and Release"), this);
    noteAndRelease_->setObjectName(QStringLiteral("noteAndRelease"));
    warnClipping_ = new QCheckBox(tr("Warn if Clipping will occur"), this);
    warnClipping_->setObjectName(QStringLiteral("warnClipping"));
    warnClipping_->setChecked(true);
    layout->addWidget(noteAndRelease_);
    layout->addWidget(warnClipping_);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setObjectName(QStringLiteral("buttons"));
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &ChangeGainDialog::changeGain);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void ChangeGainDialog::changeGain()
{
    const Project* project = model_.currentProject();
    if (project == nullptr)
        return;
    GainOptions options;
    options.gainDb = gainDb_->value();
    options.channels = GainChannels(channels_->checkedId());
    options.noteAndRelease = noteAndRelease_->isChecked();
    const KeyScope scope = scope_->scope();
    const int msl = project->currentMsl;
    const int key = model_.currentKey();
    if (warnClipping_->isChecked()) {
        // The levels are found first, so that the question comes before anything changes.
        ChannelLevels highest;
        if (runBatchJob(this, model_,
                        highestLevelWork(scope, msl, key, options.noteAndRelease, highest), {},
                        false) != 1)
            return;
        if (gainWouldClip(highest, options) &&
            !askYesNo(this, tr("Change Gain"), QString::fromLatin1(kClippingQuestion)))
            return;
    }
    const int result = runBatchJob(this, model_, gainWork(scope, msl, key, options),
                                   multiSamplesInScope(*project, scope, msl));
    if (result != 0)
        accept();
}

} // namespace tg::shell
