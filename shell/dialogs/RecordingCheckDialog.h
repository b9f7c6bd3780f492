// The check dialog of a semi-automatic take: the user names the key, prehears the take (the
// note, or the note with its loop repeating until Stop) and keeps it or records it again.
#pragma once

#include "core/Records.h"

#include <QDialog>

#include <cstdint>
#include <string>
#include <vector>

class QLabel;
class QLineEdit;
class QPushButton;

namespace tg {
struct Project;
}

namespace tg::shell {

class RecordingCheckDialog : public QDialog {
    Q_OBJECT
  public:
    // The take of `note` in `msl`, just saved with its markers. Accepted: keep; rejected
    // (also by closing): discard and record the key again.
    RecordingCheckDialog(const Project& project, const TGmsl& msl, int note,
                         QWidget* parent = nullptr);
    ~RecordingCheckDialog() override;

    QString keyName() const;
    QLineEdit* keyNameEdit() const { return keyName_; }
    QPushButton* keepButton() const { return keep_; }
    QPushButton* discardButton() const { return discard_; }
    QPushButton* noteButton() const { return note_; }
    QPushButton* loopButton() const { return loop_; }
    QPushButton* stopButton() const { return stop_; }
    // Why the last Prehear played nothing (empty when it played).
    QString prehearProblem() const;

  private:
    // Plays the take up to its release end, or up to its loop end with the loop repeating.
    void prehear(bool withLoop);
    void stopPrehear();

    TGmsl_key key_;
    std::string file_;
    QLineEdit* keyName_ = nullptr;
    QLabel* problem_ = nullptr;
    QPushButton* note_ = nullptr;
    QPushButton* loop_ = nullptr;
    QPushButton* stop_ = nullptr;
    QPushButton* keep_ = nullptr;
    QPushButton* discard_ = nullptr;
};

} // namespace tg::shell
