// The File, Import/Export and Help entries that open the import, preset, copier, quick help,
// update and about windows: each entry opens one dialog over the main window.
#pragma once

class QWidget;

namespace tg {
class Model;
}

namespace tg::shell {

class MenuActions;

// Binds those entries of `actions`; `window` parents the dialogs and `editor` (may be null) is
// the widget whose commands the editor help lists.
void bindExtrasActions(MenuActions& actions, Model& model, QWidget* window,
                       QWidget* editor = nullptr);

} // namespace tg::shell
