// Quick help tables built from the program's own actions.
#include "shell/dialogs/QuickHelpDialog.h"

#include "shell/ActionTable.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QFont>
#include <QHeaderView>
#include <QKeySequence>
#include <QTableWidget>
#include <QVBoxLayout>

namespace tg::shell {

namespace {

// The editor's markers, as the key record names them, and what dragging them sets.
struct MarkerHelp {
    const char* marker;
    const char* meaning;
};
constexpr MarkerHelp kMarkers[] = {
    {"Silence In / Silence Out", "the noise reference before the note; auto-note compares "
                                 "the note with it"},
    {"Note In / Note Out", "the first and last frame of the note as it is played and exported"},
    {"Loop In / Loop Out", "the first and last frame of the loop"},
    {"Loop Search In / Out", "the region in which auto-loop looks for the loop end"},
    {"Release In / Release Out", "the release part played after the key is let go"},
    {"x-fade / bf-x-fade", "the crossfade length before Loop Out (backward-forward: both turns)"},
};

QString shortcutText(const QString& portable)
{
    return QKeySequence(portable).toString(QKeySequence::NativeText);
}

} // namespace

QuickHelpDialog::QuickHelpDialog(const QString& title, const QString& objectName, QWidget* parent)
    : QDialog(parent)
{
    setObjectName(objectName);
    setWindowTitle(title);
    table_ = new QTableWidget(0, 2, this);
    table_->setObjectName(QStringLiteral("help"));
    table_->setHorizontalHeaderLabels({QStringLiteral("Command"), QStringLiteral("Keys")});
    table_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    table_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    table_->verticalHeader()->hide();
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setSelectionMode(QAbstractItemView::NoSelection);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(table_);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    resize(520, 560);
}

void QuickHelpDialog::addSection(const QString& title)
{
    const int row = table_->rowCount();
    table_->insertRow(row);
    auto* item = new QTableWidgetItem(title);
    QFont bold = item->font();
    bold.setBold(true);
    item->setFont(bold);
    table_->setItem(row, 0, item);
    table_->setSpan(row, 0, 1, 2);
}

void QuickHelpDialog::addRow(const QString& what, const QString& keys)
{
    const int row = table_->rowCount();
    table_->insertRow(row);
    table_->setItem(row, 0, new QTableWidgetItem(what));
    table_->setItem(row, 1, new QTableWidgetItem(keys));
}

QuickHelpDialog* QuickHelpDialog::keyCommands(QWidget* parent)
{
    auto* dialog = new QuickHelpDialog(QStringLiteral("Quick Help: Key Commands"),
                                       QStringLiteral("KeyCommandsHelp"), parent);
    bool first = true;
    MenuId menu = MenuId::File;
    for (const MenuEntry& entry : menuEntries()) {
        if (entry.kind == EntryKind::Separator || entry.kind == EntryKind::Submenu)
            continue;
        if (first || entry.menu != menu) {
            dialog->addSection(menuTitle(entry.menu));
            menu = entry.menu;
            first = false;
        }
        dialog->addRow(QString::fromUtf8(entry.text),
                       shortcutText(QString::fromLatin1(entry.shortcut)));
    }
    dialog->table_->resizeRowsToContents();
    return dialog;
}

QuickHelpDialog* QuickHelpDialog::editorHelp(QWidget* editor, QWidget* parent)
{
    auto* dialog = new QuickHelpDialog(QStringLiteral("Quick Help: Note/Loop/Release Editor"),
                                       QStringLiteral("EditorHelp"), parent);
    dialog->table_->setHorizontalHeaderLabels(
        {QStringLiteral("Marker or command"), QStringLiteral("Meaning or keys")});
    dialog->addSection(QStringLiteral("Markers (drag them in the waveform)"));
    for (const MarkerHelp& marker : kMarkers)
        dialog->addRow(QString::fromLatin1(marker.marker), QString::fromLatin1(marker.meaning));
    dialog->addSection(QStringLiteral("Editor commands"));
    int commands = 0;
    if (editor != nullptr)
        for (const QAction* action : editor->findChildren<QAction*>()) {
            if (action->text().isEmpty())
                continue;
            dialog->addRow(action->text().remove(QLatin1Char('&')),
                           action->shortcut().toString(QKeySequence::NativeText));
            ++commands;
        }
    if (commands == 0)
        dialog->addRow(QStringLiteral("(the editor has no commands of its own)"), QString());
    dialog->table_->resizeRowsToContents();
    return dialog;
}

} // namespace tg::shell
