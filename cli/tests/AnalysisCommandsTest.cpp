// auto, normalize, gain, levels, loops and marker as a user runs them on a saved project.
// (The figures `estimate` prints are compared with the estimation dialog's in its test.)
#include "cli/CliApp.h"

#include "analysis/tests/TestSignals.h"
#include "audiofile/WavFile.h"
#include "cli/tests/CommandRunner.h"
#include "core/Message.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "tests/support/ProjectFileAccess.h"
#include "tests/support/TempDir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <functional>
#include <memory>
#include <string>

using testing::HasSubstr;

using namespace tg;

namespace {

using tg::test::CommandRun;
constexpr auto run = tg::test::runCli;
constexpr auto runOk = tg::test::runOk;

class AnalysisCommands : public testing::Test {
  protected:
    void SetUp() override
    {
        project = std::make_unique<Project>();
        copyText(project->name, "Cli");
        copyText(project->dataPath, dir.path().c_str());
        project->mslCount = 1;
        copyText(project->msl[0].name, "Layer");
        copyText(project->msl[0].AudioInFormat, "44.1KHz, Stereo, 16bit");
    }

    // A note at -3 dB on frames 5000..35000 of a 40000-frame stereo take.
    void addKey(int note)
    {
        const double peak = std::lround(std::pow(10.0, -3.0 / 20) * 32767);
        writeTake(note, [peak](int64_t f) { return peak * std::sin(2 * M_PI * f / 200.0); });
        project->msl[0].keys[note].keyState = 1;
        project->msl[0].keys[note].Silence_Out = 3000;
    }

    // A stereo take of 40000 frames, silent but for `value` on frames 5000..35000.
    void writeTake(int note, const std::function<double(int64_t)>& value)
    {
        const WaveFormat format = makeWaveFormat(44100, 2, 16);
        const auto data = test::makeSignal(format, 40000, [&](int64_t f, int) {
            return f >= 5000 && f < 35000 ? static_cast<int32_t>(value(f)) : 0;
        });
        std::string message;
        ASSERT_TRUE(
            writeWav(keySampleFileName(*project, project->msl[0], note), format, data, message));
    }

    std::string save()
    {
        std::string message;
        EXPECT_TRUE(saveProject(*project, dir.path(), "Cli", message)) << message;
        return dir.file("Cli.TGprj");
    }

    // The level the `levels` command reports for one key.
    std::string levelOf(const std::string& path, int note)
    {
        return run({"levels", path, "--quiet", "--scope", "sample", "--key", std::to_string(note)})
            .out;
    }

