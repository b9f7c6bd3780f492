// The tagging dialog of the card and drive formats.
#include "shell/dialogs/ExportTaggingDialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QSpinBox>

namespace tg::shell {

namespace {

QLineEdit* field(const char* objectName, const QString& text, QWidget* parent)
{
    auto* edit = new QLineEdit(text, parent);
    edit->setObjectName(QString::fromLatin1(objectName));
    return edit;
}

} // namespace

ExportTaggingDialog::ExportTaggingDialog(ExportFormat format, const QString& defaultName,
                                         QWidget* parent)
    : QDialog(parent), format_(format)
{
    setObjectName(QStringLiteral("ExportTaggingDialog"));
    auto* layout = new QFormLayout(this);
    if (format == ExportFormat::ProphetX) {
        setWindowTitle(tr("Prophet-X Program"));
        bank_ = field("userBank", QStringLiteral("User 1"), this);
        category_ = field("category", QStringLiteral("Keys"), this);
        programNumber_ = new QSpinBox(this);
        programNumber_->setObjectName(QStringLiteral("programNumber"));
        programNumber_->setRange(0, 999);
        programNumber_->setValue(ExportTagging().programNumber);
        name_ = field("programName", defaultName, this);
        layout->addRow(tr("User Bank"), bank_);
        layout->addRow(tr("Category"), category_);
        layout->addRow(tr("Program Number"), programNumber_);
        layout->addRow(tr("Program Name"), name_);
    } else {
        setWindowTitle(tr("Quantum Map"));
        folder_ = field("folder", defaultName, this);
        name_ = field("mapName", defaultName, this);
        layout->addRow(tr("Sample Folder"), folder_);
        layout->addRow(tr("Map Name"), name_);
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setObjectName(QStringLiteral("buttons"));
    layout->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &ExportTaggingDialog::acceptIfComplete);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

ExportTagging ExportTaggingDialog::tagging() const
{
    ExportTagging tagging;
    if (bank_) {
        tagging.userBank = bank_->text().trimmed().toStdString();
        tagging.category = category_->text().trimmed().toStdString();
        tagging.programNumber = programNumber_->value();
    }
    if (folder_)
        tagging.folder = folder_->text().trimmed().toStdString();
    tagging.programName = name_->text().trimmed().toStdString();
    return tagging;
}

void ExportTaggingDialog::acceptIfComplete()
{
    const ExportTagging t = tagging();
    const bool complete = format_ == ExportFormat::ProphetX
                              ? !t.userBank.empty() && !t.category.empty()
                              : !t.folder.empty();
    if (!complete) {
        QMessageBox::information(this, tr("Info"), tr("Please fill in every field."));
        return;
    }
    accept();
}

} // namespace tg::shell
