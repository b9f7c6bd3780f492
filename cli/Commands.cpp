// The full command set of tonegrabber-cli, in the order --help lists it.
#include "cli/Commands.h"

namespace tg::cli {

void addAllCommands(CliApp& app)
{
    addSettingsCommands(app);
    addAudioFileCommands(app);
    addDeviceCommands(app);
    addProjectCommands(app);
    addListCommands(app);
    addRecordCommands(app);
    addPlayCommands(app);
    addAnalysisCommands(app);
    addExportCommands(app);
    addImportCommands(app);
    addPresetAndCopyCommands(app);
    addUpdateCommands(app);
    addDemoCommands(app);
    addMidiMonitorCommand(app);
}

} // namespace tg::cli
