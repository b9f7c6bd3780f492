// The Projects panel: the open Projects in order, the current one selected.
#pragma once

#include "shell/panels/ListPanel.h"

namespace tg::shell {

class ProjectsWidget : public ListPanel {
    Q_OBJECT
  public:
    explicit ProjectsWidget(Model& model, QWidget* parent = nullptr);

    void projectListChanged() override { refresh(); }
    void currentProjectChanged(int) override { refresh(); }
    void projectChanged(int) override { refresh(); }

  protected:
    QStringList names() const override;
    int currentRow() const override;
    void selectRow(int row) override;
    Result rename(int row, const QString& name) override;
    Result duplicate() override;
    Result removeCurrent() override;
    Result moveUp() override;
    Result moveDown() override;
    QString deleteQuestion() const override;
};

} // namespace tg::shell
