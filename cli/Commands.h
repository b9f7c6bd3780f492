// Each group of commands registers itself on the application here.
#pragma once

namespace tg::cli {

class CliApp;

// wav-info, aiff-info, convert
void addAudioFileCommands(CliApp& app);

} // namespace tg::cli
