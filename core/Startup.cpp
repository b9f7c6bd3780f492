// The core initialization and the start-up projects.
#include "core/Startup.h"

#include "core/InitLog.h"
#include "core/Model.h"
#include "core/Paths.h"
#include "core/Preferences.h"

#include <filesystem>

namespace tg {

namespace {

const char* const kLogHeader = "******* initialization log of ";

void report(const StartupHooks& hooks, const std::string& step)
{
    if (hooks.progress)
        hooks.progress(step);
}

void logError(InitLog& log, const std::string& message)
{
    log.append(formatText("\r\n\r\nERROR: %s", message.c_str()));
}

} // namespace

CoreFolders determineCoreFolders()
{
    CoreFolders folders{programFolder(), userDataFolder()};
    std::error_code error;
    std::filesystem::create_directories(folders.userDataFolder, error);
    return folders;
}

int initializeCore(Model& model, const CoreFolders& folders, const StartupHooks& hooks,
                   std::string& message)
{
    InitLog log(joinPath(folders.userDataFolder, kInitLogFileName));
    report(hooks, "Start Initialization ...");
    log.begin();
    log.append(kLogHeader);
    // The head of the log names it twice, the second time with the build kind.
    log.append(std::string(kLogHeader) + " (Release)");
    log.append("\r\n\r\n");

    if (!model.allocateProjects()) {
        message = "unable to allocate memory for the projects";
        logError(log, message);
    }

    report(hooks, "Initializing MIDI Devices");
    long midiIn = 0, midiOut = 0;
    if (hooks.buildMidiDeviceLists) {
        std::string midiMessage;
        if (!hooks.buildMidiDeviceLists(midiIn, midiOut, midiMessage)) {
            message = midiMessage;
            logError(log, midiMessage);
        }
    }
    log.append(formatText("\r\n\t-found %ld MIDI In Device(s)\r\n\t-found %ld MIDI Out Device(s)",
                          midiIn, midiOut));
    if (!hooks.buildMidiDeviceLists)
        log.append("\r\n\t-(this program was started without a MIDI device layer)");

    report(hooks, "Initialize Audio (Step 1)");
    log.append("\r\n\r\n-initializing Audio Stuff (step 1):");
    if (hooks.buildAudioDeviceLists) {
        int audioInputs = 0;
        std::string audioMessage;
        if (!hooks.buildAudioDeviceLists(audioInputs, audioMessage)) {
            message = audioMessage;
            logError(log, message);
            return 0;
        }
        model.setAudioInputDeviceCount(audioInputs);
    } else {
        model.setAudioInputDeviceCount(0);
        log.append("\r\n\t-(this program was started without an audio device layer)");
    }

    loadPreferences(model.preferences());
    report(hooks, "Loading Startup Projects");
    log.append("\r\n\r\n-loading the projects contained in the folder \"Data\\StartupProjects\":");
    if (hooks.measureProcessingSpeed)
        hooks.measureProcessingSpeed();
    log.append("\r\n\r\n\r\n\r\n******* initialization finished.\r\n\r\n");
    return 1;
}

std::string startupProjectFolder(const CoreFolders& folders)
{
    return joinPath(joinPath(folders.userDataFolder, "Data"), "StartupProjects");
}

int loadStartupProjects(Model& model, const CoreFolders& folders, const ProjectLoadOptions& options,
                        ProjectLoadOutcome& outcome, std::string& message)
{
    if (!model.preferences().loadPrjAtStartup)
        return 1;
    const std::string folder = startupProjectFolder(folders);
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error))
        return 1;
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::filesystem::path& path = entry.path();
        if (entry.is_regular_file(error) && path.extension() == ".TGprj")
            files.push_back(path.filename().string());
    }
    if (files.empty())
        return 1;
    return loadProjects(model, folder, files, options, outcome, message);
}

} // namespace tg
