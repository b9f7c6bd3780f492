// Each group of commands registers itself on the application here.
#pragma once

namespace tg::cli {

class CliApp;

// audio and MIDI device tables, recording formats (cli/DeviceCommands.cpp)
void addDeviceCommands(CliApp& app);

} // namespace tg::cli
