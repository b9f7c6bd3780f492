// Start-up with the real device layer.
#include "recording/StartupWiring.h"

#include "analysis/LoopSpeed.h"
#include "core/Model.h"
#include "devices/DeviceTables.h"

namespace tg {

namespace {

// The device step writes its failure into the log text after "ERROR: "; start-up wants the
// bare message, since it writes the log line itself.
std::string errorOf(const std::string& log)
{
    const std::string marker = "\r\n\r\nERROR: ";
    const size_t at = log.find(marker);
    if (at == std::string::npos)
        return log;
    const size_t begin = at + marker.size();
    return log.substr(begin, log.find("\r\n", begin) - begin);
}

} // namespace

StartupHooks deviceStartupHooks(DeviceTables& tables)
{
    StartupHooks hooks;
    hooks.buildMidiDeviceLists = [&tables](long& inputs, long& outputs, std::string& message) {
        std::string log;
        const int ok = buildMidiDeviceTables(tables, log);
        inputs = tables.midiInDevices;
        outputs = tables.midiOutDevices;
        if (!ok)
            message = errorOf(log);
        return ok;
    };
    hooks.buildAudioDeviceLists = [&tables](int& audioInputs, std::string& message) {
        const int ok = buildAudioDeviceTables(tables, message);
        audioInputs = ok ? int(tables.audioIn.size()) : 0;
        return ok;
    };
    // The estimates price a loop search by this machine's measured speed.
    hooks.measureProcessingSpeed = [] { measureLoopSearchSpeeds(); };
    return hooks;
}

int initializeWithDevices(Model& model, const CoreFolders& folders, std::string& message,
                          const std::function<void(const std::string&)>& progress)
{
    StartupHooks hooks = deviceStartupHooks(deviceTables());
    hooks.progress = progress;
    return initializeCore(model, folders, hooks, message);
}

} // namespace tg
