// The entries that set up a recording: File -> "Project Wizard" (a new Project made from the
// wizard's answers, recorded at once and saved), Recording -> "Estimate Time and Size" and
// Extras -> "VST Host".
#pragma once

#include <functional>

class QWidget;

namespace tg {
class Model;
}

namespace tg::shell {

class MenuActions;

// What follows a finished wizard: the record dialog over the new Project (its result, a
// QDialog::DialogCode), and the save that follows an accepted recording (false when the
// Project was not saved).
struct NewProjectSteps {
    std::function<int(int command, bool automatic)> record;
    std::function<bool()> save;
};

// Runs the wizard over `parent`; on Finish makes the Project from its answers and goes on
// with `steps`. False when it was cancelled or the Project could not be made (said in a box).
bool runProjectWizard(Model& model, QWidget* parent, const NewProjectSteps& steps);

void bindRecordingSetupActions(MenuActions& actions, Model& model, QWidget* window,
                               const NewProjectSteps& steps);

} // namespace tg::shell
