// The export command on a saved project: formats by short key and menu text, destinations,
// settings, bad usage and failures. (A settings word outside a format's choices is refused by
// runExport itself: FurtherFormatsMenu.ASettingsWordOutsideTheMaskIsRefused.)
#include "cli/CliApp.h"

#include "audiofile/AiffFile.h"
#include "audiofile/WavFile.h"
#include "cli/tests/CommandRunner.h"
#include "core/Names.h"
#include "core/Preferences.h"
#include "export/montage/MontageExport.h"
#include "tests/support/SavedProject.h"
#include "tests/support/TempDir.h"
#include "tests/support/ToneAnalysis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

using testing::HasSubstr;

using namespace tg;

namespace {

using tg::test::CommandRun;
constexpr auto run = tg::test::runCli;
constexpr auto runOk = tg::test::runOk;

class ExportCommand : public testing::Test {
  protected:
    void SetUp() override
    {
        path = saveProjectNamed("Cli", [](Project&) {});
        std::filesystem::create_directories(dir.file("out"));
    }

    // Two layers with keys 60 and 67 recorded within the key range 48-72, saved as
    // <name>.TGprj after `change`; returns the project file's path.
    std::string saveProjectNamed(const char* name, const std::function<void(Project&)>& change)
    {
        return test::saveSineProject(dir.path(), name, {}, [&](Project& project) {
            for (int m = 0; m < 2; ++m) {
                project.msl[m].KBrangeIn = 48;
                project.msl[m].KBrangeOut = 72;
            }
            change(project);
        });
    }

    test::TempDir dir;
    std::string path;
};

} // namespace

TEST_F(ExportCommand, ShortKeysWriteTheirFormats)
{
    // (sf2 to a file path: AllProjectsExportEachProjectInTurn.)
    CommandRun r = runOk({"export", path, "--format", "wav", "--dest", dir.file("out"), "--naming",
                          "<#ms#>-<#mn#>", "--multisamples", "1", "--quiet"});
    EXPECT_EQ(r.err, "");
    EXPECT_TRUE(std::filesystem::exists(dir.file("out/Hard-060.wav")));
    EXPECT_TRUE(std::filesystem::exists(dir.file("out/Hard-067.wav")));
    EXPECT_FALSE(std::filesystem::exists(dir.file("out/Soft-060.wav")));

    r = runOk({"export", path, "--format", "Cakewalk Dimension (*.sfz)", "--dest",
               dir.file("out/Kit"), "--quiet", "--json"});
    EXPECT_TRUE(std::filesystem::exists(dir.file("out/Kit.sfz")));
    EXPECT_TRUE(std::filesystem::exists(dir.file("out/Kit-001-067-G4.wav")));
    EXPECT_THAT(r.out, HasSubstr("\"settings\": \"0x00020408\""));
}

TEST_F(ExportCommand, SettingsWordIsUsedAsGivenAndProgressGoesToStderr)
{
    // 22.05 kHz, 8 Bit, mono (only L), trimmed after the loop.
    CommandRun r = runOk({"export", path, "--format", "aiff", "--dest", dir.file("out"), "--naming",
                          "<#msi#>-<#n#>", "--settings", "0x81080204"});
    EXPECT_THAT(r.err,
                HasSubstr("Working on Multisample \"Soft\" (1 of 2) Rendering and writing Key 60 "
                          "(\"C4\")"));
    AiffContents contents;
    std::string message;
    ASSERT_TRUE(readAiff(dir.file("out/01-G4.aif"), contents, message)) << message;
    EXPECT_EQ(contents.format.nSamplesPerSec, 22050u);
    EXPECT_EQ(contents.format.wBitsPerSample, 8);
    EXPECT_EQ(contents.format.nChannels, 1);
}

namespace {

// The RMS level of the first `frames` frames of a 16-bit mono WAV file.
double openingLoudness(const std::string& path, int64_t frames)
{
    WaveFormat format;
    std::vector<uint8_t> data;
    std::string message;
    EXPECT_TRUE(readWav(path, format, data, message)) << message;
    return test::rmsBetween(test::firstChannel(data, 1, int64_t(data.size() / 2)), 0, frames);
}

} // namespace

TEST_F(ExportCommand, RenderingFollowsTheUsersClickPopFadePreference)
{
    const auto exportKey = [&](const std::string& prefix) {
        runOk({"export", path, "--format", "wav", "--dest", dir.file("out"), "--naming",
               prefix + "-<#mn#>", "--multisamples", "0", "--quiet"});
        return openingLoudness(dir.file("out/" + prefix + "-060.wav"), 750);
    };
    const double usual = exportKey("usual");
    ASSERT_EQ(run({"set", "prefs_ClickPopRedFade_in=1500"}).status, cli::kExitOk);
    const double faded = exportKey("faded");
    std::filesystem::remove(preferencesFilePath()); // the next tests start from the defaults
    EXPECT_LT(faded, 0.6 * usual);
}

