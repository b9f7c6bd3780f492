// The naming dialog.
#include "shell/dialogs/ExportNamingDialog.h"

#include "export/KeySampleFile.h"
#include "export/NamingTags.h"
#include "shell/MessageBoxes.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace tg::shell {

ExportNamingDialog::ExportNamingDialog(const Project& project, const QString& menuText,
                                       QWidget* parent)
    : QDialog(parent), project_(project)
{
    setObjectName(QStringLiteral("ExportNamingDialog"));
    QString title = menuText.startsWith(QLatin1String("AIFF"), Qt::CaseInsensitive)
                        ? tr("Aiff Export")
                        : tr("Wav Export");
    if (menuText.contains(QLatin1String("loop only"), Qt::CaseInsensitive))
        title += tr(" (Loop Only)");
    setWindowTitle(title);

    auto* layout = new QGridLayout(this);
    layout->addWidget(new QLabel(tr("Naming Scheme"), this), 0, 0);
    scheme_ = new QLineEdit(QString::fromLatin1(kLongNamingDefault), this);
    scheme_->setObjectName(QStringLiteral("namingScheme"));
    scheme_->setMinimumWidth(360);
    layout->addWidget(scheme_, 0, 1);
    auto* defaults = new QHBoxLayout;
    auto* longDefault = new QPushButton(tr("Long Default"), this);
    longDefault->setObjectName(QStringLiteral("longDefault"));
    auto* shortDefault = new QPushButton(tr("Short Default"), this);
    shortDefault->setObjectName(QStringLiteral("shortDefault"));
    defaults->addWidget(longDefault);
    defaults->addWidget(shortDefault);
    layout->addLayout(defaults, 0, 2);

    layout->addWidget(new QLabel(tr("Destination Folder"), this), 1, 0);
    destination_ = new QLineEdit(this);
    destination_->setObjectName(QStringLiteral("destinationFolder"));
    layout->addWidget(destination_, 1, 1);
    auto* browseButton = new QPushButton(tr("Browse"), this);
    browseButton->setObjectName(QStringLiteral("browse"));
    layout->addWidget(browseButton, 1, 2);

    layout->addWidget(new QLabel(tr("Preview"), this), 2, 0, Qt::AlignTop);
    preview_ = new QListWidget(this);
    preview_->setObjectName(QStringLiteral("preview"));
    layout->addWidget(preview_, 2, 1, 1, 2);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    auto* exportButton = new QPushButton(tr("Export"), this);
    exportButton->setObjectName(QStringLiteral("export"));
    exportButton->setDefault(true);
    auto* cancel = new QPushButton(tr("Cancel"), this);
    cancel->setObjectName(QStringLiteral("cancel"));
    buttons->addWidget(exportButton);
    buttons->addWidget(cancel);
    layout->addLayout(buttons, 3, 0, 1, 3);

    connect(longDefault, &QPushButton::clicked, this,
            [this] { scheme_->setText(QString::fromLatin1(kLongNamingDefault)); });
    connect(shortDefault, &QPushButton::clicked, this,
            [this] { scheme_->setText(QString::fromLatin1(kShortNamingDefault)); });
    connect(scheme_, &QLineEdit::textChanged, this, &ExportNamingDialog::updatePreview);
    connect(browseButton, &QPushButton::clicked, this, &ExportNamingDialog::browse);
    connect(exportButton, &QPushButton::clicked, this, &ExportNamingDialog::tryExport);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    updatePreview();
}

QString ExportNamingDialog::namingScheme() const
{
    return scheme_->text();
}

QString ExportNamingDialog::destination() const
{
    return destination_->text();
}

void ExportNamingDialog::setNamingScheme(const QString& scheme)
{
    scheme_->setText(scheme);
}

void ExportNamingDialog::setDestination(const QString& folder)
{
    destination_->setText(folder);
}

void ExportNamingDialog::updatePreview()
{
    preview_->clear();
    const std::string scheme = scheme_->text().toStdString();
    for (int m = 0; m < project_.mslCount && m < kMaxMultiSamples; ++m) {
        const TGmsl& msl = project_.msl[m];
        if (msl.mapTo != 0)
            continue;
        for (int note : exportedKeys(msl))
            preview_->addItem(
                QString::fromLatin1(expandNamingTags(project_, msl, m, note, scheme).c_str()));
    }
}

void ExportNamingDialog::browse()
{
    const QString folder =
        QFileDialog::getExistingDirectory(this, tr("Select Export Directory"), destination());
    if (!folder.isEmpty())
        destination_->setText(folder);
}

void ExportNamingDialog::tryExport()
{
    if (destination().trimmed().isEmpty() || !QFileInfo(destination()).isDir()) {
        QMessageBox::information(this, tr("Info"), tr("Please enter a valid export directory!"));
        return;
    }
    const QString warnings =
        QString::fromLatin1(namingSchemeWarnings(scheme_->text().toStdString()).c_str());
    if (!warnings.isEmpty() &&
        !askYesNo(this, tr("Continue?"), warnings + tr("Do you want to continue anyhow?")))
        return;
    accept();
}

} // namespace tg::shell
