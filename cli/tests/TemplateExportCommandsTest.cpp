// The export command for Bitwig, Deluge, Prophet-X, Quantum and Kronos on a saved Project with
// real Key-Sample files: what lands on disk, read back by unzip, xmllint and our own readers.
#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "cli/ProjectAccess.h"

#include "audiofile/WavFile.h"
#include "cli/tests/CommandRunner.h"
#include "core/Message.h"
#include "core/Model.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <memory>
#include <regex>
#include <set>

using namespace tg;
namespace fs = std::filesystem;

namespace {

using tg::test::CommandRun;
constexpr auto run = tg::test::runCli;

// Runs a shell command with its output (stdout and stderr) in `output`; its exit status.
int shell(const std::string& command, std::string* output = nullptr)
{
    FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    if (!pipe)
        return -1;
    std::array<char, 4096> buffer{};
    size_t got = 0;
    while ((got = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        if (output)
            output->append(buffer.data(), got);
    const int status = pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

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

// A bounded big-endian reader over a file image.
struct BigEndianReader {
    std::string bytes;
    size_t at = 0;
    bool overrun = false;

    uint32_t u8()
    {
        if (at >= bytes.size()) {
            overrun = true;
            return 0;
        }
        return uint8_t(bytes[at++]);
    }
    uint32_t u16() { return (u8() << 8) | u8(); }
    uint32_t u32() { return (u16() << 16) | u16(); }
    std::string text(size_t width)
    {
        if (at + width > bytes.size()) {
            overrun = true;
            return {};
        }
        std::string out = bytes.substr(at, width);
        at += width;
        return out;
    }
};

} // namespace

TEST(TemplateExportCommand, BitwigArchivePassesUnzipAndXmllintAndNamesOnlyItsFiles)
{
    SavedProject saved;
    const std::string projectBefore = test::readFileBytes(saved.path);
    const std::string archive = saved.dir.file("out/Piano.multisample");
    CommandRun r = run({"export", saved.path, "--format", "bitwig", "--dest", archive, "--category",
                        "Keys", "--creator", "Tester", "--keywords", "warm,soft", "--quiet"});
    ASSERT_EQ(r.status, cli::kExitOk) << r.err;
    EXPECT_EQ(r.err, "");

    std::string output;
    EXPECT_EQ(shell("unzip -t " + quoted(archive), &output), 0) << output;
    const std::string unpacked = saved.dir.file("unpacked");
    ASSERT_EQ(shell("unzip -q " + quoted(archive) + " -d " + quoted(unpacked), &output), 0)
        << output;
    const std::string xml = unpacked + "/multisample.xml";
    output.clear();
    EXPECT_EQ(shell("xmllint --noout " + quoted(xml), &output), 0) << output;

    const std::string text = test::readFileBytes(xml);
    EXPECT_NE(text.find("<category>Keys</category>"), std::string::npos);
    EXPECT_NE(text.find("<creator>Tester</creator>"), std::string::npos);
    EXPECT_NE(text.find("<keyword>warm</keyword>"), std::string::npos);
    std::set<std::string> named;
    const std::regex fileAttribute("<sample file=\"([^\"]+)\"");
    for (std::sregex_iterator it(text.begin(), text.end(), fileAttribute), end; it != end; ++it)
        named.insert((*it)[1]);
    std::set<std::string> archived = filesUnder(unpacked);
    archived.erase("multisample.xml");
    EXPECT_EQ(named, archived);
    EXPECT_EQ(named.size(), 6u); // two layers of three keys
    EXPECT_EQ(named.count("Piano-01-Hard-060-K-C4.wav"), 1u);

    // The sample files come from the program's WAV writer: format, length and loop read back.
    WaveFormat format;
    int32_t loopStart = 0, loopEnd = 0, rootKey = 0, frames = 0;
    std::string message;
    ASSERT_EQ(readWavHeader(unpacked + "/Piano-01-Hard-060-K-C4.wav", format, loopStart, loopEnd,
                            rootKey, frames, message),
              1)
        << message;
    EXPECT_EQ(format.nSamplesPerSec, 44100u);
    EXPECT_EQ(format.nChannels, 2);
    EXPECT_EQ(format.wBitsPerSample, 16);
    EXPECT_EQ(rootKey, 60);
    EXPECT_GT(loopEnd, loopStart);
    EXPECT_GT(frames, loopEnd);
    EXPECT_NE(text.find(formatText("sample-stop=\"%d.00000000\"", frames)), std::string::npos);

    // Exporting never changes the Project file.
    EXPECT_EQ(test::readFileBytes(saved.path), projectBefore);
}

TEST(TemplateExportCommand, KronosFilesParseBackAndCarryTheRenderedAudio)
{
    SavedProject saved;
    const std::string out = saved.dir.file("korg");
    const std::string wavs = saved.dir.file("wavs");
    fs::create_directories(out);
    fs::create_directories(wavs);
    // Mono (mix), 16 bit, 44.1 kHz; the same word for a WAV set to compare the audio with.
    const std::string word = "0x00040408";
    CommandRun r = run({"export", saved.path, "--format", "Korg Kronos (*.KMP)", "--dest", out,
                        "--settings", word, "--quiet"});
    ASSERT_EQ(r.status, cli::kExitOk) << r.err;
    r = run({"export", saved.path, "--format", "wav", "--dest", wavs, "--settings", word,
             "--naming", "<#msi#>-<#mn#>", "--quiet"});
    ASSERT_EQ(r.status, cli::kExitOk) << r.err;

    EXPECT_EQ(test::readFileBytes(out + "/Piano00.KSC"),
              "#KORG Script Version 1.0\r\nSoft000.KMP\r\nHard010.KMP\r\n");

    for (int layer = 0; layer < 2; ++layer) {
        const std::string kmpName = layer == 0 ? "Soft000.KMP" : "Hard010.KMP";
        BigEndianReader kmp{test::readFileBytes(out + "/Piano00/" + kmpName)};
        ASSERT_EQ(kmp.text(4), "MSP1");
        ASSERT_EQ(kmp.u32(), 18u);
        kmp.text(16);
        const uint32_t zones = kmp.u8();
        kmp.u8();
        ASSERT_EQ(kmp.text(4), "NAME");
        ASSERT_EQ(kmp.u32(), 24u);
        kmp.text(24);
        ASSERT_EQ(kmp.text(4), "RLP1");
        ASSERT_EQ(kmp.u32(), 18u * zones);
        // Key ranges start at 36: a gap zone covers 0-35 before the three Key-Samples.
        ASSERT_EQ(zones, 4u);
        std::vector<std::string> ksfFiles;
        std::vector<uint32_t> originals;
        for (uint32_t z = 0; z < zones; ++z) {
            const uint32_t original = kmp.u8();
            const uint32_t top = kmp.u8();
            kmp.text(4);
            const std::string file = kmp.text(12);
            if (z == 0) {
                EXPECT_EQ(original, 0u);
                EXPECT_EQ(top, 35u);
                EXPECT_EQ(file, "SKIPPEDSAMPL");
                continue;
            }
            originals.push_back(original);
            ksfFiles.push_back(file);
        }
        ASSERT_EQ(kmp.text(4), "MNO1");
        EXPECT_EQ(kmp.u32(), 4u);
        EXPECT_EQ(kmp.u32(), uint32_t(layer + 1));
        EXPECT_FALSE(kmp.overrun);
        EXPECT_EQ(kmp.at, kmp.bytes.size());
        ASSERT_EQ(originals, (std::vector<uint32_t>{48, 60, 72}));

        for (size_t k = 0; k < ksfFiles.size(); ++k) {
            BigEndianReader ksf{test::readFileBytes(out + "/Piano00/" + ksfFiles[k])};
            ASSERT_EQ(ksf.text(4), "SMP1");
            ASSERT_EQ(ksf.u32(), 32u);
            ksf.text(16);
            ksf.u32();
            ksf.u32();
            const uint32_t loopStart = ksf.u32();
            const uint32_t loopEnd = ksf.u32();
            ASSERT_EQ(ksf.text(4), "SMD1");
            const uint32_t size = ksf.u32();
            EXPECT_EQ(ksf.u32(), 44100u);
            EXPECT_EQ(ksf.u8(), 0u); // looped
            ksf.u8();
            EXPECT_EQ(ksf.u8(), 1u);
            EXPECT_EQ(ksf.u8(), 16u);
            const uint32_t frames = ksf.u32();
            ASSERT_EQ(size, frames * 2 + 12);

            // The same Key-Sample in the WAV set, little-endian: the same frames.
            WaveFormat format;
            std::vector<uint8_t> wav;
            std::string message;
            const std::string wavPath = wavs + formatText("/%02d-%03u.wav", layer, originals[k]);
            ASSERT_EQ(readWav(wavPath, format, wav, message), 1) << message;
            ASSERT_EQ(format.nChannels, 1);
            ASSERT_EQ(wav.size() / 2, frames);
            for (uint32_t i = 0; i < frames; ++i) {
                const uint32_t value = ksf.u16();
                ASSERT_EQ(value, uint32_t(wav[2 * i] | (wav[2 * i + 1] << 8))) << "frame " << i;
            }
            int32_t wavLoopStart = 0, wavLoopEnd = 0, root = 0, wavFrames = 0;
            ASSERT_EQ(
                readWavHeader(wavPath, format, wavLoopStart, wavLoopEnd, root, wavFrames, message),
                1);
            EXPECT_EQ(loopStart, uint32_t(wavLoopStart));
            EXPECT_EQ(loopEnd, uint32_t(wavLoopEnd));
            ASSERT_EQ(ksf.text(4), "SNO1");
            ksf.u32();
            ksf.u32();
            ASSERT_EQ(ksf.text(4), "NAME");
            EXPECT_EQ(ksf.u32(), 24u);
            ksf.text(24);
            EXPECT_FALSE(ksf.overrun);
            EXPECT_EQ(ksf.at, ksf.bytes.size());
        }
    }
}

TEST(TemplateExportCommand, DelugeQuantumAndProphetXFilesLandWhereTheCardsExpectThem)
{
    SavedProject saved;
    const std::string card = saved.dir.file("card");

    CommandRun r = run({"export", saved.path, "--format", "deluge", "--dest", card,
                        "--multisamples", "1", "--program-name", "Grand", "--quiet"});
    ASSERT_EQ(r.status, cli::kExitOk) << r.err;
    // Only the selected layer: one file per key of "Hard".
    EXPECT_EQ(filesUnder(card), (std::set<std::string>{
                                    "SYNTHS/Grand.XML", "SAMPLES/TNGB/Grand/K048.wav",
                                    "SAMPLES/TNGB/Grand/K060.wav", "SAMPLES/TNGB/Grand/K072.wav"}));
    std::string output;
    EXPECT_EQ(shell("xmllint --noout " + quoted(card + "/SYNTHS/Grand.XML"), &output), 0) << output;

    const std::string drive = saved.dir.file("drive");
    r = run({"export", saved.path, "--format", "Waldorf Quantum and Iridium (*.map)", "--dest",
             drive, "--folder", "Pianos", "--program-name", "Grand", "--quiet"});
    ASSERT_EQ(r.status, cli::kExitOk) << r.err;
    const std::set<std::string> quantum = filesUnder(drive);
    EXPECT_EQ(quantum.size(), 7u);
    EXPECT_EQ(quantum.count("samples/Pianos/Grand.map"), 1u);
    EXPECT_EQ(quantum.count("samples/Pianos/K-00-048.wav"), 1u);
    EXPECT_EQ(quantum.count("samples/Pianos/K-01-072.wav"), 1u);

    const std::string usb = saved.dir.file("usb");
    const std::vector<std::string> prophet = {
        "export",         saved.path, "--format",   "prophetx", "--dest",           usb,
        "--bank",         "User 1",   "--category", "Keys",     "--program-number", "3",
        "--program-name", "Grand",    "--quiet"};
    r = run(prophet);
    ASSERT_EQ(r.status, cli::kExitOk) << r.err;
    const std::string zip = usb + "/px/User 1/Keys/03. Grand.zip";
    ASSERT_TRUE(fs::exists(zip));
    output.clear();
    EXPECT_EQ(shell("unzip -t " + quoted(zip), &output), 0) << output;
    output.clear();
    ASSERT_EQ(shell("unzip -Z1 " + quoted(zip), &output), 0);
    EXPECT_NE(output.find("03. Grand.grp"), std::string::npos) << output;
    EXPECT_NE(output.find("K-01-060.wav"), std::string::npos) << output;
    // The Prophet-X takes 48 kHz 16-bit: the default word says so.
    const std::string wav = saved.dir.file("px-wav");
    ASSERT_EQ(shell("unzip -q " + quoted(zip) + " -d " + quoted(wav)), 0);
    WaveFormat format;
    int32_t a = 0, b = 0, c = 0, frames = 0;
    std::string message;
    ASSERT_EQ(readWavHeader(wav + "/K-01-060.wav", format, a, b, c, frames, message), 1);
    EXPECT_EQ(format.nSamplesPerSec, 48000u);

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
