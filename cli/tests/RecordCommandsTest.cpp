// `record` refusals as a user meets them: the run's own messages (their texts are the record
// list's tests') on stderr with status 1 before anything is recorded, and bad usage with status 2.
// (Recording itself is proven against the real synth in tests/e2e.)
#include "cli/CliApp.h"
#include "cli/tests/CommandRunner.h"
#include "tests/support/ProjectFileAccess.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>

namespace {

using tg::test::CommandRun;
constexpr auto run = tg::test::runCli;

class RecordCommand : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::filesystem::create_directories(data());
        const CommandRun made = run({"new", path(), "--data-path", data(), "--keys", "37", "--step",
                                     "12", "--layers", "2"});
        ASSERT_EQ(made.status, 0) << made.err;
    }
    std::string path() const { return dir.file("Organ.TGprj"); }
    std::string data() const { return dir.file("samples"); }
    tg::test::TempDir dir;
};

TEST_F(RecordCommand, NoSelectedKeyIsRefusedWithTheRunsMessage)
{
    tg::test::changeProjectFile(path(), [](tg::Project& project) {
        for (int m = 0; m < 2; ++m)
            for (tg::TGmsl_key& key : project.msl[m].keys)
                key.keyState = 0;
    });
    const CommandRun r = run({"record", path()});
    EXPECT_EQ(r.status, 1);
    // The whole text is RecordListTest's.
    EXPECT_EQ(r.err.rfind("There aren't any Keys that need to be recorded.\n", 0), 0u) << r.err;
    const CommandRun json = run({"record", path(), "--json"});
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(nlohmann::json::parse(json.out)["error"], r.err.substr(0, r.err.size() - 1));
}

TEST_F(RecordCommand, MissingDataPathIsRefusedBeforeRecording)
{
    std::filesystem::remove_all(data());
    const CommandRun r = run({"record", path(), "--scope", "multisample", "--multisample", "1"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("The path \"" + data() + "\" doesn't exist."), std::string::npos) << r.err;
}

TEST_F(RecordCommand, BadUsage)
{
    EXPECT_EQ(run({"record", path(), path(), "--scope", "project"}).status, 2);
    EXPECT_EQ(run({"record", path(), "--scope", "sample"}).status, 2);
    const CommandRun tooFar =
        run({"record", path(), "--scope", "multisample", "--multisample", "2"});
    EXPECT_EQ(tooFar.status, 2);
    EXPECT_NE(tooFar.err.find("--multisample 2"), std::string::npos) << tooFar.err;
}

} // namespace
