// Subcommand dispatch with the exit-status rules: 0 done, 1 failed, 2 bad usage.
#include "cli/CliApp.h"

#include <iostream>
#include <new>

namespace tg::cli {

CliApp::CliApp()
    : app_("Tonegrabber: samples a MIDI sound source key by key and exports sampler instruments.",
           "tonegrabber-cli")
{
    app_.set_version_flag("--version", std::string("tonegrabber-cli ") + TONEGRABBER_VERSION);
    app_.require_subcommand(1);
    app_.fallthrough(false);
}

CLI::App* CliApp::addCommand(const std::string& name, const std::string& description,
                             std::function<int()> handler)
{
    CLI::App* command = app_.add_subcommand(name, description);
    commands_.push_back({command, std::move(handler)});
    return command;
}

int CliApp::run(int argc, char** argv)
{
    try {
        app_.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app_.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app_.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app_.exit(e);
    } catch (const CLI::ParseError& e) {
        app_.exit(e); // prints the message naming the bad argument
        return kExitBadUsage;
    }
    for (const Command& command : commands_)
        if (command.app->parsed())
            return runHandler(command);
    return kExitBadUsage;
}

// Whatever a command runs into (a path the file system refuses, memory running out), the user
// gets a message and status 1, never an abort.
int CliApp::runHandler(const Command& command)
{
    const CLI::Option* jsonFlag = command.app->get_option_no_throw("--json");
    const bool json = jsonFlag != nullptr && jsonFlag->count() > 0;
    const std::string name = command.app->get_name();
    try {
        return command.handler();
    } catch (const std::bad_alloc&) {
        return fail(name + ": out of memory.", json);
    } catch (const std::exception& e) {
        return fail(name + ": " + e.what(), json);
    } catch (...) {
        return fail(name + ": an unexpected error stopped the command.", json);
    }
}

int fail(const std::string& message, bool json)
{
    if (json)
        printJson({{"error", message}});
    else
        std::cerr << message << '\n';
    return kExitFailed;
}

void printJson(const nlohmann::json& document)
{
    // Names from files may hold bytes that are not UTF-8; they are shown replaced, not refused.
    std::cout << document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

} // namespace tg::cli
