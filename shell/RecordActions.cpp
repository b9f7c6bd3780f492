#include "shell/RecordActions.h"

#include "recording/RecordList.h"
#include "shell/ActionTable.h"
#include "shell/dialogs/RecordDialog.h"

namespace tg::shell {

void bindRecordActions(MenuActions& actions, Model& model, QWidget* window)
{
    struct RecordEntryAction {
        const char* name;
        int command;
        bool automatic;
    };
    static const RecordEntryAction entries[] = {
        {"recordSelectedMultisample", kRecordSelectedMultiSample, true},
        {"recordSelectedProject", kRecordSelectedProject, true},
        {"recordAllProjects", kRecordAllProjects, true},
        {"semiAutoRecordSelectedMultisample", kRecordSelectedMultiSample, false},
        {"semiAutoRecordSelectedProject", kRecordSelectedProject, false},
        {"semiAutoRecordAllProjects", kRecordAllProjects, false},
    };
    for (const RecordEntryAction& entry : entries)
        actions.bind(QString::fromLatin1(entry.name), [&model, window, entry] {
            auto* dialog = new RecordDialog(model, entry.command, entry.automatic, window);
            dialog->setAttribute(Qt::WA_DeleteOnClose);
            dialog->open();
        });
}

} // namespace tg::shell