    test::TempDir dir;
    std::unique_ptr<Project> project;
};

TEST_F(AnalysisCommands, GainWithClippingAheadIsRefusedWithoutYes)
{
    addKey(60);
    const std::string path = save();
    EXPECT_EQ(test::exitOf({"gain", path, "--db", "6", "--quiet"}),
              (test::Exit{cli::kExitFailed, "Some clipping will occur. Continue anyway?\n"}));
    EXPECT_EQ(levelOf(path, 60), "Maximum level in Sample: -3.00 dB (= 70.79 %)\n");
    const CommandRun r = runOk({"gain", path, "--db", "6", "--yes", "--quiet"});
    EXPECT_EQ(r.out, "Changing gain done.\n");
    EXPECT_EQ(levelOf(path, 60), "Maximum level in Sample: 0.00 dB (= 100.00 %)\n");
}

TEST_F(AnalysisCommands, LevelsAndNormalizeReportTheSystemTexts)
{
    addKey(60);
    addKey(62);
    const std::string path = save();
    CommandRun r = runOk({"levels", path, "--scope", "project", "--quiet"});
    EXPECT_EQ(r.out, "Maximum level in Project: -3.00 dB (= 70.79 %)\n");
    r = runOk({"normalize", path, "--db", "-1", "--scope", "sample", "--key", "62"});
    EXPECT_EQ(r.out, "Normalizing done.\n");
    EXPECT_THAT(r.err, HasSubstr("Normalizing... (")); // progress on stderr
    EXPECT_EQ(levelOf(path, 60), "Maximum level in Sample: -3.00 dB (= 70.79 %)\n");
    r = run({"levels", path, "--json", "--quiet", "--scope", "sample", "--key", "62"});
    EXPECT_THAT(r.out, HasSubstr("\"message\": \"Maximum level in Sample: -1.00 dB"));
}

TEST_F(AnalysisCommands, AutoSavesTheMarkersUnlessDryRun)
{
    addKey(60);
    project->msl[0].recordsettings.zerocrossing = 0;
    const std::string path = save();
    const std::string before = test::readFileBytes(path);
    CommandRun r = runOk({"auto", path, "--note", "--loop", "--dry-run", "--quiet"});
    EXPECT_EQ(test::readFileBytes(path), before);
    r = runOk({"auto", path, "--note", "--loop", "--quiet", "--json"});
    EXPECT_THAT(r.out, HasSubstr("\"saved\": true"));

    const auto saved = test::loadProjectFile(path);
    const TGmsl_key& key = saved->project(0).msl[0].keys[60];
    // Where the markers go is BatchAutoSetsNoteAndLoopMarkers' business; here: they were saved.
    EXPECT_NEAR(key.Note_In, 5000, 10);
    EXPECT_EQ(key.loopMode, 1);
}

TEST_F(AnalysisCommands, LoopsReportsEveryLoopAndWhichOnesClick)
{
    for (int note : {60, 62, 64}) {
        addKey(note);
        TGmsl_key& key = project->msl[0].keys[note];
        key.Note_In = 5000;
        key.Note_Out = 34999;
        key.loopMode = note == 64 ? 0 : 1;
        key.Loop_In = 10000;
        // 50 periods of the 200-frame wave join; 50.25 jump from a crest to the middle.
        key.Loop_Out = note == 60 ? 19999 : 20049;
    }
    const std::string path = save();
    CommandRun r = runOk({"loops", path});
    EXPECT_THAT(r.out, HasSubstr("Key 62 (D4): loop 10050 frames, crossfade 0, wrap step"));
    EXPECT_THAT(r.out, HasSubstr("Key 64 (E4): no loop\n3 Key-Samples, 1 clicking loops\n"));
    r = runOk({"loops", path, "--json"});
    const nlohmann::json j = nlohmann::json::parse(r.out);
    EXPECT_EQ(j["clicks"], 1);
    ASSERT_EQ(j["loops"].size(), 3u);
    EXPECT_EQ(j["loops"][0]["click"], false);
    EXPECT_EQ(j["loops"][1]["click"], true);
    EXPECT_EQ(j["loops"][2]["looped"], false);
}

TEST_F(AnalysisCommands, AutoLoopWarnsAboutLoopsThatClick)
{
    // Loud up to frame 20000, quiet after: the loop starts on a loud crest and must end in
    // the quiet search region, and without a crossfade the wrap steps from quiet to loud.
    addKey(60);
    writeTake(
        60, [](int64_t f) { return (f < 20000 ? 23000 : 2000) * std::cos(2 * M_PI * f / 200.0); });
    RecordSettings& settings = project->msl[0].recordsettings;
    settings.zerocrossing = 0;
    settings.xfadelength = 0.0;
    const std::string path = save();
    CommandRun r = runOk({"auto", path, "--note", "--loop", "--quiet", "--json"});
    EXPECT_THAT(r.err, HasSubstr("warning: Key 60 (C4): loop "));
    EXPECT_THAT(r.err, HasSubstr("  CLICK\n"));
    EXPECT_EQ(nlohmann::json::parse(r.out)["clickingLoops"], nlohmann::json::array({60}));
}

TEST_F(AnalysisCommands, MarkerMovesOntoZeroCrossingsAndSaves)
{
    addKey(60); // the tone is exactly zero every 100 frames
    const std::string path = save();
    CommandRun r = runOk({"marker", path, "--key", "60", "Loop_In=12345", "Loop_Out=30000"});
    EXPECT_EQ(r.out, "Loop_In 12300\nLoop_Out 30000\n");

    const auto saved = test::loadProjectFile(path);
    const TGmsl_key& key = saved->project(0).msl[0].keys[60];
    EXPECT_EQ(key.Loop_In, 12300);
    EXPECT_EQ(key.Loop_Out, 30000);

    r = run({"marker", path, "--key", "60", "Loop_Middle=5"});
    EXPECT_EQ(r.status, cli::kExitBadUsage);
    EXPECT_THAT(r.err, HasSubstr("Loop_Middle"));
    r = run({"marker", path, "--key", "61", "Note_In=5"});
    EXPECT_EQ(r.status, cli::kExitFailed);
    EXPECT_THAT(r.err, HasSubstr("could not be found"));
}

TEST_F(AnalysisCommands, BadUsageExitsWithTwo)
{
    addKey(60);
    const std::string path = save();
    EXPECT_EQ(run({"normalize", path}).status, cli::kExitBadUsage);
    EXPECT_EQ(run({"normalize", path, "--db", "-1", "--multisample-max"}).status,
              cli::kExitBadUsage);
    EXPECT_EQ(run({"gain", path, "--db", "1", "--scope", "everything"}).status, cli::kExitBadUsage);
    EXPECT_EQ(run({"levels", path, "--scope", "sample"}).status, cli::kExitBadUsage);
    EXPECT_EQ(run({"auto", path}).status, cli::kExitBadUsage);
    EXPECT_EQ(run({"estimate", dir.file("missing.txt")}).status, cli::kExitBadUsage);
}

} // namespace
