// The export submenus: one entry per format in menu order (disabled while a format has no
// exporter), and the flow behind each: checks, settings, destination (naming dialog for the
// WAV and AIFF sets), tagging, progress with Cancel, and the closing message.
#pragma once

#include "export/ExportRunner.h"

#include <QObject>
#include <QString>

class QWidget;

namespace tg {
class Model;
}

namespace tg::shell {

class MenuActions;

constexpr const char* kExportHeading = "This may take a while...";

class ExportFlow : public QObject {
    Q_OBJECT
  public:
    ExportFlow(Model& model, QWidget* window, MenuActions& actions);

    // "Export selected Project as ..." / "Export all Projects as .." with a format's menu text.
    void exportSelected(const QString& menuText);
    void exportAll(const QString& menuText);

  private:
    // Settings, destination and tagging, asked once; false when the user cancelled.
    bool chooseExport(const QString& menuText, const Project& shown, bool allProjects,
                      ExportRequest& request);
    // The Project's own checks; shows a refusal and returns false.
    bool passesChecks(const Project& project, const ExportRequest& request);
    // Runs one export with its progress dialog and says how it ended. True when done.
    bool runExportOf(Project& project, const ExportRequest& request);

    Model& model_;
    QWidget* window_;
    bool hasLastWord_ = false;
    uint32_t lastWord_ = 0; // the settings word last accepted, preselected next time
    QString lastFolder_;
    QString lastNaming_;
};

} // namespace tg::shell
