// The MIDI monitor.
#include "shell/dialogs/MidiMonitorWidget.h"

#include "devices/MidiManager.h"
#include "devices/MidiMessages.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace tg::shell {

namespace {

// Rows kept: a clock or sensing stream must not grow the table without end.
constexpr int kMaxRows = 5000;

} // namespace

MidiMonitorWidget::MidiMonitorWidget(QWidget* parent) : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("MidiMonitorWidget"));
    setWindowTitle(tr("MIDI Monitor"));
    auto* layout = new QVBoxLayout(this);
    table_ = new QTableWidget(0, 4);
    table_->setHorizontalHeaderLabels({tr("Status"), tr("Data1"), tr("Data2"), tr("Comment")});
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->verticalHeader()->setVisible(false);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    layout->addWidget(table_);
    auto* buttons = new QHBoxLayout;
    auto* clearButton = new QPushButton(tr("Clear"));
    connect(clearButton, &QPushButton::clicked, this, &MidiMonitorWidget::clear);
    buttons->addStretch(1);
    buttons->addWidget(clearButton);
    layout->addLayout(buttons);
    resize(520, 360);
}

void MidiMonitorWidget::listenTo(MidiManager& manager)
{
    connect(&manager, &MidiManager::midiIn, this, &MidiMonitorWidget::onMidiIn);
}

void MidiMonitorWidget::onMidiIn(std::vector<unsigned char> message)
{
    if (message.empty())
        return;
    if (table_->rowCount() >= kMaxRows)
        table_->removeRow(0);
    const int row = table_->rowCount();
    table_->insertRow(row);
    const auto cell = [&](int column, const QString& text) {
        table_->setItem(row, column, new QTableWidgetItem(text));
    };
    cell(0, QStringLiteral("0x") +
                QString::number(message[0], 16).rightJustified(2, QLatin1Char('0')).toUpper());
    cell(1, message.size() > 1 ? QString::number(message[1]) : QString());
    cell(2, message.size() > 2 ? QString::number(message[2]) : QString());
    cell(3, QString::fromStdString(
                midiMessageText(message.data(), std::min<size_t>(message.size(), 3))));
    table_->scrollToBottom();
}

void MidiMonitorWidget::clear()
{
    table_->setRowCount(0);
}

} // namespace tg::shell
