// `set`: writes settings through the keyed accessor. Preferences keys ("prefs_...") are
// loaded from, and saved back to, Tonegrabber.prefs in the user data folder.
#include "cli/CliApp.h"
#include "cli/Commands.h"

#include "core/Model.h"
#include "core/Paths.h"
#include "core/Preferences.h"
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

int runSet(const std::vector<std::string>& arguments)
{
    // Every argument is checked before anything is written, so a bad one changes nothing.
    std::vector<Assignment> assignments;
    for (const std::string& argument : arguments) {
        Assignment a;
        a.argument = argument;
        const size_t equals = argument.find('=');
        if (equals == std::string::npos || equals == 0)
            return badUsage("Bad argument '" + argument + "': expected KEY=VALUE.");
        a.key = argument.substr(0, equals);
        a.value = argument.substr(equals + 1);
        if (a.key.find("msl_") != std::string::npos || a.key.find("prefs_") == std::string::npos ||
            !findSettingKind(a.key, a.kind))
            return badUsage("Bad argument '" + argument + "': '" + a.key +
                            "' is not a preferences key (prefs_...).");
        if (!valueFits(a))
            return badUsage("Bad argument '" + argument + "': '" + a.value +
                            "' is not a valid value for " + a.key + ".");
        assignments.push_back(a);
    }

    auto model = std::make_unique<Model>();
    loadPreferences(model->preferences());
    for (const Assignment& a : assignments)
        if (!store(*model, a))
            return badUsage("Bad argument '" + a.argument + "'.");

    std::error_code error;
    std::filesystem::create_directories(userDataFolder(), error);
    if (!savePreferences(model->preferences()))
        return fail("Cannot write the preferences file '" + preferencesFilePath() + "'.", false);
    for (const Assignment& a : assignments)
        std::cout << a.key << '=' << storedValue(*model, a) << '\n';
    return kExitOk;
}

} // namespace

void addSettingsCommands(CliApp& app)
{
    auto arguments = std::make_shared<std::vector<std::string>>();
    CLI::App* command = app.addCommand(
        "set",
        "Sets preferences values through the settings keys (KEY=VALUE with prefs_ keys) and saves "
        "them to Tonegrabber.prefs in the user data folder.",
        [arguments] { return runSet(*arguments); });
    command
        ->add_option("assignments", *arguments,
                     "KEY=VALUE, e.g. prefs_recordsettings_notelength1=3.5")
        ->required();
}

} // namespace tg::cli
