// The export command for Bitwig, Deluge, Prophet-X, Quantum and Kronos on a saved Project with
// real Key-Sample files: the options reach the exporters, the refusals and an interrupt end
// with their statuses. What is inside the files is the exporters' own tests' business.
#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "cli/ProjectAccess.h"

#include "audiofile/WavFile.h"
#include "cli/tests/CommandRunner.h"
#include "core/Model.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <memory>
#include <set>

using namespace tg;
namespace fs = std::filesystem;

namespace {

using tg::test::CommandRun;
constexpr auto run = tg::test::runCli;

std::string quoted(const std::string& path)
{
    return "'" + path + "'";
}

// Stereo sine Key-Samples, a different pitch per key, so that files can be told apart.
std::vector<uint8_t> sineStereo(int note, int frames)
{
    std::vector<uint8_t> data;
    const double step = 2.0 * M_PI * 440.0 * std::pow(2.0, (note - 69) / 12.0) / 44100.0;
    for (int i = 0; i < frames; ++i) {
        const int16_t left = int16_t(9000 * std::sin(i * step));
        const int16_t right = int16_t(5000 * std::sin(i * step));
        for (int16_t v : {left, right}) {
            data.push_back(uint8_t(v & 0xFF));
            data.push_back(uint8_t((v >> 8) & 0xFF));
        }
    }
    return data;
}

// A saved Project "Piano" with two velocity layers (0-63 "Soft", 64-127 "Hard"), keys 48, 60
// and 72 recorded in each, all looped unless `oneShotKey` names a key to leave unlooped.
struct SavedProject {
    test::TempDir dir;
    std::string path;

    explicit SavedProject(int oneShotKey = -1, int frames = 12000,
                          std::vector<int> notes = {48, 60, 72})
    {
        auto project = std::make_unique<Project>();
        copyText(project->name, "Piano");
        copyText(project->dataPath, dir.path().c_str());
        project->mslCount = 2;
        for (int m = 0; m < 2; ++m) {
            TGmsl& msl = project->msl[m];
            copyText(msl.name, m == 0 ? "Soft" : "Hard");
            msl.range_start = m == 0 ? 0 : 64;
            msl.range_end = m == 0 ? 63 : 127;
            msl.KBrangeIn = 36;
            msl.KBrangeOut = 96;
            for (int note : notes) {
                std::string message;
                if (!writeWav(keySampleFileName(*project, msl, note), makeWaveFormat(44100, 2, 16),
                              sineStereo(note, frames), message))
                    ADD_FAILURE() << message;
                TGmsl_key& key = msl.keys[note];
                copyText(key.name, "K");
                key.keyState = 1;
                key.Note_In = 0;
                key.Note_Out = frames - 1;
                key.loopMode = note == oneShotKey ? 0 : 1;
                key.Loop_In = frames / 4;
                key.Loop_Out = frames / 2;
            }
        }
        std::string message;
        if (!saveProject(*project, dir.path(), "Piano", message))
            ADD_FAILURE() << message;
        path = dir.file("Piano.TGprj");
    }
};

// Files of a folder tree, relative to it.
std::set<std::string> filesUnder(const std::string& root)
{
    std::set<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(root))
        if (entry.is_regular_file())
            files.insert(fs::relative(entry.path(), root).string());
    return files;
}

} // namespace

