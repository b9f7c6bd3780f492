// The Multi-Samples panel.
#include "shell/panels/MultisampleWidget.h"

#include "core/ListEditing.h"
#include "core/Model.h"
#include "shell/MessageBoxes.h"

namespace tg::shell {

MultisampleWidget::MultisampleWidget(Model& model, QWidget* parent)
    : ListPanel(model, QStringLiteral("MultisampleWidget"), parent)
{
    refresh();
}

QStringList MultisampleWidget::names() const
{
    QStringList names;
    if (const Project* project = model_.currentProject())
        for (int i = 0; i < project->mslCount; ++i)
            names << QString::fromUtf8(project->msl[i].name);
    return names;
}

int MultisampleWidget::currentRow() const
{
    const Project* project = model_.currentProject();
    return project && project->mslCount > 0 ? project->currentMsl : -1;
}

void MultisampleWidget::selectRow(int row)
{
    model_.selectMultiSample(row);
}

Result MultisampleWidget::rename(int row, const QString& name)
{
    return renameMultiSample(model_, row, name.toStdString(), overwriteQuestion(this));
}

Result MultisampleWidget::duplicate()
{
    return duplicateMultiSampleNamed(model_, overwriteQuestion(this));
}

Result MultisampleWidget::removeCurrent()
{
    return model_.deleteMultiSample();
}

Result MultisampleWidget::moveUp()
{
    return model_.moveMultiSampleUp();
}

Result MultisampleWidget::moveDown()
{
    return model_.moveMultiSampleDown();
}

QString MultisampleWidget::deleteQuestion() const
{
    const TGmsl* msl = model_.currentMultiSample();
    return tr("Do you really want to delete the multisample \"%1\"?")
        .arg(msl ? QString::fromUtf8(msl->name) : QString());
}

} // namespace tg::shell
