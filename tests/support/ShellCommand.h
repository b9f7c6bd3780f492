// Running a command line the way a user's shell would, for tests that check our files with
// third-party programs or drive our own executables.
#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace tg::test {

// Runs `command` with /bin/sh, its standard error joined to its standard output, which goes to
// `output` when given (redirections inside `command` still apply first). Its exit status, or
// -1 when it could not run or did not exit normally.
int runCommand(const std::string& command, std::string* output = nullptr);
// Runs the program's command line with `arguments` (shell words, quoted where needed) as
// runCommand does, with TONEGRABBER_HOME set to `home` when given; `output` is cleared first.
int runCliProcess(const std::string& arguments, std::string* output = nullptr,
                  const std::string& home = {});
// Starts the program's command line with `arguments` as its words, standard output to
// `outFile` and standard error to `errFile`; the process id, or -1.
pid_t startCliProcess(const std::vector<std::string>& arguments,
                      const std::string& outFile = "/dev/null",
                      const std::string& errFile = "/dev/null");
// Waits for a started process: its exit status, or 128 + the signal that ended it.
int waitCliProcess(pid_t pid);
// True when `program` is found on PATH.
bool haveProgram(const char* program);

} // namespace tg::test
