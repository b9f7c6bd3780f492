// Message boxes.
#include "shell/MessageBoxes.h"

#include "core/Names.h"

#include <QMessageBox>

namespace tg::shell {

void showResult(QWidget* parent, const Result& result, const QString& title)
{
    if (!result.message.empty())
        showMessage(parent, title, QString::fromStdString(result.message));
}

void showMessage(QWidget* parent, const QString& title, const QString& text)
{
    QMessageBox::warning(parent, title, text);
}

bool askYesNo(QWidget* parent, const QString& title, const QString& text)
{
    return QMessageBox::question(parent, title, text, QMessageBox::Yes | QMessageBox::No) ==
           QMessageBox::Yes;
}

OverwriteConfirmation overwriteQuestion(QWidget* parent)
{
    return [parent] {
        return askYesNo(parent, QString::fromLatin1(kOverwriteTitle),
                        QString::fromLatin1(kOverwriteQuestion));
    };
}

} // namespace tg::shell
