#include "tests/support/ShellCommand.h"

#include <array>
#include <cstdio>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

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

int runCliProcess(const std::string& arguments, std::string* output, const std::string& home)
{
    if (output)
        output->clear();
    const std::string environment = home.empty() ? "" : "TONEGRABBER_HOME='" + home + "' ";
    return runCommand(environment + "'" + TG_CLI_PATH + "' " + arguments, output);
}

pid_t startCliProcess(const std::vector<std::string>& arguments, const std::string& outFile,
                      const std::string& errFile)
{
    std::vector<std::string> words = {TG_CLI_PATH};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, outFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    posix_spawn_file_actions_addopen(&actions, 2, errFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    pid_t pid = -1;
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) != 0)
        pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

int waitCliProcess(pid_t pid)
{
    int status = 0;
    if (waitpid(pid, &status, 0) != pid)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

bool haveProgram(const char* program)
{
    return runCommand(std::string("command -v ") + program + " >/dev/null") == 0;
}

} // namespace tg::test
