// From an export menu entry to the exporter's message.
#include "shell/ExportFlow.h"

#include "core/Model.h"
#include "export/BackgroundExport.h"
#include "export/ExportAllProjects.h"
#include "export/ExportFormats.h"
#include "export/UnavailableFormats.h"
#include "export/montage/MontageExport.h"
#include "shell/ActionTable.h"
#include "shell/MessageBoxes.h"
#include "shell/dialogs/ExportNamingDialog.h"
#include "shell/dialogs/ExportSettingsDialog.h"
#include "shell/dialogs/ExportTaggingDialog.h"
#include "shell/dialogs/ProgressDialog.h"

#include <QDir>
#include <QFileDialog>
#include <QMenu>
#include <QMessageBox>

#include <cstring>

namespace tg::shell {

namespace {

QString nameOf(const Project& project)
{
    return QString::fromUtf8(project.name, int(strnlen(project.name, sizeof project.name)));
}

} // namespace

ExportFlow::ExportFlow(Model& model, QWidget* window, MenuActions& actions)
    : QObject(window), model_(model), window_(window)
{
    QMenu* selected = actions.submenu(QString::fromLatin1(kExportSelectedMenu));
    QMenu* all = actions.submenu(QString::fromLatin1(kExportAllMenu));
    int index = 0;
    for (const std::string& text : exportMenuTexts()) {
        const QString menuText = QString::fromStdString(text);
        const QString selectedName = QStringLiteral("exportSelected%1").arg(index);
        const QString allName = QStringLiteral("exportAll%1").arg(index++);
        actions.addPendingEntry(selected, selectedName, menuText);
        actions.addPendingEntry(all, allName, menuText);
        const ExportFormatInfo* info = findExportFormat(text);
        if (info == nullptr || !hasExporter(info->format)) {
            const char* reason = info ? exportUnavailableReason(info->format) : nullptr;
            if (reason != nullptr)
                for (const QString& name : {selectedName, allName})
                    actions.action(name)->setToolTip(QString::fromUtf8(reason));
            continue;
        }
        actions.bind(selectedName, [this, menuText] { exportSelected(menuText); });
        actions.bind(allName, [this, menuText] { exportAll(menuText); });
    }
}

bool ExportFlow::chooseExport(const QString& menuText, const Project& shown, bool allProjects,
                              ExportRequest& request)
{
    const ExportFormatInfo* info = findExportFormat(menuText.toStdString());
    if (info == nullptr)
        return false;
    ExportSettingsDialog settings(menuText, hasLastWord_, lastWord_, window_);
    if (settings.exec() != QDialog::Accepted)
        return false;
    hasLastWord_ = true;
    lastWord_ = settings.word();
    request.menuText = menuText.toStdString();
    request.hasSettings = true;
    request.settings = lastWord_;
    request.loopAll = settings.loopAll();

    QString folder;
    if (usesNamingScheme(info->format)) {
        ExportNamingDialog naming(shown, menuText, window_);
        if (!lastNaming_.isEmpty())
            naming.setNamingScheme(lastNaming_);
        naming.setDestination(lastFolder_);
        if (naming.exec() != QDialog::Accepted)
            return false;
        lastNaming_ = naming.namingScheme();
        request.nameTemplate = lastNaming_.toStdString();
        folder = naming.destination();
        const QString warning =
            QString::fromLatin1(allProjectsNamingWarning(request.nameTemplate).c_str());
        if (allProjects && !warning.isEmpty() &&
            !askYesNo(window_, tr("Continue?"), warning + tr("Do you want to continue anyhow?")))
            return false;
    } else {
        folder = QFileDialog::getExistingDirectory(window_, tr("Select Directory"), lastFolder_);
        if (folder.isEmpty())
            return false;
    }
    lastFolder_ = folder;
    request.destination = folder.toStdString();
    if (!exportsIntoFolder(info->format)) {
        const std::string extension = menuTextExtension(request.menuText);
        request.destination =
            QDir(folder)
                .filePath(nameOf(shown) + QStringLiteral(".") + QString::fromStdString(extension))
                .toStdString();
    }
    if (info->format == ExportFormat::ProphetX || info->format == ExportFormat::Quantum) {
        ExportTaggingDialog tagging(info->format, nameOf(shown), window_);
        if (tagging.exec() != QDialog::Accepted)
            return false;
        request.tagging = tagging.tagging();
    }
    return true;
}

bool ExportFlow::passesChecks(const Project& project, const ExportRequest& request)
{
    const Result checked = checkBeforeExport(project, request);
    if (checked.ok())
        return true;
    showMessage(window_, tr("Error"), QString::fromStdString(checked.message));
    return false;
}

bool ExportFlow::runExportOf(Project& project, const ExportRequest& request)
{
    BatchJob job(project);
    ProgressDialog progress(window_, QString::fromLatin1(kExportHeading));
    progress.setWindowTitle(tr("Exporting..."));
    const int result = progress.run(job, exportWork(request));
    if (result != 1) {
        showMessage(window_, tr("Export Error"), QString::fromStdString(job.message()));
        return false;
    }
    const ExportFormatInfo* info = findExportFormat(request.menuText);
    if (info != nullptr && info->format == ExportFormat::Blofeld)
        QMessageBox::information(
            window_, tr("Export Information"),
            tr("Use Spectre to import and dump the sample set to Blofeld.\n\n"));
    if (info != nullptr && info->format == ExportFormat::Montage)
        QMessageBox::information(window_, tr("Export Information"),
                                 QString::fromLatin1(kMontageExportInformation));
    QMessageBox::information(window_, tr("Info"),
                             tr("Exported \"%1\" as %2 to %3")
                                 .arg(nameOf(project), QString::fromStdString(request.menuText),
                                      QString::fromStdString(request.destination)));
    return true;
}

void ExportFlow::exportSelected(const QString& menuText)
{
    Project* project = model_.currentProject();
    if (project == nullptr)
        return;
    ExportRequest request;
    request.menuText = menuText.toStdString();
    request.projectNumber = model_.currentProjectIndex();
    // The Prophet-X layer rules refuse before anything is asked; the loop-type notice only
    // says what the settings dialog's "Loop all Samples" will decide.
    request.loopAll = true;
    if (!passesChecks(*project, request))
        return;
    request.loopAll = false;
    const Result loops = checkBeforeExport(*project, request);
    if (!loops.ok())
        QMessageBox::information(window_, tr("Info"), QString::fromStdString(loops.message));
    if (!chooseExport(menuText, *project, false, request) || !passesChecks(*project, request))
        return;
    runExportOf(*project, request);
}

void ExportFlow::exportAll(const QString& menuText)
{
    Project* shown = model_.currentProject();
    if (shown == nullptr)
        return;
    ExportRequest once;
    if (!chooseExport(menuText, *shown, true, once))
        return;
    // Every Project is checked before the first is written.
    std::vector<ExportRequest> requests;
    for (int i = 0; i < model_.projectCount(); ++i) {
        requests.push_back(requestForProjectInTurn(once, model_.project(i), i, i));
        if (!passesChecks(model_.project(i), requests.back()))
            return;
    }
    for (int i = 0; i < model_.projectCount(); ++i)
        if (!runExportOf(model_.project(i), requests[size_t(i)]))
            return;
}

} // namespace tg::shell
