// The main job as a user runs it: `tonegrabber-cli demo OUTDIR` with no sound card and no
// JACK server. Every file its table names exists, the SoundFont loads and plays in
// FluidSynth, the Bitwig archive passes `unzip -t`, and the SFZ finds its samples.
#include "tests/e2e/SampledSoundFont.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"
#include "tests/support/ToneAnalysis.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>

namespace tg::test {
namespace {

// The first file path of each table row ("... /path/file.ext (12.3 MB)" or a bare path).
std::vector<std::string> madeFiles(const std::string& table)
{
    std::vector<std::string> files;
    const std::regex path(R"((/\S+\.(TGprj|sfz|sf2|multisample)))");
    std::istringstream lines(table);
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (std::regex_search(line, match, path))
            files.push_back(match[1]);
    }
    return files;
}

TEST(Demo, MakesTwoProjectsInThreeFormatsThatLoad)
{
    TempDir dir;
    const std::string out = dir.file("demo");
    std::string table;
    const std::string command = "TONEGRABBER_HOME='" + dir.file("home") +
                                "' JACK_NO_START_SERVER=1 '" + TG_CLI_PATH + "' demo '" + out +
                                "' --quiet 2>&1";
    ASSERT_EQ(runCommand(command, &table), 0) << table;
    std::fprintf(stderr, "%s", table.c_str());

    const std::vector<std::string> files = madeFiles(table);
    std::map<std::string, int> made; // by extension
    for (const std::string& file : files) {
        ASSERT_TRUE(std::filesystem::exists(file)) << file;
        const std::string extension = std::filesystem::path(file).extension().string();
        ++made[extension];
        std::string output;
        if (extension == ".multisample") {
            EXPECT_EQ(runCommand("unzip -t '" + file + "'", &output), 0) << output;
        } else if (extension == ".sf2") {
            const auto bank = openInstrument(file);
            ASSERT_NE(bank, nullptr);
            BounceNote note; // middle C
            note.noteLength = 0.5;
            const std::vector<uint8_t> take = bounceTake(*bank, note, 2);
            const std::vector<double> left = firstChannel(take, 2, int64_t(take.size() / 4));
            EXPECT_GT(rmsBetween(left, 22050, 33075), 100.0) << file << " plays silence";
        } else if (extension == ".sfz") {
            std::ifstream text(file);
            const std::regex sample(R"(sample=(.+\.wav))");
            int samples = 0;
            for (std::string line; std::getline(text, line);) {
                std::smatch match;
                if (std::regex_search(line, match, sample)) {
                    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(file).parent_path() /
                                                        std::string(match[1])))
                        << match[1];
                    ++samples;
                }
            }
            EXPECT_EQ(samples, 63) << file; // 21 keys in each of 3 layers
        }
    }
    // Per Project: its file (named twice), SFZ, SF2 and Bitwig.
    EXPECT_EQ(made, (std::map<std::string, int>{
                        {".TGprj", 4}, {".multisample", 2}, {".sf2", 2}, {".sfz", 2}}));
    EXPECT_NE(table.find("offline bouncing: 567.0 s of audio rendered in"), std::string::npos)
        << table;
}

} // namespace
} // namespace tg::test
