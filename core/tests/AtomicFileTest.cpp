// A replaced file keeps its mode and its links, and nothing reaches the target before commit;
// scratch folders are told apart by whole names; a folder-sync batch takes each folder of this
// thread's commits once.
#include "core/AtomicFile.h"
#include "core/FolderSyncBatch.h"
#include "core/ScratchFolders.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include <sys/stat.h>

namespace {

mode_t modeOf(const std::string& path)
{
    struct stat info {};
    EXPECT_EQ(::stat(path.c_str(), &info), 0) << path;
    return info.st_mode & 07777;
}

size_t filesIn(const std::string& folder)
{
    size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder))
        ++count;
    return count;
}

TEST(AtomicFile, ReplacingKeepsTheModeAndWritesThroughALink)
{
    tg::test::TempDir dir;
    const std::string real = dir.file("real.bin");
    ASSERT_TRUE(tg::replaceFileContents(real, "old", 3));
    ASSERT_EQ(::chmod(real.c_str(), 0640), 0);
    std::filesystem::create_symlink(real, dir.file("link.bin"));

    ASSERT_TRUE(tg::replaceFileContents(dir.file("link.bin"), "new!", 4));

    EXPECT_EQ(tg::test::readFileBytes(real), "new!");
    EXPECT_EQ(modeOf(real), 0640u);
    EXPECT_TRUE(std::filesystem::is_symlink(dir.file("link.bin")));
    EXPECT_EQ(filesIn(dir.path()), 2u); // no temporary file left behind
}

TEST(AtomicFile, NothingReachesTheTargetUntilCommitAndAFailedWriteKeepsTheOldFile)
{
    tg::test::TempDir dir;
    const std::string target = dir.file("t.bin");
    ASSERT_TRUE(tg::replaceFileContents(target, "old", 3));
    {
        tg::AtomicFile file(target);
        ASSERT_TRUE(file.open());
        ASSERT_TRUE(file.write("half", 4));
        EXPECT_EQ(tg::test::readFileBytes(target), "old");
    } // dropped without commit
    {
        tg::AtomicFile file(target);
        ASSERT_TRUE(file.open());
        ASSERT_TRUE(file.write("bad", 3));
        file.fail();
        EXPECT_FALSE(file.commit());
    }
    EXPECT_EQ(tg::test::readFileBytes(target), "old");
    EXPECT_EQ(filesIn(dir.path()), 1u);

    tg::AtomicFile nowhere(dir.file("missing/t.bin"));
    EXPECT_FALSE(nowhere.open());
    EXPECT_NE(nowhere.errorNumber(), 0);
}

TEST(FolderSyncBatch, TakesEachFolderOfThisThreadsCommitsOnceAndNestedBatchesTheirOwn)
{
    tg::test::TempDir dir;
    for (const char* folder : {"a", "b", "c", "stage"})
        std::filesystem::create_directory(dir.file(folder));
    tg::FolderSyncBatch batch;
    ASSERT_TRUE(tg::replaceFileContents(dir.file("a/1.wav"), "one", 3));
    ASSERT_TRUE(tg::replaceFileContents(dir.file("a/2.wav"), "two", 3));
    ASSERT_TRUE(tg::replaceFileContents(dir.file("b/3.wav"), "three", 5));
    EXPECT_EQ(batch.pendingFolders(), 2u);
    // The files are in place at once: only the folder syncs wait.
    EXPECT_EQ(tg::test::readFileBytes(dir.file("a/2.wav")), "two");
    EXPECT_EQ(tg::test::readFileBytes(dir.file("b/3.wav")), "three");

    // Another thread's commit syncs its own folder; a scratch folder needs no sync at all.
    std::thread([&] { EXPECT_TRUE(tg::replaceFileContents(dir.file("c/4.wav"), "x", 1)); }).join();
    tg::addScratchFolder(dir.file("stage"));
    ASSERT_TRUE(tg::replaceFileContents(dir.file("stage/5.wav"), "y", 1));
    tg::removeScratchFolder(dir.file("stage"));
    EXPECT_EQ(batch.pendingFolders(), 2u);

    {
        tg::FolderSyncBatch inner;
        ASSERT_TRUE(tg::replaceFileContents(dir.file("c/6.wav"), "z", 1));
        EXPECT_EQ(inner.pendingFolders(), 1u);
        EXPECT_EQ(batch.pendingFolders(), 2u);
    }
    ASSERT_TRUE(tg::replaceFileContents(dir.file("c/7.wav"), "w", 1));
    EXPECT_EQ(batch.pendingFolders(), 3u);

    batch.finish();
    EXPECT_EQ(batch.pendingFolders(), 0u);
}

} // namespace

TEST(ScratchFolders, ContainWhatLiesInsideByWholeNamesOnlyWhileRegistered)
{
    tg::addScratchFolder("/tmp/stage/");
    EXPECT_TRUE(tg::isInScratchFolder("/tmp/stage/a.wav"));
    EXPECT_TRUE(tg::isInScratchFolder("/tmp/stage/sub/../b.wav"));
    EXPECT_TRUE(tg::isInScratchFolder("/tmp/stage/Samples/c.wav"));
    EXPECT_FALSE(tg::isInScratchFolder("/tmp/stage"));
    EXPECT_FALSE(tg::isInScratchFolder("/tmp/stage2/a.wav"));
    EXPECT_FALSE(tg::isInScratchFolder("/tmp/stage/../kept.wav"));
    EXPECT_FALSE(tg::isInScratchFolder("/tmp/a.wav"));
    tg::removeScratchFolder("/tmp/stage");
    EXPECT_FALSE(tg::isInScratchFolder("/tmp/stage/a.wav"));
}
