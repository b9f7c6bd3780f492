// tonegrabber: the desktop program. `tonegrabber [PROJECT.TGprj ...]` opens the given projects
// after the start-up projects.
#include "shell/GuiStartup.h"
#include "shell/QtPlatformLeaks.h"

#include <QApplication>

int main(int argc, char** argv)
{
    tg::shell::setApplicationAttributes();
    QApplication app(argc, argv);
    QStringList projectFiles = QApplication::arguments();
    projectFiles.removeFirst();
    return tg::shell::runTonegrabber(app, projectFiles);
}
