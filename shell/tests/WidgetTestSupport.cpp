// Widget test helpers.
#include "shell/tests/WidgetTestSupport.h"

#include <QAbstractButton>
#include <QApplication>

namespace tg::test {

MessageBoxAnswerer::MessageBoxAnswerer(QMessageBox::StandardButton answer, QString answerText)
    : answer_(answer), answerText_(std::move(answerText))
{
    connect(&timer_, &QTimer::timeout, this, &MessageBoxAnswerer::answerOpenBox);
    timer_.start(10);
}

QStringList MessageBoxAnswerer::texts() const
{
    QStringList texts;
    for (const Seen& s : seen_)
        texts << s.text;
    return texts;
}

QStringList MessageBoxAnswerer::boxes() const
{
    QStringList boxes;
    for (const Seen& s : seen_)
        boxes << s.title + ": " + s.text;
    return boxes;
}

void MessageBoxAnswerer::answerOpenBox()
{
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box || !box->isVisible())
        return;
    seen_.push_back({box->windowTitle(), box->text()});
    QAbstractButton* button = nullptr;
    if (!answerText_.isEmpty())
        for (QAbstractButton* candidate : box->buttons())
            if (candidate->text() == answerText_)
                button = candidate;
    if (!button)
        button = box->button(answer_);
    if (button)
        button->click();
    else
        box->reject();
}

} // namespace tg::test
