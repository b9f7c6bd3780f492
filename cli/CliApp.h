// The command-line front end's frame: subcommands, exit statuses, JSON and error output.
#pragma once

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

namespace tg::cli {

// Exit statuses shared by every command.
constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;   // the operation failed or was refused
constexpr int kExitBadUsage = 2; // bad arguments

class CliApp {
  public:
    CliApp();

    // Adds a subcommand; `handler` runs after a successful parse and returns the exit status.
    CLI::App* addCommand(const std::string& name, const std::string& description,
                         std::function<int()> handler);

    int run(int argc, char** argv);

  private:
    struct Command {
        CLI::App* app;
        std::function<int()> handler;
    };
    int runHandler(const Command& command);
    CLI::App app_;
    std::vector<Command> commands_;
};

// Reports a failure the way every command does: the system's message on stderr, or
// {"error": message} on stdout with --json. Returns kExitFailed.
int fail(const std::string& message, bool json);

// Prints a JSON document on stdout (with a trailing line feed).
void printJson(const nlohmann::json& document);

} // namespace tg::cli
