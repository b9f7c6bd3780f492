// The command frame: usage errors, help, and no abort whatever a command runs into. (That a
// command's own status is the program's is seen in every command's test.)
#include "cli/CliApp.h"
#include "cli/tests/CommandRunner.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <vector>

using tg::test::runOn;

TEST(CliApp, UnknownCommandsAndBadOptionsAreBadUsage)
{
    tg::cli::CliApp app;
    app.addCommand("probe", "test command", [] { return 0; });
    EXPECT_EQ(runOn(app, {"frobnicate"}), tg::cli::kExitBadUsage);
    EXPECT_EQ(runOn(app, {"probe", "--no-such-option"}), tg::cli::kExitBadUsage);
    EXPECT_EQ(runOn(app, {}), tg::cli::kExitBadUsage);
}

TEST(CliApp, HelpAndVersionSucceed)
{
    tg::cli::CliApp app;
    app.addCommand("probe", "test command", [] { return 1; });
    EXPECT_EQ(runOn(app, {"--help"}), tg::cli::kExitOk);
    EXPECT_EQ(runOn(app, {"--version"}), tg::cli::kExitOk);
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
    EXPECT_EQ(runOn(app, {"probe"}), tg::cli::kExitFailed);
    EXPECT_EQ(runOn(app, {"hungry"}), tg::cli::kExitFailed);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "probe: filesystem error: cannot make absolute path\nhungry: out of memory.\n");

    testing::internal::CaptureStdout();
    EXPECT_EQ(runOn(app, {"probe", "--json"}), tg::cli::kExitFailed);
    EXPECT_NE(testing::internal::GetCapturedStdout().find(
                  "\"error\": \"probe: filesystem error: cannot make absolute path\""),
              std::string::npos);
}
