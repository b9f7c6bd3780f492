// The preferences dialog: every preference as a widget named by its key, editing the live
// preferences record. Cancel puts back the record as it was when the dialog opened; OK keeps
// the edits and writes the dialog's window options to Tonegrabber.ini.
#pragma once

#include "core/Preferences.h"

#include <QDialog>

class QCheckBox;

namespace tg {
class Model;
}

namespace tg::shell {

class PreferencesDialog : public QDialog {
    Q_OBJECT
  public:
    explicit PreferencesDialog(Model& model, QWidget* parent = nullptr);

    void accept() override;
    void reject() override;

  private:
    Model& model_;
    PreferencesSnapshot snapshot_;
    QCheckBox* warnOnQuit_ = nullptr;
    QCheckBox* updateNotifications_ = nullptr;
};

} // namespace tg::shell
