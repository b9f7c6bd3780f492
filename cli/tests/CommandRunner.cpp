// The in-process command runner for the CLI tests.
#include "cli/tests/CommandRunner.h"

#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "core/Model.h"

#include <gtest/gtest.h>

#include <ostream>
#include <utility>

namespace tg::test {

int runOn(cli::CliApp& app, std::vector<std::string> words)
{
    std::string program = "tonegrabber-cli";
    std::vector<char*> argv{program.data()};
    for (std::string& word : words)
        argv.push_back(word.data());
    return app.run(static_cast<int>(argv.size()), argv.data());
}

CommandRun runCli(std::vector<std::string> words)
{
    Model::instance().reset();
    cli::CliApp app;
    cli::addAllCommands(app);
    CommandRun run;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    run.status = runOn(app, std::move(words));
    run.out = testing::internal::GetCapturedStdout();
    run.err = testing::internal::GetCapturedStderr();
    return run;
}

CommandRun runOk(std::vector<std::string> words)
{
    std::string line = "tonegrabber-cli";
    for (const std::string& word : words)
        line += " " + word;
    CommandRun r = runCli(std::move(words));
    EXPECT_EQ(r.status, 0) << line << "\n" << r.err;
    return r;
}

nlohmann::json infoJson(const std::string& project)
{
    return nlohmann::json::parse(runOk({"info", project, "--json"}).out);
}

Exit exitOf(std::vector<std::string> words)
{
    const CommandRun r = runCli(std::move(words));
    return {r.status, r.err};
}

std::ostream& operator<<(std::ostream& os, const Exit& e)
{
    return os << "status " << e.status << ", stderr \"" << e.err << '"';
}

} // namespace tg::test
