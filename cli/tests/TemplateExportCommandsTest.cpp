// The export command for Bitwig, Deluge, Prophet-X, Quantum and Kronos on a saved Project with
// real Key-Sample files: the options reach the exporters, the refusals and an interrupt end
// with their statuses. What is inside the files is the exporters' own tests' business.
#include "cli/CliApp.h"

#include "cli/tests/CommandRunner.h"
#include "tests/support/SavedProject.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <signal.h>

#include <chrono>
#include <filesystem>
#include <numeric>
#include <thread>

using namespace tg;
namespace fs = std::filesystem;

namespace {

using tg::test::CommandRun;
constexpr auto run = tg::test::runCli;
constexpr auto runOk = tg::test::runOk;

// A saved stereo Project "Piano": velocity layers "Soft" (0-63) and "Hard" (64-127) with keys
// 48, 60 and 72 (or `notes`) recorded in each, all looped unless `oneShotKey` names one.
struct SavedProject {
    test::TempDir dir;
    std::string path;

    explicit SavedProject(int oneShotKey = -1, int frames = 12000,
                          std::vector<int> notes = {48, 60, 72})
    {
        test::SineProjectShape shape;
        shape.notes = notes;
        shape.frames = frames;
        shape.channels = 2;
        shape.loopIn = frames / 4;
        shape.loopOut = frames / 2;
        path = test::saveSineProject(dir.path(), "Piano", shape, [&](Project& project) {
            for (int m = 0; m < 2; ++m) {
                project.msl[m].range_start = m == 0 ? 0 : 64;
                project.msl[m].range_end = m == 0 ? 63 : 127;
                project.msl[m].KBrangeIn = 36;
                project.msl[m].KBrangeOut = 96;
                if (oneShotKey >= 0)
                    project.msl[m].keys[oneShotKey].loopMode = 0;
            }
        });
    }
};

size_t filesUnder(const std::string& root)
{
    size_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(root))
        count += entry.is_regular_file();
    return count;
}

} // namespace

TEST(TemplateExportCommand, OptionsReachTheExportersAndTheFilesLandWhereNamed)
{
    SavedProject saved;
    const std::string projectBefore = test::readFileBytes(saved.path);
    struct Case {
        const char* format;
        const char* dest; // under the project's folder, as the files it names
        std::vector<std::string> options;
        const char* made;
    };
    const Case cases[] = {
        {"bitwig",
         "out/Piano.multisample",
         {"--category", "Keys", "--creator", "Tester", "--keywords", "warm,soft"},
         "out/Piano.multisample"},
        {"Korg Kronos (*.KMP)", "korg", {}, "korg/Piano00/Hard010.KMP"},
        // Only the selected layer: the program and one file per key of "Hard".
        {"deluge",
         "card",
         {"--multisamples", "1", "--program-name", "Grand"},
         "card/SYNTHS/Grand.XML"},
        {"Waldorf Quantum and Iridium (*.map)",
         "drive",
         {"--folder", "Pianos", "--program-name", "Grand"},
         "drive/samples/Pianos/Grand.map"},
        {"prophetx",
         "usb",
         {"--bank", "User 1", "--category", "Keys", "--program-number", "3", "--program-name",
          "Grand"},
         "usb/px/User 1/Keys/03. Grand.zip"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.format);
        std::vector<std::string> words{"export", saved.path, "--format",
                                       c.format, "--dest",   saved.dir.file(c.dest),
                                       "--quiet"};
        words.insert(words.end(), c.options.begin(), c.options.end());
        const CommandRun r = runOk(words);
        EXPECT_EQ(r.err, "");
        EXPECT_TRUE(fs::exists(saved.dir.file(c.made)));
    }
    std::string xml;
    ASSERT_EQ(test::runCommand("unzip -p '" + saved.dir.file("out/Piano.multisample") +
                                   "' multisample.xml",
                               &xml),
              0)
        << xml;
    for (const char* tag :
         {"<category>Keys</category>", "<creator>Tester</creator>", "<keyword>soft</keyword>"})
        EXPECT_NE(xml.find(tag), std::string::npos) << tag;
    EXPECT_EQ(filesUnder(saved.dir.file("card")), 4u);
    const CommandRun r =
        run({"export", saved.path, "--format", "prophetx", "--dest", saved.dir.file("usb")});
    EXPECT_EQ(r.status, cli::kExitBadUsage);
    EXPECT_NE(r.err.find("--bank"), std::string::npos) << r.err;

    // Exporting never changes the Project file.
    EXPECT_EQ(test::readFileBytes(saved.path), projectBefore);
}

// Each format's checks are ExportChecksTest's; here: a refusal ends the command before anything
// is written, and --loop-all answers the loop question.
TEST(TemplateExportCommand, PreExportChecksRefuseBeforeAnythingIsWritten)
{
    // Mixed loop types: the single-loop formats ask for "Loop all Samples".
    SavedProject mixed(60);
    const std::string card = mixed.dir.file("card");
    CommandRun r = run({"export", mixed.path, "--format", "deluge", "--dest", card, "--quiet"});
    EXPECT_EQ(r.status, cli::kExitFailed);
    EXPECT_NE(r.err.find("The Deluge format only supports one or the other"), std::string::npos)
        << r.err;
    EXPECT_FALSE(fs::exists(card));
    r = runOk(
        {"export", mixed.path, "--format", "deluge", "--dest", card, "--loop-all", "--quiet"});
    EXPECT_TRUE(fs::exists(card + "/SYNTHS/Piano.XML"));
}

TEST(TemplateExportCommand, InterruptAbortsTheExportAndLeavesTheProjectAsItWas)
{
    std::vector<int> notes(61);
    std::iota(notes.begin(), notes.end(), 36);
    SavedProject saved(-1, 44100, notes);
    const std::string projectBefore = test::readFileBytes(saved.path);
    const std::string archive = saved.dir.file("Piano.multisample");
    const std::string log = saved.dir.file("stderr.log");
    // High-quality resampling to 48 kHz keeps every key busy for a while; the real program
    // runs, so that Ctrl-C reaches a process of its own.
    const pid_t pid = test::startCliProcess(
        {"export", saved.path, "--format", "bitwig", "--dest", archive, "--settings", "0x02020410"},
        "/dev/null", log);
    ASSERT_GT(pid, 0);
    const auto secondKey = [&] {
        return test::readFileBytes(log).find("Rendering and writing Key 37") != std::string::npos;
    };
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    while (!secondKey() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    kill(pid, SIGINT);
    EXPECT_EQ(test::waitCliProcess(pid), cli::kExitFailed);
    const std::string err = test::readFileBytes(log);
    ASSERT_TRUE(secondKey()) << err;
    EXPECT_NE(err.find("Export aborted."), std::string::npos) << err;
    EXPECT_FALSE(fs::exists(archive));
    EXPECT_EQ(test::readFileBytes(saved.path), projectBefore);
}
