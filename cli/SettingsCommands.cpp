// `set`: writes settings through the keyed accessor. Preferences keys ("prefs_...") are
// loaded from, and saved back to, Tonegrabber.prefs in the user data folder; Multi-Sample keys
// ("msl_...") change a Multi-Sample of the project named first, which is saved back in place.
#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "cli/ProjectAccess.h"

#include "core/ControllerSettings.h"
#include "core/Model.h"
#include "core/Paths.h"
#include "core/Preferences.h"
#include "core/ProjectFile.h"
#include "core/SettingsAccessor.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <sstream>

namespace tg::cli {

namespace {

struct Assignment {
    std::string argument; // as given, for messages
    std::string key;
    std::string value;
    SettingKind kind = SettingKind::Text;
    int controller = -1; // msl_cc_N: the controller entry N, "off" or a value 0-127
};

bool parseInteger(const std::string& text, long long low, long long high, long long& value)
{
    if (text.empty())
        return false;
    errno = 0;
    char* end = nullptr;
    value = std::strtoll(text.c_str(), &end, 10);
    return errno == 0 && *end == '\0' && value >= low && value <= high;
}

bool parseDouble(const std::string& text, double& value)
{
    if (text.empty())
        return false;
    errno = 0;
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return errno == 0 && *end == '\0' && std::isfinite(value);
}

// Checks a value against its kind without storing it.
bool valueFits(const Assignment& a)
{
    long long integer = 0;
    double real = 0;
    if (a.controller >= 0)
        return a.value == "off" || parseInteger(a.value, 0, 127, integer);
    switch (a.kind) {
    case SettingKind::Text:
        return true;
    case SettingKind::Short:
        return parseInteger(a.value, -32768, 65535, integer);
    case SettingKind::Long:
        return parseInteger(a.value, INT32_MIN, INT32_MAX, integer);
    case SettingKind::Char:
        return parseInteger(a.value, 0, 255, integer);
    case SettingKind::Double:
        return parseDouble(a.value, real);
    }
    return false;
}

bool store(Model& model, const Assignment& a)
{
    bool ok = false;
    long long integer = 0;
    double real = 0;
    if (a.controller >= 0) {
        // "off" keeps the stored value, for switching the controller on again.
        ControllerEntry entry;
        controllerEntry(*model.currentMultiSample(), a.controller, entry);
        entry.active = a.value != "off";
        if (entry.active && parseInteger(a.value, 0, 127, integer))
            entry.value = int(integer);
        return setControllerEntry(model, a.controller, entry);
    }
    switch (a.kind) {
    case SettingKind::Text:
        setSettingText(model, a.key, a.value, ok);
        break;
    case SettingKind::Short:
        parseInteger(a.value, -32768, 65535, integer);
        setSettingShort(model, a.key, static_cast<int16_t>(static_cast<uint16_t>(integer)), ok);
        break;
    case SettingKind::Long:
        parseInteger(a.value, INT32_MIN, INT32_MAX, integer);
        setSettingLong(model, a.key, static_cast<int32_t>(integer), ok);
        break;
    case SettingKind::Char:
        parseInteger(a.value, 0, 255, integer);
        setSettingChar(model, a.key, static_cast<uint8_t>(integer), ok);
        break;
    case SettingKind::Double:
        parseDouble(a.value, real);
        setSettingDouble(model, a.key, real, ok);
        break;
    }
    return ok;
}

// The value as the accessor now holds it, for the confirmation line.
std::string storedValue(Model& model, const Assignment& a)
{
    bool ok = false;
    std::ostringstream out;
    if (a.controller >= 0) {
        ControllerEntry entry;
        controllerEntry(*model.currentMultiSample(), a.controller, entry);
        return entry.active ? std::to_string(entry.value) : std::string("off");
    }
    switch (a.kind) {
    case SettingKind::Text:
        out << settingText(model, a.key, ok);
        break;
    case SettingKind::Short:
        out << static_cast<uint16_t>(settingShort(model, a.key, ok));
        break;
    case SettingKind::Long:
        out << settingLong(model, a.key, ok);
        break;
    case SettingKind::Char:
        out << static_cast<unsigned>(settingChar(model, a.key, ok));
        break;
    case SettingKind::Double:
        out.precision(17);
        out << settingDouble(model, a.key, ok);
        break;
    }
    return out.str();
}

int badUsage(const std::string& message)
{
    std::cerr << message << '\n';
    return kExitBadUsage;
}

struct SetOptions {
    std::vector<std::string> arguments; // [PATH.TGprj] KEY=VALUE ...
    int multisample = -1;               // -1: the project's current Multi-Sample
    bool dryRun = false;
};

bool isMultiSampleKey(const std::string& key)
{
    return key.find("msl_") != std::string::npos;
}

int runSet(const SetOptions& options)
{
    std::vector<std::string> arguments = options.arguments;
    std::string projectPath;
    if (!arguments.empty() && arguments.front().find('=') == std::string::npos) {
        projectPath = arguments.front();
        arguments.erase(arguments.begin());
    }
    if (arguments.empty())
        return badUsage("Missing KEY=VALUE.");

    // Every argument is checked before anything is written, so a bad one changes nothing.
    std::vector<Assignment> assignments;
    bool anyMultiSampleKey = false, anyPreferencesKey = false;
    for (const std::string& argument : arguments) {
        Assignment a;
        a.argument = argument;
        const size_t equals = argument.find('=');
        if (equals == std::string::npos || equals == 0)
            return badUsage("Bad argument '" + argument + "': expected KEY=VALUE.");
        a.key = argument.substr(0, equals);
        a.value = argument.substr(equals + 1);
        a.controller = controllerOfKey(a.key);
        if (a.key == "msl_AudioInChannelL" || a.key == "msl_AudioInChannelR")
            return badUsage("Bad argument '" + argument +
                            "': the input channels are chosen per session and not kept in "
                            "project files; give them to record with --input-channels.");
        if (a.controller < 0 && !findSettingKind(a.key, a.kind))
            return badUsage("Bad argument '" + argument + "': '" + a.key +
                            "' is not a settings key (msl_... or prefs_...).");
        if (isMultiSampleKey(a.key) && projectPath.empty())
            return badUsage("Bad argument '" + argument + "': '" + a.key +
                            "' is a Multi-Sample key and needs a project (PATH.TGprj).");
        if (!valueFits(a))
            return badUsage("Bad argument '" + argument + "': '" + a.value +
                            "' is not a valid value for " + a.key + ".");
        (isMultiSampleKey(a.key) ? anyMultiSampleKey : anyPreferencesKey) = true;
        assignments.push_back(a);
    }

    Model& model = commandModel();
    int savedCurrentMsl = 0;
    if (!projectPath.empty()) {
        std::string message;
        if (!openProjectFile(model, projectPath, message))
            return fail(message, false);
        Project& project = *model.currentProject();
        savedCurrentMsl = project.currentMsl;
        const int index = options.multisample < 0 ? project.currentMsl : options.multisample;
        if (anyMultiSampleKey && (index < 0 || index >= project.mslCount))
            return badUsage("Bad argument '--multisample " + std::to_string(index) +
                            "': the project has " + std::to_string(project.mslCount) +
                            " Multi-Sample(s).");
        if (project.mslCount > 0)
            model.selectMultiSample(index < project.mslCount ? index : 0);
    }
    for (const Assignment& a : assignments)
        if (!store(model, a))
            return badUsage("Bad argument '" + a.argument + "'.");
    std::ostringstream confirmation;
    for (const Assignment& a : assignments)
        confirmation << a.key << '=' << storedValue(model, a) << '\n';

    if (!options.dryRun) {
        if (anyPreferencesKey) {
            std::error_code error;
            std::filesystem::create_directories(userDataFolder(), error);
            if (!savePreferences(model.preferences()))
                return fail("Cannot write the preferences file '" + preferencesFilePath() + "'.",
                            false);
        }
        if (anyMultiSampleKey) {
            // Picking a Multi-Sample for the command does not change the project's own choice.
            model.currentProject()->currentMsl = savedCurrentMsl;
            std::string message;
            if (!saveProjectAgain(*model.currentProject(), message))
                return fail(message, false);
        }
    }
    std::cout << confirmation.str();
    return kExitOk;
}

} // namespace

void addSettingsCommands(CliApp& app)
{
    auto options = std::make_shared<SetOptions>();
    CLI::App* command = app.addCommand(
        "set",
        "Sets preferences (prefs_ keys) or a Multi-Sample's settings (msl_ keys, saved back "
        "into the project given first)",
        [options] { return runSet(*options); });
    command
        ->add_option("assignments", options->arguments,
                     "[PATH.TGprj] KEY=VALUE ..., e.g. prefs_recordsettings_notelength1=3.5; "
                     "msl_cc_N=VALUE|off sends MIDI controller N (0-120) with the Multi-Sample")
        ->required();
    command
        ->add_option("--multisample", options->multisample,
                     "Index of the Multi-Sample for msl_ keys (0-based; default current)")
        ->check(CLI::Range(0, 127));
    command->add_flag("--dry-run", options->dryRun, "Change nothing on disk");
}

} // namespace tg::cli
