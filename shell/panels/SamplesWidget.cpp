// The Samples panel.
#include "shell/panels/SamplesWidget.h"

#include "core/ListEditing.h"
#include "core/Model.h"
#include "core/NoteNames.h"
#include "shell/MessageBoxes.h"

#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

namespace tg::shell {

namespace {

QTableWidgetItem* textItem(const QString& text)
{
    auto* item = new QTableWidgetItem(text);
    item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
    return item;
}

QTableWidgetItem* switchItem()
{
    auto* item = new QTableWidgetItem;
    item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
    item->setCheckState(Qt::Unchecked);
    return item;
}

} // namespace

SamplesWidget::SamplesWidget(Model& model, QWidget* parent) : QWidget(parent), model_(model)
{
    setObjectName(QStringLiteral("SamplesWidget"));
    heading_ = new QLabel(this);
    heading_->setObjectName(QStringLiteral("heading"));
    table_ = new QTableWidget(kKeyCount, 6, this);
    table_->setObjectName(QStringLiteral("keys"));
    table_->setHorizontalHeaderLabels(
        {tr("Key"), tr("Name"), tr("Rec"), tr("Audio"), tr("Lock"), tr("Markers")});
    table_->horizontalHeaderItem(SelectedColumn)->setToolTip(tr("Selected for recording"));
    table_->horizontalHeaderItem(LockedColumn)
        ->setToolTip(tr("Locked: a run that keeps locked keys leaves it alone"));
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);

    for (int note = 0; note < kKeyCount; ++note) {
        table_->setItem(note, KeyColumn,
                        textItem(QStringLiteral("%1  %2").arg(note, 3).arg(
                            QString::fromStdString(noteName(note)))));
        table_->setItem(note, NameColumn, textItem({}));
        table_->setItem(note, SelectedColumn, switchItem());
        table_->setItem(note, AudioColumn, textItem({}));
        table_->setItem(note, LockedColumn, switchItem());
        table_->setItem(note, MarkersColumn, textItem({}));
    }

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(heading_);
    layout->addWidget(table_, 1);

    connect(table_, &QTableWidget::itemChanged, this, &SamplesWidget::onItemChanged);
    connect(table_, &QTableWidget::currentCellChanged, this,
            [this](int row) { onCurrentCellChanged(row); });
    model_.addListener(this);
    refresh();
}

SamplesWidget::~SamplesWidget()
{
    model_.removeListener(this);
}

QString SamplesWidget::heading() const
{
    return heading_->text();
}

QString SamplesWidget::markerSummary(const TGmsl_key& key)
{
    if (!key.hasAudio && key.Note_Out <= 0)
        return {};
    QString text = QStringLiteral("N %1-%2").arg(key.Note_In).arg(key.Note_Out);
    if (key.loopMode != 0)
        text += QStringLiteral("  L %1-%2").arg(key.Loop_In).arg(key.Loop_Out);
    if (key.releaseOn)
        text += QStringLiteral("  R %1-%2").arg(key.Release_In).arg(key.Release_Out);
    return text;
}

void SamplesWidget::refresh()
{
    refreshing_ = true;
    const TGmsl* msl = model_.currentMultiSample();
    heading_->setText(msl ? tr("Keys of \"%1\"").arg(QString::fromUtf8(msl->name))
                          : tr("No Multi-Sample selected"));
    table_->setEnabled(msl != nullptr);
    // The items stay and only change, as a switch being clicked may be what changed them.
    for (int note = 0; note < kKeyCount; ++note) {
        const TGmsl_key key = msl ? msl->keys[note] : makeNewKey(note);
        table_->item(note, NameColumn)->setText(QString::fromUtf8(key.name));
        table_->item(note, SelectedColumn)
            ->setCheckState(key.keyState ? Qt::Checked : Qt::Unchecked);
        table_->item(note, AudioColumn)->setText(key.hasAudio ? tr("yes") : QString());
        table_->item(note, LockedColumn)->setCheckState(key.locked ? Qt::Checked : Qt::Unchecked);
        table_->item(note, MarkersColumn)->setText(markerSummary(key));
    }
    const int current = model_.currentKey();
    if (msl && current >= 0)
        table_->selectRow(current);
    else
        table_->clearSelection();
    // Shows the selected key, or else the first key in use, rather than the bottom of the range.
    int shown = msl ? current : -1;
    for (int note = 0; msl && shown < 0 && note < kKeyCount; ++note)
        if (msl->keys[note].keyState)
            shown = note;
    if (shown >= 0)
        table_->scrollToItem(table_->item(shown, KeyColumn), QAbstractItemView::PositionAtTop);
    refreshing_ = false;
}

void SamplesWidget::keysChanged(int project, int msl)
{
    const Project* current = model_.currentProject();
    if (current && project == model_.currentProjectIndex() &&
        (msl < 0 || msl == current->currentMsl))
        refresh();
}

void SamplesWidget::currentKeyChanged(int note)
{
    if (refreshing_)
        return;
    refreshing_ = true;
    if (note >= 0)
        table_->selectRow(note);
    else
        table_->clearSelection();
    refreshing_ = false;
}

void SamplesWidget::onCurrentCellChanged(int row)
{
    if (!refreshing_ && row >= 0 && row != model_.currentKey())
        model_.selectKey(row);
}

void SamplesWidget::onItemChanged(QTableWidgetItem* item)
{
    if (refreshing_)
        return;
    const bool on = item->checkState() == Qt::Checked;
    const std::vector<int> note{item->row()};
    Result result;
    if (item->column() == SelectedColumn)
        result = setKeysSelected(model_, note, on);
    else if (item->column() == LockedColumn)
        result = setKeysLocked(model_, note, on);
    showResult(this, result);
}

} // namespace tg::shell
