// The preferences dialog.
#include "shell/dialogs/PreferencesDialog.h"

#include "core/IniKeys.h"
#include "core/Model.h"
#include "core/SettingsAccessor.h"
#include "shell/IniFile.h"
#include "shell/panels/SettingsForm.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QScrollArea>
#include <QTabWidget>
#include <QVBoxLayout>

namespace tg::shell {

namespace {

bool startsWith(const std::string& text, const char* prefix)
{
    return text.rfind(prefix, 0) == 0;
}

QScrollArea* scrolled(QWidget* page)
{
    auto* area = new QScrollArea;
    area->setWidget(page);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    return area;
}

} // namespace

PreferencesDialog::PreferencesDialog(Model& model, QWidget* parent)
    : QDialog(parent), model_(model), snapshot_(takePreferencesSnapshot(model.preferences()))
{
    setObjectName(QStringLiteral("PreferencesDialog"));
    setWindowTitle(tr("Preferences"));

    std::vector<SettingKey> general;
    std::vector<SettingKey> devices;
    std::vector<SettingKey> recording;
    for (const SettingKey& key : settingKeys("prefs")) {
        if (startsWith(key.key, "prefs_recordsettings_"))
            recording.push_back(key);
        else if (startsWith(key.key, "prefs_MIDI") || startsWith(key.key, "prefs_Audio") ||
                 key.key == "prefs_AutoSendReset")
            devices.push_back(key);
        else
            general.push_back(key);
    }

    auto* generalPage = new SettingsForm(model_, general);
    auto* options = qobject_cast<QFormLayout*>(generalPage->layout());
    const auto ini = openIniFile();
    warnOnQuit_ = new QCheckBox(generalPage);
    warnOnQuit_->setObjectName(QStringLiteral("ShowWarningOnQuit"));
    warnOnQuit_->setChecked(
        ini->value(ini::kShowWarningOnQuit, ini::kShowWarningOnQuitDefault).toBool());
    options->addRow(tr("Ask before quitting"), warnOnQuit_);
    updateNotifications_ = new QCheckBox(generalPage);
    updateNotifications_->setObjectName(QStringLiteral("ShowUpdateNotifications"));
    updateNotifications_->setChecked(ini->value(ini::kShowUpdateNotifications, true).toBool());
    options->addRow(tr("Show update notifications"), updateNotifications_);

    auto* tabs = new QTabWidget(this);
    tabs->addTab(scrolled(generalPage), tr("General"));
    tabs->addTab(scrolled(new SettingsForm(model_, devices)), tr("MIDI and Audio"));
    tabs->addTab(scrolled(new SettingsForm(model_, recording)), tr("Recording"));

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs, 1);
    layout->addWidget(buttons);
    resize(560, 620);
}

void PreferencesDialog::accept()
{
    const auto ini = openIniFile();
    ini->setValue(ini::kShowWarningOnQuit, warnOnQuit_->isChecked());
    ini->setValue(ini::kShowUpdateNotifications, updateNotifications_->isChecked());
    QDialog::accept();
}

void PreferencesDialog::reject()
{
    restorePreferencesSnapshot(model_.preferences(), snapshot_);
    model_.notifyListeners([](TonegrabberModelListener& l) { l.preferencesChanged(); });
    QDialog::reject();
}

} // namespace tg::shell
