// A dock of the main window: a QDockWidget with its own title bar (title, a button that puts
// a floating dock back into the dock area, a close button) that keeps its geometry and
// floating state in the INI file under its object name.
#pragma once

#include <QDockWidget>

class QLabel;
class QSettings;
class QToolButton;

namespace tg::shell {

class DockWidget : public QDockWidget {
    Q_OBJECT
  public:
    DockWidget(const QString& title, const QString& objectName, QWidget* parent = nullptr);

    // The panel shown in the dock (the dock takes it over).
    void setPanel(QWidget* panel);

    // "<objectName>/Geometry" and "<objectName>/IsFloating".
    void writeState(QSettings& ini) const;
    void readState(const QSettings& ini);

    QToolButton* dockBackButton() const { return dockBack_; }
    QToolButton* closeButton() const { return close_; }

  private:
    void onFloatingChanged(bool floating);

    QLabel* title_ = nullptr;
    QToolButton* dockBack_ = nullptr;
    QToolButton* close_ = nullptr;
};

} // namespace tg::shell
