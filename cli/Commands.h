// Each group of commands registers itself on the application here.
#pragma once

namespace tg::cli {

class CliApp;

// Every command below, as tonegrabber-cli offers them.
void addAllCommands(CliApp& app);

// `set [PATH.TGprj] [--multisample I] KEY=VALUE ...`: the keyed settings accessor.
void addSettingsCommands(CliApp& app);

// new, info
void addProjectCommands(CliApp& app);

// msl rename|duplicate|delete|move|paste, keys lock|unlock|select|deselect, relocate
// (cli/ListCommands.cpp)
void addListCommands(CliApp& app);

// wav-info, aiff-info, convert
void addAudioFileCommands(CliApp& app);

// audio and MIDI device tables, recording formats (cli/DeviceCommands.cpp)
void addDeviceCommands(CliApp& app);

// auto, loops, normalize, gain, levels, estimate
void addAnalysisCommands(CliApp& app);

// record: the automatic recording run (cli/RecordCommands.cpp)
void addRecordCommands(CliApp& app);

// play: a Key-Sample on the audio output (cli/PlayCommands.cpp)
void addPlayCommands(CliApp& app);

// export (cli/ExportCommands.cpp)
void addExportCommands(CliApp& app);

// import: audio files as Key-Samples (cli/ImportCommands.cpp)
void addImportCommands(CliApp& app);

// preset save|list|rename|delete|apply, copy-instrument (cli/PresetCommands.cpp)
void addPresetAndCopyCommands(CliApp& app);

// check-updates (cli/UpdateCommands.cpp)
void addUpdateCommands(CliApp& app);

// demo: the main job on the embedded default (cli/DemoCommands.cpp)
void addDemoCommands(CliApp& app);

// midi-monitor: decoded MIDI input until Ctrl-C (cli/MidiMonitorCommand.cpp)
void addMidiMonitorCommand(CliApp& app);

} // namespace tg::cli
