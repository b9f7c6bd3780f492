// The zip layer against the real unzip: valid archives, deflate, and its two failure words.
#include "export/zip/ZipArchive.h"

#include "export/tests/SyntheticProject.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace tg {
namespace {

TEST(ZipArchive, EntriesFromMemoryAndDiskPassUnzipWithTheirBytes)
{
    if (!test::haveProgram("unzip"))
        GTEST_SKIP() << "unzip not installed";
    test::TempDir dir;
    const std::string big(100000, 'a');
    ASSERT_TRUE(test::writeFileBytes(dir.file("disk.bin"), big));
    ZipArchive archive;
    std::string message;
    ASSERT_EQ(archive.create(dir.file("a.zip"), message), 1);
    ASSERT_EQ(archive.addBytes("memory.txt", {'h', 'i', '\n'}, message), 1);
    ASSERT_EQ(archive.addFile("disk.bin", dir.file("disk.bin"), message), 1);
    ASSERT_EQ(archive.close(message), 1) << message;

    std::string output;
    EXPECT_EQ(test::runCommand("unzip -t '" + dir.file("a.zip") + "'", &output), 0) << output;
    std::string content;
    test::runCommand("unzip -p '" + dir.file("a.zip") + "' memory.txt", &content);
    EXPECT_EQ(content, "hi\n");
    // Level 9 deflate squeezes 100000 equal bytes far below their size.
    EXPECT_LT(std::filesystem::file_size(dir.file("a.zip")), 2000u);
}

TEST(ZipArchive, FailuresSayWriteErrorOrBadZip)
{
    test::TempDir dir;
    ZipArchive archive;
    std::string message;
    // libzip writes the archive at close(), so a folder that is missing shows there.
    if (archive.create(dir.file("no/such/folder/a.zip"), message)) {
        ASSERT_EQ(archive.addBytes("x", {1}, message), 1);
        EXPECT_EQ(archive.close(message), 0);
    }
    EXPECT_EQ(message, "bad zip");
    EXPECT_FALSE(std::filesystem::exists(dir.file("no")));

    ZipArchive other;
    ASSERT_EQ(other.create(dir.file("b.zip"), message), 1);
    EXPECT_EQ(other.addFile("x", dir.file("missing.wav"), message), 0);
    EXPECT_EQ(message, "write error");
}

TEST(ZipArchive, FolderZipTakesFilesOnlyUnderBareNamesStoringWavesAndKeepsTheOldOnAbort)
{
    if (!test::haveProgram("unzip"))
        GTEST_SKIP() << "unzip not installed";
    test::TempDir dir;
    std::filesystem::create_directories(dir.file("src/sub"));
    test::writeFileBytes(dir.file("src/a.WAV"), std::string(5000, 'w'));
    test::writeFileBytes(dir.file("src/b.xml"), std::string(5000, 'x'));
    test::writeFileBytes(dir.file("src/sub/skip.wav"), "3");
    std::vector<double> fractions;
    std::string message;
    ASSERT_EQ(zipFolderFiles(
                  dir.file("src"), dir.file("d.zip"), "Compressing.",
                  [&](double f, const std::string&) { fractions.push_back(f); }, nullptr, message),
              1)
        << message;
    EXPECT_EQ(fractions, (std::vector<double>{0.0, 0.5}));
    std::string listing;
    test::runCommand("unzip -Z1 '" + dir.file("d.zip") + "'", &listing);
    EXPECT_EQ(listing, "a.WAV\nb.xml\n");
    std::string verbose;
    test::runCommand("unzip -v '" + dir.file("d.zip") + "'", &verbose);
    EXPECT_NE(verbose.find("5000  Stored     5000   0%"), std::string::npos) << verbose;
    EXPECT_NE(verbose.find("Defl:X"), std::string::npos) << verbose;

    // Aborted while writing: the archive from before stays as it was, and no temporary file.
    const std::string before = test::readFileBytes(dir.file("d.zip"));
    std::atomic<bool> abort{true};
    ZipArchive archive;
    ASSERT_EQ(archive.create(dir.file("d.zip"), message), 1);
    ASSERT_EQ(archive.addFile("a.wav", dir.file("src/a.WAV"), message, ZipMethod::Store), 1);
    archive.watchAbortFlag(&abort);
    EXPECT_EQ(archive.close(message), 0);
    EXPECT_EQ(message, "Export aborted.");
    EXPECT_EQ(test::readFileBytes(dir.file("d.zip")), before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()),
                            std::filesystem::directory_iterator()),
              2); // src and d.zip
}

} // namespace
} // namespace tg
