// Running a command line the way a user's shell would, for tests that check our files with
// third-party programs or drive our own executables.
#pragma once

#include <string>

namespace tg::test {

// Runs `command` with /bin/sh, its standard error joined to its standard output, which goes to
// `output` when given (redirections inside `command` still apply first). Its exit status, or
// -1 when it could not run or did not exit normally.
int runCommand(const std::string& command, std::string* output = nullptr);
// True when `program` is found on PATH.
bool haveProgram(const char* program);

} // namespace tg::test
