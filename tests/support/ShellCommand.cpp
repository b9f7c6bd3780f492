#include "tests/support/ShellCommand.h"

#include <array>
#include <cstdio>

#include <sys/wait.h>

namespace tg::test {

int runCommand(const std::string& command, std::string* output)
{
    FILE* pipe = popen(("{ " + command + "\n} 2>&1").c_str(), "r");
    if (!pipe)
        return -1;
    std::array<char, 4096> buffer{};
    size_t got = 0;
    while ((got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        if (output)
            output->append(buffer.data(), got);
    const int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool haveProgram(const char* program)
{
    return runCommand(std::string("command -v ") + program + " >/dev/null") == 0;
}

} // namespace tg::test
