// The quick help windows: "Quick Help: Key Commands" lists every menu entry with its shortcut,
// straight from the menu table, and "Quick Help: Note/Loop/Release Editor" lists the editor's
// markers and the shortcuts of the actions the editor carries, so neither can drift from what
// the program does.
#pragma once

#include <QDialog>

class QTableWidget;

namespace tg::shell {

class QuickHelpDialog : public QDialog {
    Q_OBJECT
  public:
    // The key commands of the menu table.
    static QuickHelpDialog* keyCommands(QWidget* parent);
    // The editor help; `editor` is the widget whose actions are listed (may be null).
    static QuickHelpDialog* editorHelp(QWidget* editor, QWidget* parent);

    QTableWidget* table() const { return table_; }

  private:
    QuickHelpDialog(const QString& title, const QString& objectName, QWidget* parent);
    void addSection(const QString& title);
    void addRow(const QString& what, const QString& keys);

    QTableWidget* table_ = nullptr;
};

} // namespace tg::shell