TEST(TemplateExportCommand, OptionsReachTheExportersAndTheFilesLandWhereNamed)
{
    SavedProject saved;
    const std::string projectBefore = test::readFileBytes(saved.path);
    const std::string archive = saved.dir.file("out/Piano.multisample");
    CommandRun r = run({"export", saved.path, "--format", "bitwig", "--dest", archive, "--category",
                        "Keys", "--creator", "Tester", "--keywords", "warm,soft", "--quiet"});
    ASSERT_EQ(r.status, cli::kExitOk) << r.err;
    EXPECT_EQ(r.err, "");
    std::string xml;
    ASSERT_EQ(test::runCommand("unzip -p " + quoted(archive) + " multisample.xml", &xml), 0) << xml;
    for (const char* tag :
         {"<category>Keys</category>", "<creator>Tester</creator>", "<keyword>soft</keyword>"})
        EXPECT_NE(xml.find(tag), std::string::npos) << tag;

    const std::string korg = saved.dir.file("korg");
    r = run({"export", saved.path, "--format", "Korg Kronos (*.KMP)", "--dest", korg, "--quiet"});
    ASSERT_EQ(r.status, cli::kExitOk) << r.err;
    EXPECT_TRUE(fs::exists(korg + "/Piano00.KSC"));
    EXPECT_TRUE(fs::exists(korg + "/Piano00/Hard010.KMP"));

    const std::string card = saved.dir.file("card");
    r = run({"export", saved.path, "--format", "deluge", "--dest", card, "--multisamples", "1",
             "--program-name", "Grand", "--quiet"});
    ASSERT_EQ(r.status, cli::kExitOk) << r.err;
    // Only the selected layer: one file per key of "Hard".
    EXPECT_EQ(filesUnder(card), (std::set<std::string>{
                                    "SYNTHS/Grand.XML", "SAMPLES/TNGB/Grand/K048.wav",
                                    "SAMPLES/TNGB/Grand/K060.wav", "SAMPLES/TNGB/Grand/K072.wav"}));

    const std::string drive = saved.dir.file("drive");
    r = run({"export", saved.path, "--format", "Waldorf Quantum and Iridium (*.map)", "--dest",
             drive, "--folder", "Pianos", "--program-name", "Grand", "--quiet"});
    ASSERT_EQ(r.status, cli::kExitOk) << r.err;
    EXPECT_TRUE(fs::exists(drive + "/samples/Pianos/Grand.map"));

    const std::string usb = saved.dir.file("usb");
    const std::vector<std::string> prophet = {
        "export",         saved.path, "--format",   "prophetx", "--dest",           usb,
        "--bank",         "User 1",   "--category", "Keys",     "--program-number", "3",
        "--program-name", "Grand",    "--quiet"};
    ASSERT_EQ(run(prophet).status, cli::kExitOk);
    const std::string zip = usb + "/px/User 1/Keys/03. Grand.zip";
    EXPECT_TRUE(fs::exists(zip));
    // The same number again is refused, and the first program stays.
    r = run(prophet);
    EXPECT_EQ(r.status, cli::kExitFailed);
    EXPECT_NE(r.err.find("A program with the same number (03) already exists in this "
                         "user-bank/category."),
              std::string::npos)
        << r.err;
    EXPECT_TRUE(fs::exists(zip));
    r = run({"export", saved.path, "--format", "prophetx", "--dest", usb, "--quiet"});
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
    EXPECT_EQ(r.err, "This project contains both single shot and looped samples. The Deluge "
                     "format only supports one or the other per project. Please adjust the "
                     "\"Loop all samples\" setting in the following dialog.\n");
    EXPECT_FALSE(fs::exists(card));
    r = run({"export", mixed.path, "--format", "quantum", "--dest", card, "--quiet"});
    EXPECT_NE(r.err.find("The Quantum format only supports"), std::string::npos) << r.err;
    r = run({"export", mixed.path, "--format", "deluge", "--dest", card, "--loop-all", "--quiet"});
    EXPECT_EQ(r.status, cli::kExitOk) << r.err;
    EXPECT_TRUE(fs::exists(card + "/SYNTHS/Piano.XML"));
    // Bitwig has a loop mode per sample: no notice.
    r = run({"export", mixed.path, "--format", "bitwig", "--dest", mixed.dir.file("m.multisample"),
             "--quiet"});
    EXPECT_EQ(r.status, cli::kExitOk) << r.err;

    // Overlapping velocity layers: Prophet-X refuses with the layer message.
    SavedProject overlapping;
    {
        Model::instance().reset();
        std::string message;
        ASSERT_TRUE(cli::openProjectFile(Model::instance(), overlapping.path, message)) << message;
        Project& project = *Model::instance().currentProject();
        project.msl[0].range_end = 70;
        ASSERT_TRUE(saveProjectAgain(project, message)) << message;
    }
    const std::string usb = overlapping.dir.file("usb");
    r = run({"export", overlapping.path, "--format", "Sequential Prophet-X (*.zip)", "--dest", usb,
             "--bank", "B", "--category", "C", "--quiet"});
    EXPECT_EQ(r.status, cli::kExitFailed);
    EXPECT_EQ(r.err, "The project you are trying to export contains a setting that is not fully "
                     "compatible with the Prophet-X's playback engine.\n\nVelocity-overlapping is "
                     "not supported. Each layer must have a unique velocity mapping range with no "
                     "gaps in between.\n");
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
