// A list of named entries (Projects or Multi-Samples) with the current one selected, renamed
// in place, and buttons to duplicate, delete and move it. Subclasses say what the entries are
// and call the model's operations; the panel follows the model through its listener.
#pragma once

#include "core/Message.h"
#include "core/ModelListener.h"

#include <QStringList>
#include <QWidget>

class QListWidget;
class QListWidgetItem;
class QPushButton;

namespace tg {
class Model;
}

namespace tg::shell {

class ListPanel : public QWidget, public TonegrabberModelListener {
    Q_OBJECT
  public:
    ~ListPanel() override;

    QListWidget* list() const { return list_; }
    QPushButton* button(const QString& objectName) const;
    // Renames entry `row` as typing a name into it does.
    void renameRow(int row, const QString& name);

  protected:
    ListPanel(Model& model, const QString& objectName, QWidget* parent);

    // Rebuilds the rows from the model and selects the current entry.
    void refresh();

    virtual QStringList names() const = 0;
    virtual int currentRow() const = 0;
    virtual void selectRow(int row) = 0;
    virtual Result rename(int row, const QString& name) = 0;
    virtual Result duplicate() = 0;
    virtual Result removeCurrent() = 0;
    virtual Result moveUp() = 0;
    virtual Result moveDown() = 0;
    // "Do you really want to delete ...?" for the current entry.
    virtual QString deleteQuestion() const = 0;

    Model& model_;

  private:
    void onCurrentRowChanged(int row);
    void onItemChanged(QListWidgetItem* item);
    void onDelete();
    void run(Result (ListPanel::*operation)());
    void updateButtons();

    QListWidget* list_ = nullptr;
    bool refreshing_ = false;
};

} // namespace tg::shell
