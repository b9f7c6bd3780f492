// The File menu's project handling: opening project files (with the same-name refusal, the
// load's messages and the relocation offer), saving, saving under a new name, saving all, and
// the list of recent projects.
#pragma once

#include "core/Startup.h"

#include <QObject>
#include <QStringList>

class QWidget;

namespace tg {
class Model;
}

namespace tg::shell {

class MenuActions;

constexpr const char* kProjectFileFilter = "Tonegrabber Project Files (*.TGprj)";
constexpr const char* kSameNameRefusal =
    "Cannot open this project. There is already a project with that name.";
constexpr const char* kSaveFailed = "Error saving selected project.";
constexpr const char* kOpenDirectoryButton = "Open Directory";

// The recent projects: the last kRecentProjectCount project files opened or saved, newest
// first, kept in Tonegrabber.ini under kRecentProjectsKey.
constexpr int kRecentProjectCount = 10;
constexpr const char* kRecentProjectsKey = "RecentProjects/Files";

class ProjectFileFlow : public QObject {
    Q_OBJECT
  public:
    ProjectFileFlow(Model& model, QWidget* window, MenuActions& actions);

    // Opens project files: each file whose name an open Project (or an earlier file of the
    // list) already has is refused; the rest are loaded as one list.
    void openFiles(const QStringList& paths);
    // The *.TGprj files of the start-up project folder, when the preferences ask for it.
    void openStartupProjects(const CoreFolders& folders);
    // Saves the current Project where it was loaded or last saved; a Project never saved
    // asks for a place first. False when it was not saved.
    bool saveSelected();
    // Saves the current Project as `path` ("<folder>/<name>.TGprj"); it takes that name.
    bool saveSelectedAs(const QString& path);
    // Saves every open Project in order; the first failure stops.
    bool saveAll();

    QStringList recentProjects() const;

  private:
    void openFromDialog();
    void saveSelectedAsFromDialog();
    void offerRelocation(int index);
    bool saveProjectAt(int index);
    void rememberRecent(const QString& path);
    void fillRecentMenu();
    QString lastFolder() const;

    Model& model_;
    QWidget* window_;
    MenuActions& actions_;
};

} // namespace tg::shell
