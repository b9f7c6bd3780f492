// Each group of commands registers itself on the application here.
#pragma once

namespace tg::cli {

class CliApp;

// `set KEY=VALUE ...`: preferences keys through the keyed settings accessor.
void addSettingsCommands(CliApp& app);

// wav-info, aiff-info, convert
void addAudioFileCommands(CliApp& app);

} // namespace tg::cli
