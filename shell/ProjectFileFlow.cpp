// Opening and saving project files from the File menu.
#include "shell/ProjectFileFlow.h"

#include "audiofile/KeySampleAudio.h"
#include "core/ListEditing.h"
#include "core/Model.h"
#include "core/ProjectFile.h"
#include "shell/ActionTable.h"
#include "shell/IniFile.h"
#include "shell/MessageBoxes.h"

#include <QAction>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

#include <cstring>

namespace tg::shell {

namespace {

const QString kProjectSuffix = QStringLiteral(".TGprj");

// The Project name a file gets: its name without ".TGprj", cut as the loader cuts it.
QString projectNameOf(const QString& path)
{
    QString base = QFileInfo(path).fileName();
    if (base.endsWith(kProjectSuffix))
        base.chop(kProjectSuffix.size());
    char name[kNameSize];
    copyText(name, base.toStdString().c_str());
    return QString::fromStdString(name);
}

QString projectFilePath(const Project& project)
{
    return QDir(QString::fromStdString(project.projectDir))
        .filePath(QString::fromUtf8(project.name) + kProjectSuffix);
}

} // namespace

ProjectFileFlow::ProjectFileFlow(Model& model, QWidget* window, MenuActions& actions)
    : QObject(window), model_(model), window_(window), actions_(actions)
{
    actions_.bind(QStringLiteral("openProjectFromDialog"), [this] { openFromDialog(); });
    actions_.bind(QStringLiteral("saveSelectedProject"), [this] { saveSelected(); });
    actions_.bind(QStringLiteral("saveSelectedProjectAs"), [this] { saveSelectedAsFromDialog(); });
    actions_.bind(QStringLiteral("saveAllProjects"), [this] { saveAll(); });
    fillRecentMenu();
}

void ProjectFileFlow::openFromDialog()
{
    QFileDialog dialog(window_, tr("Open Project"), lastFolder(),
                       QString::fromLatin1(kProjectFileFilter));
    dialog.setFileMode(QFileDialog::ExistingFiles);
    dialog.setViewMode(QFileDialog::Detail);
    if (dialog.exec() == QDialog::Accepted)
        openFiles(dialog.selectedFiles());
}

void ProjectFileFlow::openFiles(const QStringList& paths)
{
    QStringList names;
    for (int i = 0; i < model_.projectCount(); ++i)
        names << QString::fromUtf8(model_.project(i).name);
    QStringList accepted;
    for (const QString& path : paths) {
        const QString name = projectNameOf(path);
        if (names.contains(name)) {
            showMessage(window_, tr("Error"), QString::fromLatin1(kSameNameRefusal));
            continue;
        }
        names << name;
        accepted << QFileInfo(path).absoluteFilePath();
    }

    ProjectLoadOptions options;
    options.wavRate = wavFileRateReader();
    std::vector<std::pair<int, QString>> loaded; // Project index, its file
    // The load reads one folder at a time; files keep their order.
    for (int first = 0; first < accepted.size();) {
        const QString folder = QFileInfo(accepted[first]).absolutePath();
        std::vector<std::string> fileNames;
        int next = first;
        for (; next < accepted.size() && QFileInfo(accepted[next]).absolutePath() == folder; ++next)
            fileNames.push_back(QFileInfo(accepted[next]).fileName().toStdString());
        ProjectLoadOutcome outcome;
        std::string message;
        const int ok =
            loadProjects(model_, folder.toStdString(), fileNames, options, outcome, message);
        for (size_t i = 0; i < outcome.loaded.size(); ++i)
            loaded.emplace_back(outcome.loaded[i], accepted[first + int(i)]);
        for (const std::string& warning : outcome.warnings)
            showMessage(window_, tr("Warning"), QString::fromStdString(warning));
        if (!ok) {
            showMessage(window_, tr("Error"), QString::fromStdString(message));
            break;
        }
        first = next;
    }
    model_.notifyListeners([](TonegrabberModelListener& l) { l.projectListChanged(); });
    for (const auto& [index, path] : loaded) {
        rememberRecent(path);
        if (keySamplesMissing(model_.project(index)))
            offerRelocation(index);
    }
}

void ProjectFileFlow::offerRelocation(int index)
{
    QMessageBox box(
        QMessageBox::Question, QString::fromLatin1(kRelocationTitle),
        QString::fromStdString(formatText(kRelocationQuestion, model_.project(index).name)),
        QMessageBox::Cancel, window_);
    QPushButton* open =
        box.addButton(QString::fromLatin1(kOpenDirectoryButton), QMessageBox::AcceptRole);
    box.exec();
    if (box.clickedButton() != open)
        return;
    const QString folder =
        QFileDialog::getExistingDirectory(window_, QString::fromLatin1(kOpenDirectoryButton),
                                          QString::fromStdString(model_.project(index).projectDir));
    if (!folder.isEmpty())
        showResult(window_, relocateKeySamples(model_, index, folder.toStdString()));
}

void ProjectFileFlow::openStartupProjects(const CoreFolders& folders)
{
    if (!model_.preferences().loadPrjAtStartup)
        return;
    const QDir folder(QString::fromStdString(startupProjectFolder(folders)));
    if (!folder.exists())
        return;
    QStringList paths;
    for (const QString& name :
         folder.entryList({QStringLiteral("*.TGprj")}, QDir::Files, QDir::NoSort))
        paths << folder.filePath(name);
    if (!paths.isEmpty())
        openFiles(paths);
}

bool ProjectFileFlow::saveProjectAt(int index)
{
    Project& project = model_.project(index);
    std::string message;
    const bool saved = saveProjectAgain(project, message);
    if (!saved) {
        QMessageBox box(QMessageBox::Warning, tr("Error"), QString::fromLatin1(kSaveFailed),
                        QMessageBox::Ok, window_);
        box.setInformativeText(QString::fromStdString(message));
        box.exec();
        return false;
    }
    model_.notifyListeners([&](TonegrabberModelListener& l) { l.projectChanged(index); });
    rememberRecent(projectFilePath(project));
    return true;
}

bool ProjectFileFlow::saveSelected()
{
    Project* project = model_.currentProject();
    if (!project)
        return false;
    if (project->projectDir[0] == '\0') {
        saveSelectedAsFromDialog();
        return project->projectDir[0] != '\0';
    }
    return saveProjectAt(model_.currentProjectIndex());
}

void ProjectFileFlow::saveSelectedAsFromDialog()
{
    Project* project = model_.currentProject();
    if (!project)
        return;
    const QString start =
        QDir(lastFolder()).filePath(QString::fromUtf8(project->name) + kProjectSuffix);
    QString path = QFileDialog::getSaveFileName(window_, tr("Save selected Project as"), start,
                                                QString::fromLatin1(kProjectFileFilter));
    if (path.isEmpty())
        return;
    if (!path.endsWith(kProjectSuffix))
        path += kProjectSuffix;
    saveSelectedAs(path);
}

bool ProjectFileFlow::saveSelectedAs(const QString& path)
{
    if (!model_.currentProject())
        return false;
    const QFileInfo file(path);
    QString name = file.fileName();
    if (name.endsWith(kProjectSuffix))
        name.chop(kProjectSuffix.size());
    const Result saved =
        saveProjectAs(model_, model_.currentProjectIndex(), file.absolutePath().toStdString(),
                      name.toStdString(), overwriteQuestion(window_));
    if (!saved.ok()) {
        if (!saved.message.empty()) {
            QMessageBox box(QMessageBox::Warning, tr("Error"), QString::fromLatin1(kSaveFailed),
                            QMessageBox::Ok, window_);
            box.setInformativeText(QString::fromStdString(saved.message));
            box.exec();
        }
        return false;
    }
    rememberRecent(projectFilePath(*model_.currentProject()));
    return true;
}

bool ProjectFileFlow::saveAll()
{
    for (int index = 0; index < model_.projectCount(); ++index) {
        if (model_.project(index).projectDir[0] == '\0') {
            // A Project never saved needs a place: ask with it selected.
            model_.selectProject(index);
            if (!saveSelected())
                return false;
        } else if (!saveProjectAt(index)) {
            return false;
        }
    }
    return true;
}

QStringList ProjectFileFlow::recentProjects() const
{
    return openIniFile()->value(QString::fromLatin1(kRecentProjectsKey)).toStringList();
}

void ProjectFileFlow::rememberRecent(const QString& path)
{
    QStringList recent = recentProjects();
    recent.removeAll(path);
    recent.prepend(path);
    while (recent.size() > kRecentProjectCount)
        recent.removeLast();
    openIniFile()->setValue(QString::fromLatin1(kRecentProjectsKey), recent);
    fillRecentMenu();
}

void ProjectFileFlow::fillRecentMenu()
{
    QMenu* menu = actions_.submenu(QString::fromLatin1(kRecentProjectsMenu));
    menu->clear();
    const QStringList recent = recentProjects();
    for (const QString& path : recent) {
        QAction* entry = menu->addAction(path);
        // Queued: opening rebuilds this menu, entry included.
        connect(
            entry, &QAction::triggered, this, [this, path] { openFiles({path}); },
            Qt::QueuedConnection);
    }
    menu->setEnabled(!recent.isEmpty());
}

QString ProjectFileFlow::lastFolder() const
{
    const QStringList recent = recentProjects();
    return recent.isEmpty() ? QDir::homePath() : QFileInfo(recent.first()).absolutePath();
}

} // namespace tg::shell
