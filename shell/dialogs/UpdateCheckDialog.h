// "Check for Updates": the address asked (kept in Tonegrabber.ini), the check running in the
// background and its outcome; and the quiet check at start-up that only speaks up when a newer
// version exists.
#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace tg {
class UpdateChecker;
}

namespace tg::shell {

class UpdateCheckDialog : public QDialog {
    Q_OBJECT
  public:
    explicit UpdateCheckDialog(QWidget* parent = nullptr);

    // Stores the address and starts a check; the outcome replaces the status text.
    void checkNow();
    QLineEdit* address() const { return address_; }
    QLabel* status() const { return status_; }
    UpdateChecker& checker() { return *checker_; }

  private:
    QLineEdit* address_ = nullptr;
    QLabel* status_ = nullptr;
    QPushButton* check_ = nullptr;
    UpdateChecker* checker_ = nullptr;
};

// When an address is set and "UpdateServiceDialog/ShowUpdateNotifications" is on, checks in the
// background and tells `window` only of a newer version. Returns at once.
void checkForUpdatesAtStartup(QWidget* window);

} // namespace tg::shell
