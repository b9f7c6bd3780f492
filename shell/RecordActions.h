// The record entries of the Recording menu: each opens the record dialog with its command,
// automatic or semi-automatic.
#pragma once

class QWidget;

namespace tg {
class Model;
}

namespace tg::shell {

class MenuActions;

// Binds the six record entries of `actions`; `window` parents the record dialog.
void bindRecordActions(MenuActions& actions, Model& model, QWidget* window);

} // namespace tg::shell
