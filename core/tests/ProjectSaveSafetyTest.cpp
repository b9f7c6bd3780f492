// Saving never damages the previous project file: a disk that fills up during the write, and a
// process that dies in the middle of it, both leave the old file byte for byte as it was.
#include "core/ProjectFile.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr rlim_t kSmallFileLimit = 4096; // bytes: far less than a project with a Multi-Sample

std::unique_ptr<tg::Project> projectWithOneLayer(const char* name)
{
    auto p = std::make_unique<tg::Project>();
    tg::copyText(p->dataPath, "/d");
    p->mslCount = 1;
    tg::copyText(p->msl[0].name, name);
    return p;
}

class SaveSafety : public ::testing::Test {
  protected:
    tg::test::TempDir dir;
    std::string previous;

    void SetUp() override
    {
        // The previous file is small, so it was written well within the limit used below.
        auto old = std::make_unique<tg::Project>();
        tg::copyText(old->dataPath, "/old/data");
        std::string message;
        ASSERT_TRUE(tg::saveProject(*old, dir.path(), "P", message)) << message;
        previous = tg::test::readFileBytes(dir.file("P.TGprj"));
        ASSERT_LT(previous.size(), kSmallFileLimit);
    }
};

TEST_F(SaveSafety, FullDiskDuringTheWriteKeepsThePreviousFile)
{
    auto p = projectWithOneLayer("New layer");
    std::string message;
    int saved_ok = 0;
    {
        tg::test::FileSizeLimit full(kSmallFileLimit);
        ASSERT_TRUE(full.active());
        saved_ok = tg::saveProject(*p, dir.path(), "P", message);
    }

    EXPECT_EQ(saved_ok, 0);
    EXPECT_EQ(message, "write error: " + dir.file("P.TGprj"));
    EXPECT_EQ(tg::test::readFileBytes(dir.file("P.TGprj")), previous);
    EXPECT_STREQ(p->projectDir, ""); // not updated by a failed save
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir.path()))
        files += entry.is_regular_file();
    EXPECT_EQ(files, 1); // the partial temporary file is gone
}

TEST_F(SaveSafety, ProcessDyingDuringTheWriteKeepsThePreviousFile)
{
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // The kernel kills the process with SIGXFSZ at the first write past the limit.
        std::signal(SIGXFSZ, SIG_DFL);
        rlimit small{kSmallFileLimit, kSmallFileLimit};
        setrlimit(RLIMIT_FSIZE, &small);
        auto p = projectWithOneLayer("New layer");
        std::string message;
        tg::saveProject(*p, dir.path(), "P", message);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGXFSZ);
    EXPECT_EQ(tg::test::readFileBytes(dir.file("P.TGprj")), previous);
}

} // namespace
