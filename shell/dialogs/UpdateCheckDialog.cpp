// The update check dialog and the start-up check, over extras/UpdateCheck.
#include "shell/dialogs/UpdateCheckDialog.h"

#include "core/IniKeys.h"
#include "extras/UpdateCheck.h"
#include "shell/MessageBoxes.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QUrl>
#include <QVBoxLayout>

namespace tg::shell {

namespace {

QString iniPath()
{
    return QString::fromStdString(ini::iniFilePath());
}

} // namespace

UpdateCheckDialog::UpdateCheckDialog(QWidget* parent)
    : QDialog(parent), checker_(new UpdateChecker(this))
{
    setObjectName(QStringLiteral("UpdateCheckDialog"));
    setWindowTitle(QStringLiteral("Check for Updates"));
    address_ = new QLineEdit(updateCheckUrl().toString(), this);
    address_->setObjectName(QStringLiteral("address"));
    address_->setPlaceholderText(QStringLiteral("https://... (a JSON document naming the newest "
                                                "version)"));
    status_ = new QLabel(this);
    status_->setObjectName(QStringLiteral("status"));
    status_->setWordWrap(true);
    status_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Update address"), address_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    check_ = buttons->addButton(QStringLiteral("Check now"), QDialogButtonBox::ActionRole);
    check_->setObjectName(QStringLiteral("check"));
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(status_, 1);
    layout->addWidget(buttons);
    resize(520, 180);

    connect(check_, &QPushButton::clicked, this, &UpdateCheckDialog::checkNow);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(checker_, &UpdateChecker::finished, this, [this] {
        status_->setText(checker_->result().message);
        check_->setEnabled(true);
    });
    checkNow();
}

void UpdateCheckDialog::checkNow()
{
    const QString address = address_->text().trimmed();
    QSettings ini(iniPath(), QSettings::IniFormat);
    if (address.isEmpty())
        ini.remove(QString::fromLatin1(kUpdateUrlKey));
    else
        ini.setValue(QString::fromLatin1(kUpdateUrlKey), address);
    check_->setEnabled(false);
    status_->setText(address.isEmpty() ? QString()
                                       : QStringLiteral("Checking %1 ...").arg(address));
    checker_->check(QUrl(address));
}

void checkForUpdatesAtStartup(QWidget* window)
{
    const QUrl url = updateCheckUrl();
    const QSettings ini(iniPath(), QSettings::IniFormat);
    if (url.isEmpty() ||
        !ini.value(QString::fromLatin1(ini::kShowUpdateNotifications), true).toBool())
        return;
    auto* checker = new UpdateChecker(window);
    QObject::connect(checker, &UpdateChecker::finished, window, [checker, window] {
        if (checker->result().outcome == UpdateCheckResult::Outcome::Newer)
            showMessage(window, QStringLiteral("Check for Updates"), checker->result().message);
        checker->deleteLater();
    });
    checker->check(url);
}

} // namespace tg::shell
