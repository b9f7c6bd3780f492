// Start-up without the GUI: the two folders, the core initialization with its log, and
// loading the start-up projects.
#pragma once

#include "core/ProjectFile.h"

#include <functional>
#include <string>

namespace tg {

class Model;

struct CoreFolders {
    std::string programFolder;  // working directory at start
    std::string userDataFolder; // prefs, INI, init log, Data, Data/StartupProjects
};

// The two folders; the user data folder is created with all missing parents.
CoreFolders determineCoreFolders();

// What start-up is handed by the parts above the core. Any of them may be left empty.
struct StartupHooks {
    // Shows the text of each step (the splash screen).
    std::function<void(const std::string& step)> progress;
    // Builds the MIDI device lists and reports the real ports, without the pseudo entries.
    // Returns 1, or 0 with the message of a list that could not be allocated.
    std::function<int(long& inputs, long& outputs, std::string& message)> buildMidiDeviceLists;
    // Builds the audio device lists and reports the audio input devices. Returns 1, or 0 with
    // its message; a failure here ends the initialization.
    std::function<int(int& audioInputs, std::string& message)> buildAudioDeviceLists;
    // Refreshes the processing-speed figures.
    std::function<void()> measureProcessingSpeed;
};

// The core initialization: log, project memory, device lists, preferences. Returns 1, or 0
// with `message` when the audio step failed.
int initializeCore(Model& model, const CoreFolders& folders, const StartupHooks& hooks,
                   std::string& message);

// "Data/StartupProjects" of the user data folder.
std::string startupProjectFolder(const CoreFolders& folders);

// Loads every *.TGprj file of the start-up project folder, when the preferences ask for it and
// the folder exists. Returns the result of the load (1 when there was nothing to load).
int loadStartupProjects(Model& model, const CoreFolders& folders, const ProjectLoadOptions& options,
                        ProjectLoadOutcome& outcome, std::string& message);

} // namespace tg
