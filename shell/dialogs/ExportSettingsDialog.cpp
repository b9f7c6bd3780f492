// The settings dialog, built from the table of choices.
#include "shell/dialogs/ExportSettingsDialog.h"

#include "export/SettingsChoices.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

namespace tg::shell {

namespace {

// The formats that play all their samples one way, and what the dialog tells their users.
bool offersLoopAll(ExportFormat format)
{
    return format == ExportFormat::Deluge || format == ExportFormat::Quantum ||
           format == ExportFormat::ProphetX;
}

QString cardNotice(ExportFormat format)
{
    if (format == ExportFormat::Deluge)
        return QStringLiteral("Please browse to the root directory of your deluge SD-Card or "
                              "copy the files in the generated folders \"SYNTHS\" and "
                              "\"SAMPLES\" manually to your deluge.\nOnly the selected "
                              "multisample layer will be exported and there is only one loop "
                              "option for all samples.");
    if (format == ExportFormat::Quantum)
        return QStringLiteral("Please browse and select the root directory of your Quantum SD "
                              "card / USB drive.\nIn there should be a directory called "
                              "'samples'. If not, one will be created during export. Do NOT "
                              "select the 'samples' folder.\nThere is only one loop option for "
                              "all samples.");
    return {};
}

} // namespace

ExportSettingsDialog::ExportSettingsDialog(const QString& menuText, bool hasLastWord,
                                           uint32_t lastWord, QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("ExportSettingsDialog"));
    setWindowTitle(tr("Export Settings") + QStringLiteral(" - ") + menuText);
    const ExportFormatInfo* info = findExportFormat(menuText.toStdString());
    const uint32_t mask = info ? info->allowedMask : 0xFFFFFFFFu;
    start_ = info ? preselectedSettingsWord(*info, hasLastWord, lastWord) : lastWord;

    auto* layout = new QVBoxLayout(this);
    auto* groupsRow = new QHBoxLayout;
    for (const SettingsGroup& group : settingsGroups()) {
        auto* box = new QGroupBox(tr(group.title), this);
        box->setObjectName(QString::fromLatin1(group.name));
        auto* boxLayout = new QVBoxLayout(box);
        auto* buttons = new QButtonGroup(box);
        for (const SettingsChoice& choice : group.choices) {
            auto* button = new QRadioButton(tr(choice.text), box);
            button->setObjectName(QStringLiteral("%1_%2")
                                      .arg(QString::fromLatin1(group.name))
                                      .arg(choice.value, 0, 16));
            button->setEnabled(isChoiceAllowed(mask, choice.value));
            button->setChecked((start_ & group.fieldMask) == choice.value);
            buttons->addButton(button, int(choice.value));
            boxLayout->addWidget(button);
        }
        boxLayout->addStretch(1);
        groups_.push_back(buttons);
        groupsRow->addWidget(box);
    }
    layout->addLayout(groupsRow);

    for (const SettingsSwitch& option : settingsSwitches()) {
        auto* box = new QCheckBox(tr(option.text), this);
        box->setObjectName(QString::fromLatin1(option.objectName));
        box->setChecked((start_ & option.fieldMask) == option.on);
        switches_.push_back(box);
        layout->addWidget(box);
    }
    if (info && offersLoopAll(info->format)) {
        loopAll_ = new QCheckBox(tr("Loop all Samples (use Loop points if available)"), this);
        loopAll_->setObjectName(QStringLiteral("loopAll"));
        layout->addWidget(loopAll_);
    }
    if (info) {
        const QString notice = cardNotice(info->format);
        if (!notice.isEmpty()) {
            auto* label = new QLabel(notice, this);
            label->setWordWrap(true);
            layout->addWidget(label);
        }
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setObjectName(QStringLiteral("buttons"));
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

uint32_t ExportSettingsDialog::word() const
{
    uint32_t word = start_;
    const auto& groups = settingsGroups();
    for (size_t i = 0; i < groups.size(); ++i)
        if (groups_[i]->checkedId() != -1)
            word = (word & ~groups[i].fieldMask) | uint32_t(groups_[i]->checkedId());
    const auto& options = settingsSwitches();
    for (size_t i = 0; i < options.size(); ++i) {
        const uint32_t field = start_ & options[i].fieldMask;
        uint32_t value = switches_[i]->isChecked() ? options[i].on : options[i].off;
        // A field the start word left empty stays empty while its box stays unchecked.
        if (!switches_[i]->isChecked() && field == 0)
            value = 0;
        word = (word & ~options[i].fieldMask) | value;
    }
    return word;
}

bool ExportSettingsDialog::loopAll() const
{
    return loopAll_ != nullptr && loopAll_->isChecked();
}

} // namespace tg::shell
