// The export command with the further formats' menu texts and short keys: what exports and
// what is refused with its reason.
#include "cli/CliApp.h"
#include "cli/tests/CommandRunner.h"
#include "tests/support/SavedProject.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace tg {
namespace {

using test::runCli;

TEST(FurtherFormatsCommand, MenuTextsAndShortKeysExportOrSayWhyNot)
{
    test::TempDir dir;
    const std::string project = dir.file("Empty.TGprj");
    ASSERT_EQ(runCli({"new", project, "--data-path", dir.path()}).status, cli::kExitOk);

    // Both names reach the format; a Project without recordings has nothing to give it.
    for (const char* format : {"decent", "Decent Sampler Library (*.dslibrary)"}) {
        const test::CommandRun r =
            runCli({"export", project, "--format", format, "--dest", dir.file("Set"), "--quiet"});
        EXPECT_EQ(r.status, cli::kExitFailed) << format;
        EXPECT_EQ(r.err.rfind("Nothing to export: \"Empty\"", 0), 0u) << format << ": " << r.err;
    }
    EXPECT_FALSE(std::filesystem::exists(dir.file("Set.dspreset")));

    const std::string recorded = test::saveSineProject(dir.path(), "Piano");
    const test::CommandRun nnxt =
        runCli({"export", recorded, "--format", "nnxt", "--dest", dir.file("Patch"), "--quiet"});
    EXPECT_EQ(nnxt.status, cli::kExitOk) << nnxt.err;
    EXPECT_TRUE(std::filesystem::exists(dir.file("Patch.sxt")));
}

} // namespace
} // namespace tg
