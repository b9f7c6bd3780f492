// The export command for Bitwig, Deluge, Prophet-X, Quantum and Kronos on a saved Project with
// real Key-Sample files: the options reach the exporters, the refusals and an interrupt end
// with their statuses. What is inside the files is the exporters' own tests' business.
#include "cli/CliApp.h"
#include "cli/Commands.h"

#include "cli/tests/CommandRunner.h"
#include "tests/support/SavedProject.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

using namespace tg;
namespace fs = std::filesystem;

namespace {

using tg::test::CommandRun;
constexpr auto run = tg::test::runCli;

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
        const CommandRun r = run(words);
        ASSERT_EQ(r.status, cli::kExitOk) << r.err;
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
    r = run({"export", mixed.path, "--format", "deluge", "--dest", card, "--loop-all", "--quiet"});
    EXPECT_EQ(r.status, cli::kExitOk) << r.err;
    EXPECT_TRUE(fs::exists(card + "/SYNTHS/Piano.XML"));
    // Bitwig has a loop mode per sample: no notice.
    r = run({"export", mixed.path, "--format", "bitwig", "--dest", mixed.dir.file("m.multisample"),
             "--quiet"});
    EXPECT_EQ(r.status, cli::kExitOk) << r.err;

    // Overlapping velocity layers: Prophet-X refuses with the layer message.
    test::TempDir overlapping;
    const std::string path =
        test::saveSineProject(overlapping.path(), "Piano", {}, [](Project& project) {
            project.msl[0].range_end = 70;
            project.msl[1].range_start = 64;
        });
    const std::string usb = overlapping.file("usb");
    r = run({"export", path, "--format", "Sequential Prophet-X (*.zip)", "--dest", usb, "--bank",
             "B", "--category", "C", "--quiet"});
    EXPECT_EQ(r.status, cli::kExitFailed);
    EXPECT_NE(r.err.find("Velocity-overlapping is not supported."), std::string::npos) << r.err;
    EXPECT_FALSE(fs::exists(usb));
}

#ifdef TG_CLI_BINARY
TEST(TemplateExportCommand, InterruptAbortsTheExportAndLeavesTheProjectAsItWas)
{
    std::vector<int> notes;
    for (int note = 36; note <= 96; ++note)
        notes.push_back(note);
    SavedProject saved(-1, 44100, notes);
    const std::string projectBefore = test::readFileBytes(saved.path);
    const std::string archive = saved.dir.file("Piano.multisample");

    int errPipe[2];
    ASSERT_EQ(pipe(errPipe), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        dup2(errPipe[1], STDERR_FILENO);
        close(errPipe[0]);
        close(errPipe[1]);
        // High-quality resampling to 48 kHz keeps every key busy for a while.
        execl(TG_CLI_BINARY, TG_CLI_BINARY, "export", saved.path.c_str(), "--format", "bitwig",
              "--dest", archive.c_str(), "--settings", "0x02020410", static_cast<char*>(nullptr));
        _exit(127);
    }
    close(errPipe[1]);
    std::string err;
    bool interrupted = false;
    char buffer[512];
    ssize_t got = 0;
    while ((got = read(errPipe[0], buffer, sizeof buffer)) > 0) {
        err.append(buffer, size_t(got));
        if (!interrupted && err.find("Rendering and writing Key 37") != std::string::npos) {
            kill(child, SIGINT);
            interrupted = true;
        }
    }
    close(errPipe[0]);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(interrupted) << err;
    ASSERT_TRUE(WIFEXITED(status)) << err;
    EXPECT_EQ(WEXITSTATUS(status), cli::kExitFailed) << err;
    EXPECT_NE(err.find("Export aborted."), std::string::npos) << err;
    EXPECT_FALSE(fs::exists(archive));
    EXPECT_EQ(test::readFileBytes(saved.path), projectBefore);
}
#endif
