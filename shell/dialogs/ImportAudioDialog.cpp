// The import dialog: gathers files and choices, shows the plan, runs the import below the shell.
#include "shell/dialogs/ImportAudioDialog.h"

#include "core/Model.h"
#include "core/NoteNames.h"
#include "shell/MessageBoxes.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>

namespace tg::shell {

namespace {

enum Column { FileColumn, KeyColumn, SourceColumn, LayerColumn, TargetColumn, NoteColumn };

QString keyLabel(int note)
{
    return QStringLiteral("%1 (%2)").arg(QString::fromStdString(noteName(note))).arg(note);
}

QComboBox* keyChooser(QWidget* parent, const QString& none)
{
    auto* box = new QComboBox(parent);
    box->addItem(none, -1);
    for (int note = 0; note < kKeyCount; ++note)
        box->addItem(keyLabel(note), note);
    return box;
}

QString sourceText(KeySource source)
{
    switch (source) {
    case KeySource::FileChunk:
        return QStringLiteral("root key in the file");
    case KeySource::FileName:
        return QStringLiteral("file name");
    case KeySource::Chosen:
        return QStringLiteral("chosen");
    case KeySource::Unknown:
        break;
    }
    return QStringLiteral("none: choose a key");
}

QString nameFilter(ImportFileTypes types)
{
    switch (types) {
    case ImportFileTypes::Wav:
        return QStringLiteral("WAV Files (*.wav *.WAV)");
    case ImportFileTypes::Aiff:
        return QStringLiteral("AIFF Files (*.aif *.aiff *.aifc *.AIF *.AIFF *.AIFC)");
    case ImportFileTypes::Audio:
        break;
    }
    return QStringLiteral("Audio Files (*.wav *.aif *.aiff *.aifc *.WAV *.AIF *.AIFF *.AIFC)");
}

} // namespace

QString importDialogTitle(ImportFileTypes types)
{
    switch (types) {
    case ImportFileTypes::Wav:
        return QStringLiteral("Import WAV-Files");
    case ImportFileTypes::Aiff:
        return QStringLiteral("Import AIFF-Files");
    case ImportFileTypes::Audio:
        break;
    }
    return QStringLiteral("Import Audio Files");
}

ImportAudioDialog::ImportAudioDialog(Model& model, ImportFileTypes types, QWidget* parent)
    : QDialog(parent), model_(model), types_(types)
{
    setObjectName(QStringLiteral("ImportAudioDialog"));
    setWindowTitle(importDialogTitle(types));

    multiSample_ = new QComboBox(this);
    multiSample_->setObjectName(QStringLiteral("multiSample"));
    if (const Project* project = model.currentProject()) {
        for (int i = 0; i < project->mslCount; ++i)
            multiSample_->addItem(QString::fromLatin1(project->msl[i].name));
        multiSample_->setCurrentIndex(project->currentMsl);
    }
    firstKey_ = keyChooser(this, QStringLiteral("choose for each file"));
    firstKey_->setObjectName(QStringLiteral("firstKey"));
    layer_ = new QComboBox(this);
    layer_->setObjectName(QStringLiteral("layer"));
    layer_->addItem(QStringLiteral("from the file names (\"v2\", \"vel2\", \"layer2\")"), 0);
    for (int layer = 1; layer <= 16; ++layer)
        layer_->addItem(QString::number(layer), layer);
    conflicts_ = new QComboBox(this);
    conflicts_->setObjectName(QStringLiteral("conflicts"));
    conflicts_->addItem(QStringLiteral("Ask"), int(ConflictPolicy::Ask));
    conflicts_->addItem(QStringLiteral("Replace"), int(ConflictPolicy::Replace));
    conflicts_->addItem(QStringLiteral("Skip"), int(ConflictPolicy::Skip));

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Import into Multi-Sample (layer 1)"), multiSample_);
    form->addRow(QStringLiteral("Key of files without a root key or note name"), firstKey_);
    form->addRow(QStringLiteral("Velocity layer"), layer_);
    form->addRow(QStringLiteral("Keys that hold a Key-Sample"), conflicts_);

    table_ = new QTableWidget(0, 6, this);
    table_->setObjectName(QStringLiteral("files"));
    table_->setHorizontalHeaderLabels({QStringLiteral("File"), QStringLiteral("Key"),
                                       QStringLiteral("Key from"), QStringLiteral("Layer"),
                                       QStringLiteral("Multi-Sample"), QString()});
    table_->horizontalHeader()->setSectionResizeMode(FileColumn, QHeaderView::Stretch);
    table_->verticalHeader()->hide();
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);

