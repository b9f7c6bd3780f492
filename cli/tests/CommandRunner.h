// Runs tonegrabber-cli commands in the test process, as a fresh process would run them.
#pragma once

#include <nlohmann/json.hpp>

#include <ostream>
#include <string>
#include <vector>

namespace tg::cli {
class CliApp;
}

namespace tg::test {

// Runs `words` (the arguments after the program name) on `app`; returns the exit status.
int runOn(cli::CliApp& app, std::vector<std::string> words);

struct CommandRun {
    int status = -1;
    std::string out; // what the command printed on stdout
    std::string err; // what it printed on stderr
};

// Empties the model, registers every command on a new CliApp and runs `words` (the arguments
// after the program name), capturing both output streams.
CommandRun runCli(std::vector<std::string> words);

// Runs `words` as runCli does; a test failure, with what the command printed on stderr, unless
// it succeeded.
CommandRun runOk(std::vector<std::string> words);

// What `info <project> --json` prints about a project file (a test failure when it fails).
nlohmann::json infoJson(const std::string& project);

// How a command ended: its status and what it printed on stderr, compared as one.
struct Exit {
    int status;
    std::string err;
    bool operator==(const Exit& other) const { return status == other.status && err == other.err; }
};
std::ostream& operator<<(std::ostream& os, const Exit& e);
Exit exitOf(std::vector<std::string> words);

} // namespace tg::test
