// The list panels' common part.
#include "shell/panels/ListPanel.h"

#include "core/Model.h"
#include "shell/MessageBoxes.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace tg::shell {

ListPanel::ListPanel(Model& model, const QString& objectName, QWidget* parent)
    : QWidget(parent), model_(model)
{
    setObjectName(objectName);
    list_ = new QListWidget(this);
    list_->setObjectName(QStringLiteral("list"));
    list_->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    list_->setToolTip(tr("Double-click a name to rename it"));

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    const auto addButton = [&](const QString& name, const QString& text, const QString& tip,
                               auto slot) {
        auto* button = new QPushButton(text, this);
        button->setObjectName(name);
        button->setToolTip(tip);
        connect(button, &QPushButton::clicked, this, slot);
        buttons->addWidget(button);
    };
    addButton(QStringLiteral("duplicate"), tr("Duplicate"), tr("Duplicate the selected entry"),
              [this] { run(&ListPanel::duplicate); });
    addButton(QStringLiteral("delete"), tr("Delete"), tr("Delete the selected entry"),
              [this] { onDelete(); });
    addButton(QStringLiteral("moveUp"), tr("Up"), tr("Move the selected entry up"),
              [this] { run(&ListPanel::moveUp); });
    addButton(QStringLiteral("moveDown"), tr("Down"), tr("Move the selected entry down"),
              [this] { run(&ListPanel::moveDown); });

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(list_, 1);
    layout->addLayout(buttons);

    connect(list_, &QListWidget::currentRowChanged, this, &ListPanel::onCurrentRowChanged);
    connect(list_, &QListWidget::itemChanged, this, &ListPanel::onItemChanged);
    model_.addListener(this);
}

ListPanel::~ListPanel()
{
    model_.removeListener(this);
}

QPushButton* ListPanel::button(const QString& objectName) const
{
    return findChild<QPushButton*>(objectName);
}

void ListPanel::refresh()
{
    refreshing_ = true;
    const QStringList entries = names();
    list_->clear();
    for (const QString& name : entries) {
        auto* item = new QListWidgetItem(name, list_);
        item->setFlags(item->flags() | Qt::ItemIsEditable);
    }
    const int current = currentRow();
    if (current >= 0 && current < list_->count())
        list_->setCurrentRow(current);
    refreshing_ = false;
    updateButtons();
}

void ListPanel::updateButtons()
{
    const int row = list_->currentRow();
    const bool any = row >= 0;
    button(QStringLiteral("duplicate"))->setEnabled(any);
    button(QStringLiteral("delete"))->setEnabled(any);
    button(QStringLiteral("moveUp"))->setEnabled(row > 0);
    button(QStringLiteral("moveDown"))->setEnabled(any && row < list_->count() - 1);
}

void ListPanel::onCurrentRowChanged(int row)
{
    if (refreshing_ || row < 0)
        return;
    if (row != currentRow())
        selectRow(row);
    updateButtons();
}

void ListPanel::onItemChanged(QListWidgetItem* item)
{
    if (refreshing_)
        return;
    renameRow(list_->row(item), item->text());
}

void ListPanel::renameRow(int row, const QString& name)
{
    if (row < 0 || row >= list_->count())
        return;
    const Result result = rename(row, name);
    showResult(this, result);
    // Shows the name the model holds now: the new one, or the old one after a refusal.
    refresh();
}

void ListPanel::onDelete()
{
    if (model_.preferences().promptWhenDeleting && !askYesNo(this, tr("Delete"), deleteQuestion()))
        return;
    run(&ListPanel::removeCurrent);
}

void ListPanel::run(Result (ListPanel::*operation)())
{
    showResult(this, (this->*operation)());
}

} // namespace tg::shell
