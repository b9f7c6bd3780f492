// A preset through the real command line: a project recorded offline from the General MIDI
// SoundFont, saved as a preset, applied to a new project and recorded again, gives the same
// Multi-Samples as the original.
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <string>

namespace tg::test {
namespace {

class PresetRecordCli : public ::testing::Test {
  protected:
    int cli(const std::string& arguments, std::string& output)
    {
        return runCliProcess(arguments, &output, dir.file("home"));
    }

    nlohmann::json multiSamples(const std::string& project)
    {
        std::string output;
        EXPECT_EQ(cli("info '" + project + "' --json", output), 0) << output;
        return nlohmann::json::parse(output)["multisamples"];
    }

    TempDir dir;
};

TEST_F(PresetRecordCli, AppliedPresetRecordsLikeTheOriginal)
{
    for (const char* folder : {"home", "one", "two"})
        std::filesystem::create_directories(dir.file(folder));
    const std::string original = dir.file("Original.TGprj"), copy = dir.file("Copy.TGprj");
    std::string output;
    ASSERT_EQ(cli("new '" + original + "' --data-path '" + dir.file("one") +
                      "' --audio-in -Vst\\ Plugin- --midi-out -Vst\\ Plugin- --plugin --keys 37 "
                      "--step 18 --layers 2 --note-length 0.6 --release-length 0.2 --program 5 "
                      "--autoloop simple --format '44.1KHz, Mono, 16bit'",
                  output),
              0)
        << output;
    ASSERT_EQ(cli("record '" + original +
                      "' --offline --quiet --instrument "
                      "'/usr/share/sounds/sf2/FluidR3_GM.sf2?preset=0'",
                  output),
              0)
        << output;

    ASSERT_EQ(cli("preset save Bright '" + original + "'", output), 0) << output;
    ASSERT_EQ(
        cli("preset apply Bright '" + copy + "' --data-path '" + dir.file("two") + "'", output), 0)
        << output;
    const nlohmann::json before = multiSamples(copy);
    for (const nlohmann::json& key : before[1]["keys"])
        ASSERT_EQ(key["hasAudio"], 0);
    ASSERT_EQ(cli("record '" + copy + "' --offline --quiet", output), 0) << output;

    // Settings, key choices and the takes' markers: the same sound source played the same way.
    const nlohmann::json expected = multiSamples(original);
    const nlohmann::json recorded = multiSamples(copy);
    ASSERT_EQ(recorded.size(), 2u);
    EXPECT_EQ(recorded[1]["keys"][66]["hasAudio"], 1);
    EXPECT_EQ(recorded, expected) << nlohmann::json::diff(expected, recorded).dump(1);
}

} // namespace
} // namespace tg::test
