// The in-process command runner for the CLI tests.
#include "cli/tests/CommandRunner.h"

#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "core/Model.h"

#include <gtest/gtest.h>

#include <ostream>
#include <utility>

namespace tg::test {

CommandRun runCli(std::vector<std::string> words)
{
    Model::instance().reset();
    cli::CliApp app;
    cli::addAllCommands(app);
    std::string program = "tonegrabber-cli";
    std::vector<char*> argv{program.data()};
    for (std::string& word : words)
        argv.push_back(word.data());
    CommandRun run;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    run.status = app.run(static_cast<int>(argv.size()), argv.data());
    run.out = testing::internal::GetCapturedStdout();
    run.err = testing::internal::GetCapturedStderr();
    return run;
}

nlohmann::json infoJson(const std::string& project)
{
    const CommandRun r = runCli({"info", project, "--json"});
    EXPECT_EQ(r.status, 0) << r.err;
    return nlohmann::json::parse(r.out);
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
