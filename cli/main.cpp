// tonegrabber-cli: the headless front end over the same functions as the GUI.
#include "cli/CliApp.h"
#include "cli/Commands.h"

int main(int argc, char** argv)
{
    tg::cli::CliApp app;
    tg::cli::addSettingsCommands(app);
    tg::cli::addAudioFileCommands(app);
    tg::cli::addDeviceCommands(app);
    tg::cli::addProjectCommands(app);
    tg::cli::addRecordCommands(app);
    tg::cli::addAnalysisCommands(app);
    tg::cli::addExportCommands(app);
    tg::cli::addDemoCommands(app);
    return app.run(argc, argv);
}
