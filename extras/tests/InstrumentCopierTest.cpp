// Copying Multi-Samples with their Key-Sample files into another Project.
#include "extras/InstrumentCopier.h"

#include "core/Names.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

namespace tg {
namespace {

class InstrumentCopier : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::filesystem::create_directories(dir.file("a"));
        std::filesystem::create_directories(dir.file("b"));
        makeProject(*from, "Source", "a", {"Piano", "Strings"});
        makeProject(*to, "Target", "b", {"Piano"});
        // Two Key-Samples of the source's Piano and one of its Strings have files.
        for (int note : {60, 64})
            writeKey(*from, 0, note, "piano " + std::to_string(note));
        writeKey(*from, 1, 48, "strings 48");
    }

    void makeProject(Project& p, const char* name, const char* data, std::vector<std::string> names)
    {
        copyText(p.name, name);
        copyText(p.dataPath, dir.file(data).c_str());
        p.mslCount = int(names.size());
        for (size_t i = 0; i < names.size(); ++i)
            copyText(p.msl[i].name, names[i].c_str());
    }

    void writeKey(Project& p, int msl, int note, const std::string& bytes)
    {
        ASSERT_TRUE(test::writeFileBytes(keySampleFileName(p, p.msl[msl], note), bytes));
        p.msl[msl].keys[note].keyState = 1;
        p.msl[msl].keys[note].hasAudio = 1;
        p.msl[msl].keys[note].Loop_In = note * 10;
    }

    test::TempDir dir;
    std::unique_ptr<Project> from = std::make_unique<Project>();
    std::unique_ptr<Project> to = std::make_unique<Project>();
    CopyOutcome outcome;
    std::string message;
};

TEST_F(InstrumentCopier, CopiesTakeFreeNamesAndBringTheirFiles)
{
    ASSERT_TRUE(copyInstruments(*from, {}, *to, {}, outcome, message)) << message;
    EXPECT_EQ(outcome.names, (std::vector<std::string>{"Piano-1", "Strings"}));
    EXPECT_EQ(outcome.files, 3);
    ASSERT_EQ(to->mslCount, 3);
    const TGmsl& piano = to->msl[1];
    EXPECT_EQ(piano.keys[64].hasAudio, 1);
    EXPECT_EQ(piano.keys[64].Loop_In, 640);
    EXPECT_EQ(piano.keys[61].hasAudio, 0);
    EXPECT_EQ(test::readFileBytes(dir.file("b/Target - Piano-1 - 064 - E4.wav")), "piano 64");
    EXPECT_EQ(test::readFileBytes(dir.file("b/Target - Strings - 048 - C3.wav")), "strings 48");
    EXPECT_EQ(to->modified, 1);
    // The source is left as it was.
    EXPECT_EQ(test::readFileBytes(dir.file("a/Source - Piano - 060 - C4.wav")), "piano 60");
}

TEST_F(InstrumentCopier, StrayFilesOfTheNewNameAreOverwrittenOnlyWhenAllowed)
{
    ASSERT_TRUE(test::writeFileBytes(dir.file("b/Target - Strings - 050 - D3.wav"), "stray"));
    std::vector<std::string> asked;
    const auto refuse = [&](const std::string& name) {
        asked.push_back(name);
        return false;
    };
    ASSERT_TRUE(copyInstruments(*from, {1, 0}, *to, refuse, outcome, message)) << message;
    EXPECT_EQ(asked, std::vector<std::string>{"Strings"});
    EXPECT_EQ(outcome.leftOut, 1);
    EXPECT_EQ(outcome.names, std::vector<std::string>{"Piano-1"});

    ASSERT_TRUE(copyInstruments(
        *from, {1}, *to, [](const std::string&) { return true; }, outcome, message));
    EXPECT_EQ(test::readFileBytes(dir.file("b/Target - Strings - 048 - C3.wav")), "strings 48");
}

TEST_F(InstrumentCopier, RefusalsLeaveTheTargetAlone)
{
    EXPECT_FALSE(copyInstruments(*from, {2}, *to, {}, outcome, message));
    EXPECT_EQ(message, "The Project \"Source\" has no Multi-Sample 2.");
    to->mslCount = kMaxMultiSamples - 1;
    EXPECT_FALSE(copyInstruments(*from, {}, *to, {}, outcome, message));
    EXPECT_EQ(message, "You cannot have more than 128 Multi-Samples.");
    EXPECT_EQ(to->mslCount, kMaxMultiSamples - 1);

    // A file that cannot be copied (the disk is full) stops the copy before the Multi-Sample
    // joins, and leaves no part of the file behind.
    to->mslCount = 1;
    const std::string target = dir.file("b/Target - Strings - 048 - C3.wav");
    {
        test::FileSizeLimit full(4);
        ASSERT_TRUE(full.active());
        EXPECT_FALSE(copyInstruments(*from, {1}, *to, {}, outcome, message));
    }
    EXPECT_EQ(message, "error writing " + target);
    EXPECT_EQ(to->mslCount, 1);
    EXPECT_FALSE(std::filesystem::exists(target));
}

} // namespace
} // namespace tg
