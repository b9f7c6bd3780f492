// The one-shot folder import: a folder, a start key, and what the import below the shell does.
#include "shell/dialogs/ImportSoundLibraryDialog.h"

#include "core/NoteNames.h"
#include "core/Records.h"
#include "extras/AudioImport.h"
#include "shell/MessageBoxes.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QVBoxLayout>

namespace tg::shell {

namespace {

const char* const kTitle = "Import Single-Sample-Soundlibrary";
constexpr int kDefaultFirstKey = 36; // C2, where drum maps start

} // namespace

ImportSoundLibraryDialog::ImportSoundLibraryDialog(Model& model, QWidget* parent)
    : QDialog(parent), model_(model)
{
    setObjectName(QStringLiteral("ImportSoundLibraryDialog"));
    setWindowTitle(QString::fromLatin1(kTitle));
    folder_ = new QLineEdit(this);
    folder_->setObjectName(QStringLiteral("folder"));
    auto* browse = new QPushButton(QStringLiteral("Browse"), this);
    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(folder_, 1);
    folderRow->addWidget(browse);
    firstKey_ = new QComboBox(this);
    firstKey_->setObjectName(QStringLiteral("firstKey"));
    for (int note = 0; note < kKeyCount; ++note)
        firstKey_->addItem(
            QStringLiteral("%1 (%2)").arg(QString::fromStdString(noteName(note))).arg(note), note);
    firstKey_->setCurrentIndex(kDefaultFirstKey);
    preview_ = new QLabel(this);
    preview_->setObjectName(QStringLiteral("preview"));
    preview_->setWordWrap(true);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Folder of one-shot samples"), folderRow);
    form->addRow(QStringLiteral("First key"), firstKey_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    buttons->addButton(QStringLiteral("Import"), QDialogButtonBox::AcceptRole)
        ->setObjectName(QStringLiteral("import"));
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(preview_);
    layout->addStretch();
    layout->addWidget(buttons);
    resize(560, 200);

    connect(browse, &QPushButton::clicked, this, &ImportSoundLibraryDialog::browse);
    connect(folder_, &QLineEdit::textChanged, this, &ImportSoundLibraryDialog::updatePreview);
    connect(firstKey_, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &ImportSoundLibraryDialog::updatePreview);
    connect(buttons, &QDialogButtonBox::accepted, this, &ImportSoundLibraryDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ImportSoundLibraryDialog::reject);
    updatePreview();
}

void ImportSoundLibraryDialog::setFolder(const QString& folder)
{
    folder_->setText(folder);
}

void ImportSoundLibraryDialog::setFirstKey(int note)
{
    firstKey_->setCurrentIndex(firstKey_->findData(note));
}

void ImportSoundLibraryDialog::browse()
{
    const QString folder = QFileDialog::getExistingDirectory(
        this, QStringLiteral("Select a Folder of One-Shot Samples"), folder_->text());
    if (!folder.isEmpty())
        setFolder(folder);
}

void ImportSoundLibraryDialog::updatePreview()
{
    std::vector<std::string> files;
    std::string message;
    if (folder_->text().isEmpty()) {
        preview_->setText(QStringLiteral("Choose a folder: its samples go on one key each, in "
                                         "the order of their names."));
        return;
    }
    if (!collectImportFiles({folder_->text().toStdString()}, ImportFileTypes::Audio, files,
                            message)) {
        preview_->setText(QString::fromStdString(message));
        return;
    }
    const int first = firstKey_->currentData().toInt();
    const int last = first + int(files.size()) - 1;
    preview_->setText(last < kKeyCount
                          ? QStringLiteral("%1 sample(s) on keys %2 to %3.")
                                .arg(files.size())
                                .arg(QString::fromStdString(noteName(first)),
                                     QString::fromStdString(noteName(last)))
                          : QStringLiteral("%1 sample(s): too many for the keys from %2 to G9.")
                                .arg(files.size())
                                .arg(QString::fromStdString(noteName(first))));
}

void ImportSoundLibraryDialog::accept()
{
    QProgressDialog progress(QStringLiteral("Importing..."), QStringLiteral("Cancel"), 0, 1000,
                             this);
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(300);
    ImportRun run;
    run.progress = [&progress](const std::string& text, double fraction) {
        progress.setLabelText(QString::fromStdString(text));
        progress.setValue(int(fraction * 1000));
        return !progress.wasCanceled();
    };
    ImportOutcome outcome;
    std::string message;
    const int ok = importSoundLibrary(model_, folder_->text().toStdString(),
                                      firstKey_->currentData().toInt(), run, outcome, message);
    progress.setValue(1000);
    if (!ok)
        showMessage(this, windowTitle(), QString::fromStdString(message));
    if (ok || outcome.imported > 0)
        QDialog::accept();
}

} // namespace tg::shell
