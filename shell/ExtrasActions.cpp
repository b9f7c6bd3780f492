// Menu entries to dialogs: every dialog is modal over the main window, except the quick help
// windows, which stay open beside it.
#include "shell/ExtrasActions.h"

#include "core/Model.h"
#include "shell/ActionTable.h"
#include "shell/dialogs/AboutDialog.h"
#include "shell/dialogs/ImportAudioDialog.h"
#include "shell/dialogs/ImportSoundLibraryDialog.h"
#include "shell/dialogs/InstrumentCopierDialog.h"
#include "shell/dialogs/PresetManagerDialog.h"
#include "shell/dialogs/QuickHelpDialog.h"
#include "shell/dialogs/UpdateCheckDialog.h"

#include <QPointer>

#include <memory>
#include <utility>

namespace tg::shell {

namespace {

template <typename Dialog, typename... Args> void runModal(QWidget* window, Args&&... args)
{
    Dialog dialog(std::forward<Args>(args)..., window);
    dialog.exec();
}

// Shows a quick help window, or raises the one already open.
void showHelp(QPointer<QuickHelpDialog>& open, QuickHelpDialog* made)
{
    if (open) {
        delete made;
        open->raise();
        open->activateWindow();
        return;
    }
    open = made;
    made->setAttribute(Qt::WA_DeleteOnClose);
    made->show();
}

} // namespace

void bindExtrasActions(MenuActions& actions, Model& model, QWidget* window, QWidget* editor)
{
    const auto importFiles = [&model, window](ImportFileTypes types) {
        return [&model, window, types] {
            if (model.currentProject() == nullptr || model.currentProject()->mslCount == 0)
                return;
            runModal<ImportAudioDialog>(window, model, types);
        };
    };
    actions.bind(QStringLiteral("openImportAudioFileDialog"), importFiles(ImportFileTypes::Audio));
    actions.bind(QStringLiteral("importWavFiles"), importFiles(ImportFileTypes::Wav));
    actions.bind(QStringLiteral("importAiffFiles"), importFiles(ImportFileTypes::Aiff));
    actions.bind(QStringLiteral("openImportSoundLibraryDialog"), [&model, window] {
        if (model.currentProject() != nullptr)
            runModal<ImportSoundLibraryDialog>(window, model);
    });
    actions.bind(QStringLiteral("openPresetManager"),
                 [&model, window] { runModal<PresetManagerDialog>(window, model); });
    actions.bind(QStringLiteral("saveSelectedProjectAsPreset"),
                 [&model, window] { saveSelectedProjectAsPreset(model, window); });
    actions.bind(QStringLiteral("openInstrumentCopier"), [&model, window] {
        if (model.projectCount() > 0)
            runModal<InstrumentCopierDialog>(window, model);
    });

    auto keyCommands = std::make_shared<QPointer<QuickHelpDialog>>();
    auto editorHelp = std::make_shared<QPointer<QuickHelpDialog>>();
    actions.bind(QStringLiteral("openKeyCommands"), [keyCommands, window] {
        showHelp(*keyCommands, QuickHelpDialog::keyCommands(window));
    });
    actions.bind(QStringLiteral("openEditorHelp"), [editorHelp, window, editor] {
        showHelp(*editorHelp, QuickHelpDialog::editorHelp(editor, window));
    });
    actions.bind(QStringLiteral("checkForUpdates"),
                 [window] { runModal<UpdateCheckDialog>(window); });
    actions.bind(QStringLiteral("openAbout"), [window] { runModal<AboutDialog>(window); });
}

} // namespace tg::shell
