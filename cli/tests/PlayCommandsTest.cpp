// `play` refusals that come before any device is touched: the sound itself is proven on the
// real chain in tests/e2e.
#include "cli/tests/CommandRunner.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

using tg::test::CommandRun;
constexpr auto run = tg::test::runCli;

TEST(PlayCommand, RefusesWithoutAnOutputOrWithAKeyOffTheKeyboard)
{
    tg::test::TempDir dir;
    std::filesystem::create_directories(dir.file("samples"));
    const std::string project = dir.file("Organ.TGprj");
    ASSERT_EQ(run({"new", project, "--data-path", dir.file("samples")}).status, 0);

    const CommandRun silent = run({"play", project, "--key", "60"});
    EXPECT_EQ(silent.status, 1);
    EXPECT_NE(silent.err.find("No audio output is chosen in the preferences "
                              "(Output/AudioDeviceName)."),
              std::string::npos)
        << silent.err;

    const CommandRun offKeyboard = run({"play", project, "--key", "128"});
    EXPECT_EQ(offKeyboard.status, 2);
    EXPECT_NE(offKeyboard.err.find("--key"), std::string::npos) << offKeyboard.err;
}

} // namespace