    auto* addFiles = new QPushButton(QStringLiteral("&Add Files..."), this);
    addFiles->setObjectName(QStringLiteral("addFiles"));
    auto* addFolder = new QPushButton(QStringLiteral("Add &Folder..."), this);
    addFolder->setObjectName(QStringLiteral("addFolder"));
    auto* remove = new QPushButton(QStringLiteral("Remove"), this);
    remove->setObjectName(QStringLiteral("remove"));
    auto* fileButtons = new QHBoxLayout;
    fileButtons->addWidget(addFiles);
    fileButtons->addWidget(addFolder);
    fileButtons->addWidget(remove);
    fileButtons->addStretch();

    summary_ = new QLabel(this);
    summary_->setObjectName(QStringLiteral("summary"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    auto* import = buttons->addButton(QStringLiteral("Import"), QDialogButtonBox::AcceptRole);
    import->setObjectName(QStringLiteral("import"));

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(fileButtons);
    layout->addWidget(table_, 1);
    layout->addWidget(summary_);
    layout->addWidget(buttons);
    resize(760, 440);

    connect(addFiles, &QPushButton::clicked, this, &ImportAudioDialog::addFiles);
    connect(addFolder, &QPushButton::clicked, this, &ImportAudioDialog::addFolder);
    connect(remove, &QPushButton::clicked, this, &ImportAudioDialog::removeSelected);
    connect(buttons, &QDialogButtonBox::accepted, this, &ImportAudioDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ImportAudioDialog::reject);
    for (QComboBox* box : {multiSample_, firstKey_, layer_})
        connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                &ImportAudioDialog::replan);
    fillTable();
}

void ImportAudioDialog::addPaths(const QStringList& paths)
{
    std::vector<std::string> given;
    for (const QString& path : paths)
        given.push_back(path.toStdString());
    std::vector<std::string> files;
    std::string message;
    if (!collectImportFiles(given, types_, files, message)) {
        showMessage(this, windowTitle(), QString::fromStdString(message));
        return;
    }
    for (const std::string& file : files)
        if (!paths_.contains(QString::fromStdString(file)))
            paths_.append(QString::fromStdString(file));
    replan();
}

void ImportAudioDialog::addFiles()
{
    const QStringList files = QFileDialog::getOpenFileNames(
        this, QStringLiteral("Select Audio Files"), QString(), nameFilter(types_));
    if (!files.isEmpty())
        addPaths(files);
}

void ImportAudioDialog::addFolder()
{
    const QString folder =
        QFileDialog::getExistingDirectory(this, QStringLiteral("Select a Folder of Audio Files"));
    if (!folder.isEmpty())
        addPaths({folder});
}

void ImportAudioDialog::removeSelected()
{
    QList<int> rows;
    for (const QModelIndex& index : table_->selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end(), std::greater<int>());
    for (int row : rows)
        paths_.removeAt(row);
    replan();
}

void ImportAudioDialog::replan()
{
    const Project* project = model_.currentProject();
    plan_.clear();
    if (project == nullptr || paths_.isEmpty())
        return fillTable();
    std::vector<std::string> files;
    for (const QString& path : paths_)
        files.push_back(path.toStdString());
    ImportRequest request;
    request.multiSample = multiSample_->currentIndex();
    request.firstChosenKey = firstKey_->currentData().toInt();
    request.layer = layer_->currentData().toInt();
    std::string message;
    if (!planImport(*project, files, request, plan_, message)) {
        // A file that cannot be read is named and left out.
        showMessage(this, windowTitle(), QString::fromStdString(message));
        for (int i = paths_.size() - 1; i >= 0; --i)
            if (message.find(paths_[i].toStdString()) != std::string::npos)
                paths_.removeAt(i);
        plan_.clear();
        return fillTable();
    }
    for (ImportItem& item : plan_) {
        const auto chosen = chosenKeys_.find(item.path);
        if (chosen != chosenKeys_.end()) {
            item.note = chosen->second;
            item.source = KeySource::Chosen;
        }
    }
    updateImportTargets(*project, request.multiSample, plan_);
    fillTable();
}

void ImportAudioDialog::fillTable()
{
    const Project* project = model_.currentProject();
    table_->setRowCount(int(plan_.size()));
    int occupied = 0;
    for (int row = 0; row < int(plan_.size()); ++row) {
        const ImportItem& item = plan_[size_t(row)];
        const auto text = [&](int column, const QString& value) {
            table_->setItem(row, column, new QTableWidgetItem(value));
        };
        text(FileColumn, QFileInfo(QString::fromStdString(item.path)).fileName());
        QComboBox* key = keyChooser(table_, QStringLiteral("choose..."));
        key->setCurrentIndex(key->findData(item.note));
        connect(key, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                [this, key, path = item.path] {
                    chosenKeys_[path] = key->currentData().toInt();
                    replan();
                });
        table_->setCellWidget(row, KeyColumn, key);
        text(SourceColumn, sourceText(item.source));
        text(LayerColumn, QString::number(item.layer));
        const bool exists = project && item.multiSample < project->mslCount;
        text(TargetColumn, exists ? QString::fromLatin1(project->msl[item.multiSample].name)
                                  : QStringLiteral("new layer"));
        text(NoteColumn, item.occupied ? QStringLiteral("holds a Key-Sample") : QString());
        occupied += item.occupied ? 1 : 0;
    }
    table_->resizeColumnsToContents();
    summary_->setText(QStringLiteral("%1 file(s), %2 for keys that hold a Key-Sample")
                          .arg(plan_.size())
                          .arg(occupied));
}

ConflictAnswer ImportAudioDialog::askAboutOccupiedKey(const ImportItem& item)
{
    if (answerGivenForAll_)
        return answerForAll_;
    const Project& project = *model_.currentProject();
    const QMessageBox::StandardButton button = QMessageBox::question(
        this, QStringLiteral("Overwrite Confirmation"),
        QStringLiteral("Key %1 of the Multi-Sample \"%2\" already holds a Key-Sample.\n"
                       "Replace it with \"%3\"?")
            .arg(keyLabel(item.note), QString::fromLatin1(project.msl[item.multiSample].name),
                 QFileInfo(QString::fromStdString(item.path)).fileName()),
        QMessageBox::Yes | QMessageBox::YesToAll | QMessageBox::No | QMessageBox::NoToAll |
            QMessageBox::Cancel,
        QMessageBox::No);
    switch (button) {
    case QMessageBox::Yes:
        return ConflictAnswer::Replace;
    case QMessageBox::No:
        return ConflictAnswer::Skip;
    case QMessageBox::YesToAll:
    case QMessageBox::NoToAll:
        answerGivenForAll_ = true;
        answerForAll_ =
            button == QMessageBox::YesToAll ? ConflictAnswer::Replace : ConflictAnswer::Skip;
        return answerForAll_;
    default:
        return ConflictAnswer::Cancel;
    }
}

void ImportAudioDialog::accept()
{
    const Project* project = model_.currentProject();
    std::string message;
    if (project == nullptr || plan_.empty())
        return showMessage(this, windowTitle(),
                           QStringLiteral("There are no audio files to import."));
    if (!checkImportPlan(*project, plan_, message))
        return showMessage(this, windowTitle(), QString::fromStdString(message));

    QProgressDialog progress(QStringLiteral("Importing..."), QStringLiteral("Cancel"), 0, 1000,
                             this);
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(300);
    answerGivenForAll_ = false;
    ImportRun run;
    run.policy = ConflictPolicy(conflicts_->currentData().toInt());
    run.ask = [this](const ImportItem& item) { return askAboutOccupiedKey(item); };
    run.progress = [&progress](const std::string& text, double fraction) {
        progress.setLabelText(QString::fromStdString(text));
        progress.setValue(int(fraction * 1000));
        return !progress.wasCanceled();
    };
    ImportOutcome outcome;
    const int ok = runImport(model_, plan_, run, outcome, message);
    progress.setValue(1000);
    if (!ok)
        showMessage(this, windowTitle(), QString::fromStdString(message));
    if (ok || outcome.imported > 0)
        QDialog::accept();
}

} // namespace tg::shell
