// The command frame: dispatch, exit statuses, and no abort whatever a command runs into.
#include "cli/CliApp.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

int runWith(tg::cli::CliApp& app, std::vector<std::string> words)
{
    std::vector<char*> argv;
    static std::string program = "tonegrabber-cli";
    argv.push_back(program.data());
    for (std::string& word : words)
        argv.push_back(word.data());
    return app.run(static_cast<int>(argv.size()), argv.data());
}

} // namespace

TEST(CliApp, RunsTheParsedCommandAndReturnsItsStatus)
{
    tg::cli::CliApp app;
    int value = 0;
    CLI::App* command = app.addCommand("probe", "test command", [&] { return value == 7 ? 0 : 1; });
    command->add_option("--value", value);
    EXPECT_EQ(runWith(app, {"probe", "--value", "7"}), tg::cli::kExitOk);
}

TEST(CliApp, UnknownCommandsAndBadOptionsAreBadUsage)
{
    tg::cli::CliApp app;
    app.addCommand("probe", "test command", [] { return 0; });
    EXPECT_EQ(runWith(app, {"frobnicate"}), tg::cli::kExitBadUsage);
    EXPECT_EQ(runWith(app, {"probe", "--no-such-option"}), tg::cli::kExitBadUsage);
    EXPECT_EQ(runWith(app, {}), tg::cli::kExitBadUsage);
}

TEST(CliApp, HelpAndVersionSucceed)
{
    tg::cli::CliApp app;
    app.addCommand("probe", "test command", [] { return 1; });
    EXPECT_EQ(runWith(app, {"--help"}), tg::cli::kExitOk);
    EXPECT_EQ(runWith(app, {"--version"}), tg::cli::kExitOk);
}

TEST(CliApp, ACommandThatThrowsEndsWithItsMessageAndStatusOne)
{
    tg::cli::CliApp app;
    bool json = false;
    CLI::App* command = app.addCommand("probe", "test command", []() -> int {
        throw std::runtime_error("filesystem error: cannot make absolute path");
    });
    command->add_flag("--json", json);
    app.addCommand("hungry", "test command", []() -> int { throw std::bad_alloc(); });

    testing::internal::CaptureStderr();
    EXPECT_EQ(runWith(app, {"probe"}), tg::cli::kExitFailed);
    EXPECT_EQ(runWith(app, {"hungry"}), tg::cli::kExitFailed);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "probe: filesystem error: cannot make absolute path\nhungry: out of memory.\n");

    testing::internal::CaptureStdout();
    EXPECT_EQ(runWith(app, {"probe", "--json"}), tg::cli::kExitFailed);
    EXPECT_NE(testing::internal::GetCapturedStdout().find(
                  "\"error\": \"probe: filesystem error: cannot make absolute path\""),
              std::string::npos);
}
