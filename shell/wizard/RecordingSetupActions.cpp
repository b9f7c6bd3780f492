#include "shell/wizard/RecordingSetupActions.h"

#include "core/Model.h"
#include "recording/ProjectSetup.h"
#include "recording/RecordList.h"
#include "shell/ActionTable.h"
#include "shell/wizard/EstimationDialog.h"
#include "shell/wizard/ProjectWizard.h"
#include "shell/wizard/VstHostWidget.h"

#include <QMessageBox>

namespace tg::shell {

bool runProjectWizard(Model& model, QWidget* parent, const NewProjectSteps& steps)
{
    ProjectWizard wizard(model, parent);
    if (wizard.exec() != QDialog::Accepted)
        return false;
    const ProjectSetupRecord setup = wizard.setupRecord();
    const Result made = createProjectFromSetup(model, setup);
    if (!made.ok()) {
        QMessageBox::warning(parent, QObject::tr("Error"), QString::fromStdString(made.message));
        return false;
    }
    if (steps.record(kRecordSelectedProject, setup.automatic) == QDialog::Accepted)
        steps.save();
    return true;
}

void bindRecordingSetupActions(MenuActions& actions, Model& model, QWidget* window,
                               const NewProjectSteps& steps)
{
    actions.bind(QStringLiteral("openProjectWizard"),
                 [&model, window, steps] { runProjectWizard(model, window, steps); });
    actions.bind(QStringLiteral("openEstimationDialog"),
                 [&model, window] { EstimationDialog(model, window).exec(); });
    actions.bind(QStringLiteral("openVstHostConfig"), [window] { VstHostWidget(window).exec(); });
}

} // namespace tg::shell
