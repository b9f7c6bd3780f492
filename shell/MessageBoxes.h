// The message boxes through which the layers' texts reach the user.
#pragma once

#include "core/ListEditing.h"
#include "core/Message.h"

#include <QString>

class QWidget;

namespace tg::shell {

// Shows a refusal's message, when it has one, under `title`.
void showResult(QWidget* parent, const Result& result,
                const QString& title = QStringLiteral("Error"));
// A message box with one OK button.
void showMessage(QWidget* parent, const QString& title, const QString& text);
// A yes/no question; true for yes.
bool askYesNo(QWidget* parent, const QString& title, const QString& text);
// The overwrite question of the list operations, asked over `parent`.
OverwriteConfirmation overwriteQuestion(QWidget* parent);

} // namespace tg::shell
