// Widget test helpers.
#include "shell/tests/WidgetTestSupport.h"

#include <QAbstractButton>
#include <QApplication>

namespace tg::test {

MessageBoxAnswerer::MessageBoxAnswerer(QMessageBox::StandardButton answer) : answer_(answer)
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
    if (QAbstractButton* button = box->button(answer_))
        button->click();
    else
        box->reject();
}

} // namespace tg::test
