// Helpers of the widget tests: answering message boxes as a user would, and finding named
// children.
#pragma once

#include <QMessageBox>
#include <QObject>
#include <QString>
#include <QTimer>
#include <gtest/gtest.h>

#include <vector>

namespace tg::test {

// While it lives, answers every message box that comes up: notes its title and text and
// presses `answer` (closes the box when it has no such button).
class MessageBoxAnswerer : public QObject {
  public:
    explicit MessageBoxAnswerer(QMessageBox::StandardButton answer = QMessageBox::Ok);
    struct Seen {
        QString title;
        QString text;
    };
    const std::vector<Seen>& seen() const { return seen_; }
    QStringList texts() const;
    // "<title>: <text>" of every box seen.
    QStringList boxes() const;

  private:
    void answerOpenBox();

    QMessageBox::StandardButton answer_;
    QTimer timer_;
    std::vector<Seen> seen_;
};

// The child of `parent` with that object name; a test failure when there is none.
template <typename T> T* named(QObject& parent, const char* name)
{
    T* found = parent.findChild<T*>(QString::fromLatin1(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
}

} // namespace tg::test
