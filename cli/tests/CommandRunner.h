// Runs tonegrabber-cli commands in the test process, as a fresh process would run them.
#pragma once

#include <string>
#include <vector>

namespace tg::test {

struct CommandRun {
    int status = -1;
    std::string out; // what the command printed on stdout
    std::string err; // what it printed on stderr
};

// Empties the model, registers every command on a new CliApp and runs `words` (the arguments
// after the program name), capturing both output streams.
CommandRun runCli(std::vector<std::string> words);

} // namespace tg::test
