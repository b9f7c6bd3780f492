// The about box: program, version and build, and the libraries it runs on with their loaded
// versions and licences.
#pragma once

#include <QDialog>

class QTableWidget;

namespace tg::shell {

class AboutDialog : public QDialog {
    Q_OBJECT
  public:
    explicit AboutDialog(QWidget* parent = nullptr);
    QTableWidget* libraries() const { return libraries_; }

  private:
    QTableWidget* libraries_ = nullptr;
};

} // namespace tg::shell
