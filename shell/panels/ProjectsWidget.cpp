// The Projects panel.
#include "shell/panels/ProjectsWidget.h"

#include "core/ListEditing.h"
#include "core/Model.h"
#include "shell/MessageBoxes.h"

namespace tg::shell {

ProjectsWidget::ProjectsWidget(Model& model, QWidget* parent)
    : ListPanel(model, QStringLiteral("ProjectsWidget"), parent)
{
    refresh();
}

QStringList ProjectsWidget::names() const
{
    QStringList names;
    for (int i = 0; i < model_.projectCount(); ++i)
        names << QString::fromUtf8(model_.project(i).name);
    return names;
}

int ProjectsWidget::currentRow() const
{
    return model_.projectCount() > 0 ? model_.currentProjectIndex() : -1;
}

void ProjectsWidget::selectRow(int row)
{
    model_.selectProject(row);
}

Result ProjectsWidget::rename(int row, const QString& name)
{
    return renameProject(model_, row, name.toStdString(), overwriteQuestion(this));
}

Result ProjectsWidget::duplicate()
{
    return duplicateProjectNamed(model_, overwriteQuestion(this));
}

Result ProjectsWidget::removeCurrent()
{
    return model_.deleteProject();
}

Result ProjectsWidget::moveUp()
{
    return model_.moveProjectUp();
}

Result ProjectsWidget::moveDown()
{
    return model_.moveProjectDown();
}

QString ProjectsWidget::deleteQuestion() const
{
    return tr("Do you really want to delete the project \"%1\"?")
        .arg(QString::fromUtf8(model_.view().name));
}

} // namespace tg::shell
