// The controller editors.
#include "shell/panels/ControllerTableWidget.h"

#include "core/ControllerSettings.h"
#include "core/Model.h"

#include <QHeaderView>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>

namespace tg::shell {

namespace {

enum Column { kNumberColumn, kActiveColumn, kValueColumn };

QString controllerName(int controller)
{
    if (controller >= 32 && controller < 64)
        return QObject::tr("%1 (LSB of %2)").arg(controller).arg(controller - 32);
    return QString::number(controller);
}

} // namespace

ControllerTableWidget::ControllerTableWidget(Model& model, int first, int last, QWidget* parent)
    : QWidget(parent), model_(model), first_(first), last_(last)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    table_ = new QTableWidget(last - first + 1, 3);
    table_->setHorizontalHeaderLabels({tr("Controller"), tr("Active"), tr("Value")});
    table_->verticalHeader()->setVisible(false);
    table_->horizontalHeader()->setStretchLastSection(true);
    for (int controller = first; controller <= last; ++controller) {
        const int row = rowOf(controller);
        auto* number = new QTableWidgetItem(controllerName(controller));
        number->setFlags(Qt::ItemIsEnabled);
        table_->setItem(row, kNumberColumn, number);
        auto* active = new QTableWidgetItem;
        active->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        active->setCheckState(Qt::Unchecked);
        table_->setItem(row, kActiveColumn, active);
        auto* value = new QSpinBox;
        value->setRange(0, 127);
        value->setKeyboardTracking(false);
        connect(value, QOverload<int>::of(&QSpinBox::valueChanged), this,
                [this, controller](int) { store(controller); });
        table_->setCellWidget(row, kValueColumn, value);
    }
    connect(table_, &QTableWidget::itemChanged, this, [this](QTableWidgetItem* item) {
        if (item->column() == kActiveColumn)
            store(first_ + item->row());
    });
    layout->addWidget(table_);
    refresh();
    model_.addListener(this);
}

ControllerTableWidget::~ControllerTableWidget()
{
    model_.removeListener(this);
}

void ControllerTableWidget::store(int controller)
{
    if (refreshing_)
        return;
    const int row = rowOf(controller);
    ControllerEntry entry;
    entry.active = table_->item(row, kActiveColumn)->checkState() == Qt::Checked;
    entry.value = static_cast<QSpinBox*>(table_->cellWidget(row, kValueColumn))->value();
    // Through the model: the MIDI output hears of it and sends this controller at once.
    setControllerEntry(model_, controller, entry);
}

void ControllerTableWidget::refresh()
{
    refreshing_ = true;
    const TGmsl* msl = model_.currentMultiSample();
    table_->setEnabled(msl != nullptr);
    for (int controller = first_; controller <= last_; ++controller) {
        ControllerEntry entry;
        if (msl != nullptr)
            controllerEntry(*msl, controller, entry);
        const int row = rowOf(controller);
        table_->item(row, kActiveColumn)->setCheckState(entry.active ? Qt::Checked : Qt::Unchecked);
        static_cast<QSpinBox*>(table_->cellWidget(row, kValueColumn))->setValue(entry.value);
    }
    refreshing_ = false;
}

void ControllerTableWidget::currentProjectChanged(int)
{
    refresh();
}

void ControllerTableWidget::currentMultiSampleChanged(int)
{
    refresh();
}

void ControllerTableWidget::multiSampleChanged(int)
{
    refresh();
}

void ControllerTableWidget::settingChanged(const std::string& key)
{
    const int controller = controllerOfKey(key);
    if (controller >= first_ && controller <= last_ && !refreshing_)
        refresh();
}

MidiControllerWidget::MidiControllerWidget(Model& model, QWidget* parent)
    : ControllerTableWidget(model, 0, 63, parent)
{
    setObjectName(QStringLiteral("MidiControllerWidget"));
}

ParameterWidget::ParameterWidget(Model& model, QWidget* parent)
    : ControllerTableWidget(model, 64, kHighestStoredController, parent)
{
    setObjectName(QStringLiteral("ParameterWidget"));
}

} // namespace tg::shell