TEST_F(ExportCommand, BadArgumentsAreUsageErrors)
{
    const std::vector<std::string> cases[] = {{"--format", "mp3"},
                                              {"--format", "wav", "--settings", "0xZZ"},
                                              {"--format", "wav", "--multisamples", "0,9"}};
    for (const std::vector<std::string>& bad : cases) {
        std::vector<std::string> words{"export", path, "--dest", dir.file("out")};
        words.insert(words.end(), bad.begin(), bad.end());
        const std::string& option = bad[bad.size() - 2]; // the one with the bad value
        const CommandRun r = run(words);
        EXPECT_EQ(r.status, cli::kExitBadUsage) << option;
        EXPECT_THAT(r.err, HasSubstr(option));
    }
}

TEST_F(ExportCommand, ExporterMessageAndExitOneOnFailure)
{
    ASSERT_TRUE(test::writeFileBytes(dir.file("blocked"), "x"));
    CommandRun r = run({"export", path, "--format", "wav-loop", "--dest", dir.file("blocked"),
                        "--naming", "<#msi#>-<#mn#>", "--quiet"});
    EXPECT_EQ(r.status, cli::kExitFailed);
    // (--json puts a failure's message in \"error\" through the same path as every command's:
    // ProjectCommands.InfoOfABadFileReportsTheReadError.)
    EXPECT_EQ(r.err.rfind("TGexport_WavFiles():\n\n", 0), 0u) << r.err;
}

TEST_F(ExportCommand, ExportOfNoRecordedKeyIsRefused)
{
    // Layer 1 narrowed to a range without keys; layer 0's files gone.
    path = saveProjectNamed("Cli", [](Project& project) {
        project.msl[1].KBrangeOut = 40;
        for (int note : {60, 67})
            std::filesystem::remove(keySampleFileName(project, project.msl[0], note));
    });

    CommandRun r = run({"export", path, "--format", "wav", "--dest", dir.file("out"), "--quiet"});
    EXPECT_EQ(r.status, cli::kExitFailed);
    EXPECT_EQ(r.err, "Nothing to export: \"Cli\" has no recorded Key-Sample within the key range "
                     "of the selected Multi-Samples.\n");
    EXPECT_EQ(r.out, "");
}

TEST_F(ExportCommand, AllProjectsExportEachProjectInTurn)
{
    const std::string other = saveProjectNamed("Other", [](Project&) {});

    CommandRun r = run({"export", path, other, "--format", "sf2", "--dest", dir.file("out")});
    EXPECT_EQ(r.status, cli::kExitBadUsage);
    EXPECT_THAT(r.err, HasSubstr("--all-projects"));

    r = runOk({"export", path, other, "--all-projects", "--format", "sf2", "--dest",
               dir.file("out"), "--quiet", "--json"});
    EXPECT_GT(test::readFileBytes(dir.file("out/Cli.sf2")).size(), 4u * 8000);
    EXPECT_GT(test::readFileBytes(dir.file("out/Other.sf2")).size(), 4u * 8000);
    EXPECT_THAT(r.out, HasSubstr("\"destination\": \"" + dir.file("out/Other.sf2") + "\""));

    // A naming scheme without the Project's or the Multi-Sample's name is exported but warned
    // about (the warnings' texts are NamingTags' and ExportAllProjects' business).
    r = runOk({"export", path, other, "--all-projects", "--format", "wav", "--dest",
               dir.file("out"), "--naming", "<#msi#>", "--quiet"});
    EXPECT_THAT(r.err, HasSubstr("WARNING: the AIFF - Name does not contain"));
    EXPECT_THAT(r.err, HasSubstr("does not contain \"<#prj#>\""));
    EXPECT_THAT(r.out, HasSubstr("Exported \"Other\" as WAV-Files"));
}

TEST_F(ExportCommand, MontageExportWritesTheLibraryAndSaysHowToPlayItsWaveforms)
{
    const CommandRun r = run(
        {"export", path, "--format", "montage-x7l", "--dest", dir.file("out/Strings"), "--quiet"});
    ASSERT_EQ(r.status, cli::kExitOk) << r.err;
    EXPECT_EQ(test::readFileBytes(dir.file("out/Strings.X7L")).substr(0, 11), "YAMAHA-YSFC");
    EXPECT_THAT(r.out, HasSubstr(kMontageExportInformation));
}
