// The instrument copier's choices, and the copy below the shell.
#include "shell/dialogs/InstrumentCopierDialog.h"

#include "core/Model.h"
#include "core/Names.h"
#include "extras/InstrumentCopier.h"
#include "shell/MessageBoxes.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <filesystem>

namespace tg::shell {

namespace {

const char* const kTitle = "Instrument Copier";
constexpr int kNewProject = -1; // target entry that makes a new Project

} // namespace

InstrumentCopierDialog::InstrumentCopierDialog(Model& model, QWidget* parent)
    : QDialog(parent), model_(model)
{
    setObjectName(QStringLiteral("InstrumentCopierDialog"));
    setWindowTitle(QString::fromLatin1(kTitle));
    source_ = new QComboBox(this);
    source_->setObjectName(QStringLiteral("source"));
    target_ = new QComboBox(this);
    target_->setObjectName(QStringLiteral("target"));
    for (int i = 0; i < model.projectCount(); ++i) {
        const QString name = QString::fromLatin1(model.project(i).name);
        source_->addItem(name, i);
        target_->addItem(name, i);
    }
    target_->addItem(QStringLiteral("New Project"), kNewProject);
    source_->setCurrentIndex(model.currentProjectIndex());
    target_->setCurrentIndex(model.projectCount() > 1
                                 ? (model.currentProjectIndex() + 1) % model.projectCount()
                                 : target_->count() - 1);
    multiSamples_ = new QListWidget(this);
    multiSamples_->setObjectName(QStringLiteral("multiSamples"));
    newName_ = new QLineEdit(this);
    newName_->setObjectName(QStringLiteral("newProjectName"));
    newName_->setPlaceholderText(QStringLiteral("name of the new Project"));

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Copy from Project"), source_);
    form->addRow(QStringLiteral("Multi-Samples"), multiSamples_);
    form->addRow(QStringLiteral("into Project"), target_);
    form->addRow(QStringLiteral("New Project name"), newName_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    buttons->addButton(QStringLiteral("Copy"), QDialogButtonBox::AcceptRole)
        ->setObjectName(QStringLiteral("copy"));
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form, 1);
    layout->addWidget(new QLabel(QStringLiteral("Key-Samples are copied with their files; a "
                                                "name already in use gets a number."),
                                 this));
    layout->addWidget(buttons);
    resize(480, 400);

    const auto newNameShown = [this] {
        newName_->setEnabled(target_->currentData().toInt() == kNewProject);
    };
    connect(source_, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &InstrumentCopierDialog::fillMultiSamples);
    connect(target_, QOverload<int>::of(&QComboBox::currentIndexChanged), this, newNameShown);
    connect(buttons, &QDialogButtonBox::accepted, this, &InstrumentCopierDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &InstrumentCopierDialog::reject);
    fillMultiSamples();
    newNameShown();
}

void InstrumentCopierDialog::fillMultiSamples()
{
    multiSamples_->clear();
    const int index = source_->currentData().toInt();
    if (index < 0 || index >= model_.projectCount())
        return;
    const Project& project = model_.project(index);
    for (int i = 0; i < project.mslCount; ++i) {
        auto* item = new QListWidgetItem(QString::fromLatin1(project.msl[i].name), multiSamples_);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(i == project.currentMsl ? Qt::Checked : Qt::Unchecked);
    }
}

void InstrumentCopierDialog::accept()
{
    const int from = source_->currentData().toInt();
    std::vector<int> chosen;
    for (int i = 0; i < multiSamples_->count(); ++i)
        if (multiSamples_->item(i)->checkState() == Qt::Checked)
            chosen.push_back(i);
    if (from < 0 || chosen.empty())
        return showMessage(this, windowTitle(),
                           QStringLiteral("Choose the Multi-Samples to copy."));
    int to = target_->currentData().toInt();
    if (to == kNewProject) {
        const std::string name = newName_->text().toStdString();
        const Result named = checkProjectName(model_, name, -1);
        if (!named.ok())
            return showResult(this, named);
        const Result made = model_.newProject();
        if (!made.ok())
            return showResult(this, made);
        Project& created = *model_.currentProject();
        copyText(created.name, name.c_str());
        std::error_code error; // a missing folder is reported by the copy
        std::filesystem::create_directories(created.dataPath, error);
        to = model_.currentProjectIndex();
    }
    CopyOutcome outcome;
    std::string message;
    const auto ask = [this](const std::string&) {
        return askYesNo(this, QString::fromLatin1(kOverwriteTitle),
                        QString::fromLatin1(kOverwriteQuestion));
    };
    const int ok =
        copyInstruments(model_.project(from), chosen, model_.project(to), ask, outcome, message);
    model_.selectProject(to);
    model_.notifyListeners([](TonegrabberModelListener& listener) {
        listener.projectListChanged();
        listener.multiSampleListChanged();
    });
    if (!ok)
        showMessage(this, windowTitle(), QString::fromStdString(message));
    if (ok || !outcome.names.empty())
        QDialog::accept();
}

} // namespace tg::shell
