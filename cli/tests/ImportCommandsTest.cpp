// import, preset and copy-instrument as a user runs them: a WAV set exported by the program
// imported back with its conflicts; one-shot folders; presets and copies between project files.
// (That the set's loops come back is proven in halves: the exported chunks are read by
// libsndfile in ExportedSamples, imported chunks kept by AudioImport.)
#include "cli/CliApp.h"

#include "cli/tests/CommandRunner.h"
#include "core/Message.h"
#include "tests/support/SavedProject.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>

using namespace tg;
namespace fs = std::filesystem;

namespace {

constexpr auto run = tg::test::runCli;
constexpr auto runOk = tg::test::runOk;
constexpr auto info = tg::test::infoJson;
const int kNotes[] = {60, 64, 67};

class ImportCommands : public testing::Test {
  protected:
    void SetUp() override
    {
        for (const char* folder : {"src", "out", "empty", "hi"})
            fs::create_directories(dir.file(folder));
        // A Multi-Sample of three looped stereo sines, saved as Source.TGprj. No crossfade:
        // the rendered note is the recording itself.
        test::SineProjectShape shape;
        shape.layers = {"Piano"};
        shape.notes = {std::begin(kNotes), std::end(kNotes)};
        shape.frames = 20000;
        shape.channels = 2;
        shape.noteIn = 300;
        shape.loopIn = 6000;
        shape.loopOut = 15999;
        shape.dataPath = dir.file("src");
        test::saveSineProject(dir.path(), "Source", shape, [](Project& project) {
            copyText(project.msl[0].AudioInFormat, "44.1KHz, Stereo, 16bit");
            for (int note : kNotes)
                project.msl[0].keys[note].xfadeLen = 0;
        });
        ASSERT_EQ(run({"export", dir.file("Source.TGprj"), "--format", "wav", "--dest",
                       dir.file("out"), "--naming", "<#ms#>-<#mn#>", "--quiet"})
                      .status,
                  0);
    }

    // An empty project (one Multi-Sample, no keys) in `format`.
    std::string emptyProject(const std::string& name, const std::string& format)
    {
        const std::string path = dir.file(name + ".TGprj");
        runOk({"new", path, "--data-path", dir.file("empty"), "--format", format, "--keys", "37",
               "--step", "36"});
        return path;
    }

    test::TempDir dir;
};

TEST_F(ImportCommands, OccupiedKeysNeedReplaceOrSkip)
{
    const std::string path = emptyProject("Twice", "44.1KHz, Stereo, 16bit");
    ASSERT_EQ(run({"import", path, dir.file("out/Piano-060.wav"), "--quiet"}).status, 0);
    EXPECT_EQ(test::exitOf({"import", path, dir.file("out"), "--quiet"}),
              (test::Exit{1, "Key C4 (60) of the Multi-Sample \"Velocity 127\" already holds a "
                             "Key-Sample; choose whether to replace or to skip such keys. "
                             "(--replace or --skip)\n"}));
    const test::CommandRun r = runOk({"import", path, dir.file("out"), "--skip", "--json"});
    const nlohmann::json doc = nlohmann::json::parse(r.out);
    EXPECT_EQ(doc["imported"], 2);
    EXPECT_EQ(doc["skipped"], 1);
    EXPECT_EQ(run({"import", path, dir.file("out"), "--replace", "--skip"}).status, 2);
}

TEST_F(ImportCommands, SoundLibraryFolderAndNamesWithoutChunks)
{
    const std::string path = emptyProject("Kit", "44.1KHz, Mono, 16bit");
    fs::create_directories(dir.file("Kit One"));
    for (const char* name : {"Snare.wav", "Kick.wav"})
        fs::copy_file(dir.file("src/Source - Piano - 060 - C4.wav"),
                      dir.file(std::string("Kit One/") + name));
    test::CommandRun r =
        runOk({"import", path, dir.file("Kit One"), "--sound-library", "--key", "40", "--quiet"});
    nlohmann::json doc = info(path);
    ASSERT_EQ(doc["mslCount"], 2);
    EXPECT_EQ(doc["multisamples"][1]["name"], "Kit One");
    EXPECT_EQ(doc["multisamples"][1]["keys"][40]["name"], "Kick");

    // A Key-Sample file of the program has no chunk with a root: the name decides.
    fs::copy_file(dir.file("src/Source - Piano - 060 - C4.wav"), dir.file("Piano C#3.wav"));
    r = runOk({"import", path, dir.file("Piano C#3.wav"), "--multisample", "0", "--json"});
    EXPECT_EQ(nlohmann::json::parse(r.out)["files"][0]["key"], 49);
}

TEST_F(ImportCommands, PresetsAndCopiesBetweenProjectFiles)
{
    const std::string source = dir.file("Source.TGprj");
    ASSERT_EQ(run({"preset", "save", "Keys", source}).status, 0);
    test::CommandRun r = run({"preset", "list", "--json"});
    EXPECT_EQ(nlohmann::json::parse(r.out)["presets"], nlohmann::json::array({"Keys"}));
    // What an applied preset holds is PresetsTest's and PresetRecordCli's (tests/e2e) business.
    r = runOk({"preset", "apply", "Keys", dir.file("Fresh.TGprj"), "--data-path", dir.file("hi")});
    EXPECT_EQ(run({"preset", "rename", "Keys", "Piano Keys"}).status, 0);
    EXPECT_EQ(test::exitOf({"preset", "delete", "Keys"}),
              (test::Exit{1, "There is no preset named \"Keys\".\n"}));

    // Into the existing project, then a new one; names and files are InstrumentCopierTest's.
    ASSERT_EQ(run({"copy-instrument", source, dir.file("Fresh.TGprj")}).status, 0);
    ASSERT_EQ(run({"copy-instrument", source, dir.file("New.TGprj")}).status, 0);
    const nlohmann::json copied = info(dir.file("Fresh.TGprj"));
    ASSERT_EQ(copied["mslCount"], 2);
    EXPECT_EQ(copied["multisamples"][1]["keys"][67]["hasAudio"], 1);
    const nlohmann::json made = info(dir.file("New.TGprj"));
    EXPECT_EQ(made["dataPath"], dir.file("New_data"));
    EXPECT_EQ(made["multisamples"][0]["keys"][60]["hasAudio"], 1);
}

} // namespace
