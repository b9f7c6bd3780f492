// The preset manager and the "Save selected Project as Preset" question, over extras/Presets.
#include "shell/dialogs/PresetManagerDialog.h"

#include "core/Model.h"
#include "extras/Presets.h"
#include "shell/MessageBoxes.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace tg::shell {

namespace {

const char* const kTitle = "Preset Manager";

} // namespace

PresetManagerDialog::PresetManagerDialog(Model& model, QWidget* parent)
    : QDialog(parent), model_(model)
{
    setObjectName(QStringLiteral("PresetManagerDialog"));
    setWindowTitle(QString::fromLatin1(kTitle));
    list_ = new QListWidget(this);
    list_->setObjectName(QStringLiteral("presets"));
    list_->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);

    auto* rename = new QPushButton(QStringLiteral("Rename"), this);
    rename->setObjectName(QStringLiteral("rename"));
    auto* remove = new QPushButton(QStringLiteral("Delete"), this);
    remove->setObjectName(QStringLiteral("delete"));
    auto* listButtons = new QVBoxLayout;
    listButtons->addWidget(rename);
    listButtons->addWidget(remove);
    listButtons->addStretch();
    auto* listRow = new QHBoxLayout;
    listRow->addWidget(list_, 1);
    listRow->addLayout(listButtons);

    projectName_ = new QLineEdit(this);
    projectName_->setObjectName(QStringLiteral("projectName"));
    dataFolder_ = new QLineEdit(QString::fromLatin1(model.preferences().datapath), this);
    dataFolder_->setObjectName(QStringLiteral("dataFolder"));
    auto* browse = new QPushButton(QStringLiteral("Browse"), this);
    auto* folderRow = new QHBoxLayout;
    folderRow->addWidget(dataFolder_, 1);
    folderRow->addWidget(browse);
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("New Project name"), projectName_);
    form->addRow(QStringLiteral("Data folder"), folderRow);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    auto* apply =
        buttons->addButton(QStringLiteral("New Project from Preset"), QDialogButtonBox::ApplyRole);
    apply->setObjectName(QStringLiteral("apply"));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(
        new QLabel(QStringLiteral("Presets (double-click a name to rename it)"), this));
    layout->addLayout(listRow, 1);
    layout->addLayout(form);
    layout->addWidget(buttons);
    resize(520, 380);

    connect(rename, &QPushButton::clicked, this, [this] {
        if (QListWidgetItem* item = list_->currentItem())
            list_->editItem(item);
    });
    connect(remove, &QPushButton::clicked, this, &PresetManagerDialog::deleteSelected);
    connect(apply, &QPushButton::clicked, this, &PresetManagerDialog::applySelected);
    connect(browse, &QPushButton::clicked, this, &PresetManagerDialog::browse);
    connect(list_, &QListWidget::itemChanged, this, &PresetManagerDialog::renamed);
    connect(list_, &QListWidget::currentTextChanged, this, [this](const QString& name) {
        if (projectName_->text().isEmpty() || !projectName_->isModified())
            projectName_->setText(name);
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &PresetManagerDialog::reject);
    reload();
    if (list_->currentItem() != nullptr)
        projectName_->setText(list_->currentItem()->text());
}

void PresetManagerDialog::reload()
{
    const QSignalBlocker blocker(list_);
    const QString current = list_->currentItem() ? list_->currentItem()->text() : QString();
    list_->clear();
    for (const std::string& name : listPresets()) {
        auto* item = new QListWidgetItem(QString::fromStdString(name), list_);
        item->setData(Qt::UserRole, item->text());
        item->setFlags(item->flags() | Qt::ItemIsEditable);
        if (item->text() == current)
            list_->setCurrentItem(item);
    }
    if (list_->currentItem() == nullptr && list_->count() > 0)
        list_->setCurrentRow(0);
}

void PresetManagerDialog::renamed(QListWidgetItem* item)
{
    const QString before = item->data(Qt::UserRole).toString();
    std::string message;
    if (!renamePreset(before.toStdString(), item->text().toStdString(), message))
        showMessage(this, QString::fromLatin1(kTitle), QString::fromStdString(message));
    reload();
}

void PresetManagerDialog::deleteSelected()
{
    QListWidgetItem* item = list_->currentItem();
    if (item == nullptr)
        return;
    if (!askYesNo(this, QString::fromLatin1(kTitle),
                  QStringLiteral("Delete the preset \"%1\"?").arg(item->text())))
        return;
    std::string message;
    if (!deletePreset(item->text().toStdString(), message))
        showMessage(this, QString::fromLatin1(kTitle), QString::fromStdString(message));
    reload();
}

void PresetManagerDialog::browse()
{
    const QString folder = QFileDialog::getExistingDirectory(
        this, QStringLiteral("Select the Data Folder"), dataFolder_->text());
    if (!folder.isEmpty())
        dataFolder_->setText(folder);
}

void PresetManagerDialog::applySelected()
{
    QListWidgetItem* item = list_->currentItem();
    if (item == nullptr)
        return showMessage(this, QString::fromLatin1(kTitle), QStringLiteral("Choose a preset."));
    if (!QDir(dataFolder_->text()).exists() || dataFolder_->text().isEmpty())
        return showMessage(
            this, QString::fromLatin1(kTitle),
            QStringLiteral("The data folder \"%1\" does not exist.").arg(dataFolder_->text()));
    std::string message;
    if (!applyPreset(model_, item->text().toStdString(), projectName_->text().toStdString(),
                     dataFolder_->text().toStdString(), message))
        return showMessage(this, QString::fromLatin1(kTitle), QString::fromStdString(message));
    accept();
}

void saveSelectedProjectAsPreset(Model& model, QWidget* parent)
{
    const Project* project = model.currentProject();
    const QString title = QStringLiteral("Save selected Project as Preset");
    if (project == nullptr)
        return showMessage(parent, title, QStringLiteral("There is no Project to save."));
    bool ok = false;
    const QString name =
        QInputDialog::getText(parent, title, QStringLiteral("Preset name:"), QLineEdit::Normal,
                              QString::fromLatin1(project->name), &ok);
    if (!ok)
        return;
    std::string message;
    const auto replace = [parent, &title](const std::string& path) {
        (void)path;
        return askYesNo(parent, title,
                        QStringLiteral("A preset with that name already exists. Replace it?"));
    };
    if (!savePreset(*project, name.toStdString(), message, replace) && !message.empty())
        showMessage(parent, title, QString::fromStdString(message));
}

} // namespace tg::shell
