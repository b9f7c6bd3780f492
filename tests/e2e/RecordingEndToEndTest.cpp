// The recording run against the real chain: `tonegrabber-cli new` then `record` samples the
// synth key by key; a killed run leaves its finished takes and a project that loads; start-up
// builds the device tables from the real ports.
#include "analysis/LoopSpeed.h"
#include "audiofile/WavFile.h"
#include "core/InitLog.h"
#include "core/Model.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "devices/AudioEngine.h"
#include "devices/DeviceTables.h"
#include "devices/MidiPorts.h"
#include "recording/StartupWiring.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/e2e/ToneAnalysis.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

extern char** environ;

namespace tg::test {
namespace {

constexpr int kRate = 44100;
const std::vector<int> kKeys = {48, 60, 72, 84}; // 37 keys from C3, every 12th

// Runs the CLI with `args`, stderr to `logFile` (and stdout to `outFile`, or nowhere);
// returns the child's id (or -1).
pid_t startCli(const std::vector<std::string>& args, const std::string& logFile,
               const std::string& outFile = "/dev/null")
{
    std::vector<std::string> all = {TG_CLI_PATH};
    all.insert(all.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& a : all)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 2, logFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    posix_spawn_file_actions_addopen(&actions, 1, outFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
    pid_t pid = -1;
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) != 0)
        pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

int waitCli(pid_t pid)
{
    int status = 0;
    if (waitpid(pid, &status, 0) != pid)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int runCli(const std::vector<std::string>& args, const std::string& logFile,
           const std::string& outFile = "/dev/null")
{
    const pid_t pid = startCli(args, logFile, outFile);
    return pid < 0 ? -1 : waitCli(pid);
}

std::string fileText(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// A Project as the wizard makes it for the synth: two velocity layers, 37 keys, step 12,
// note 1.5 s, release 0.5 s, auto-loop intermediate, a square lead (program 80), and a short
// pause between notes so the test stays short.
class RecordOnTheSynth : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::filesystem::create_directories(dataPath());
        ASSERT_EQ(runCli({"new",
                          project(),
                          "--data-path",
                          dataPath(),
                          "--audio-in",
                          kSynthAudioDevice,
                          "--midi-out",
                          kSynthMidiPort,
                          "--format",
                          "44.1KHz, Stereo, 16bit",
                          "--program",
                          "80",
                          "--layers",
                          std::to_string(layers),
                          "--keys",
                          "37",
                          "--step",
                          "12",
                          "--note-length",
                          "1.5",
                          "--release-length",
                          "0.5",
                          "--autoloop",
                          "intermediate"},
                         log()),
                  0)
            << fileText(log());
        for (int m = 0; m < layers; ++m)
            ASSERT_EQ(runCli({"set", project(), "--multisample", std::to_string(m),
                              "msl_recordsettings_recpause=0.5"},
                             log()),
                      0)
                << fileText(log());
    }

    // Loads the project file as the program does (hasAudio from the files on disk).
    bool load(Model& model)
    {
        ProjectLoadOptions options;
        ProjectLoadOutcome outcome;
        std::string message;
        const int ok =
            loadProjects(model, folder.path(), {"Synth.TGprj"}, options, outcome, message);
        EXPECT_EQ(ok, 1) << message;
        return ok == 1;
    }

    std::string project() const { return folder.file("Synth.TGprj"); }
    std::string dataPath() const { return folder.file("data"); }
    std::string log() const { return folder.file("cli.log"); }

    int layers = 2;
    TempDir folder;
};

// Records `seconds` of the synth's first channel through the device layer, with `actions`
// at their times. Empty when the chain cannot be opened.
std::vector<double> recordSynth(double seconds, std::vector<TimedAction> actions)
{
    std::string msg;
    std::vector<double> left;
    if (!audio::initialize(msg))
        return left;
    const int32_t device = audio::inputDeviceIndex(kSynthAudioDevice, msg);
    const AudioStreamConfig input{device, -1, -1, kRate, 16, 2, -1.0f};
    const AudioStreamConfig noOutput{-1, -1, -1, kRate, 16, 2, -1.0f};
    if (device >= 0 && openMidiOutByName(kSynthMidiPort, msg) &&
        audio::openStreams(input, noOutput, msg) && audio::startStreams(msg) &&
        recordWithActions(seconds, std::move(actions), msg)) {
        RecordedTake take = audio::recordBuffer();
        left = firstChannel(*take.data, 2, take.frames);
    }
    audio::closeStreams(msg);
    audio::terminate();
    midi::destroyMidi();
    return left;
}

// The input latency of the chain as a recording sees it: a calibration take with middle C
// sent half a second in; seconds from then to the onset. The note lands on a period
// boundary, which may lie just before the half second.
double measureInputLatency()
{
    const std::vector<double> left = recordSynth(1.0, {{0.0,
                                                        [] {
                                                            sendBytes({0xC0, 80});
                                                        }},
                                                       {0.5,
                                                        [] {
                                                            sendBytes({0x90, 60, 127});
                                                        }},
                                                       {0.9, [] {
                                                            sendBytes({0x80, 60, 0});
                                                        }}});
    const int64_t onset = firstFrameAbove(left, 8.0);
    return onset > 0 ? double(onset) / kRate - 0.5 : std::nan("");
}

TEST_F(RecordOnTheSynth, CliRecordsEverySelectedKeyOfBothLayers)
{
    const std::string out = folder.file("takes.json");
    ASSERT_EQ(runCli({"record", project(), "--verbose", "--json"}, log(), out), 0)
        << fileText(log());
    const std::string text = fileText(log());
    // Every kept take came whole: all the frames the server's clock let pass.
    const nlohmann::json takes = nlohmann::json::parse(fileText(out))["takes"];
    int kept = 0;
    for (const nlohmann::json& take : takes) {
        if (!take["kept"].get<bool>())
            continue;
        ++kept;
        EXPECT_EQ(take["frames"], int64_t(kRate * 2.5));
        EXPECT_EQ(take["framesReceived"], take["frames"]);
        EXPECT_EQ(take["framesMissing"], 0);
    }
    EXPECT_EQ(kept, 8) << takes.dump(1);
    EXPECT_NE(text.find("Record selected Project (Automatic Mode) - 8 keys (8 done)"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("\n\nFinished recording.\n\n"), std::string::npos) << text;

    const double latency = measureInputLatency();
    ASSERT_FALSE(std::isnan(latency)) << "the calibration take found no note";
    Model model;
    ASSERT_TRUE(load(model));
    const Project& p = model.project(0);
    ASSERT_EQ(p.mslCount, 2);
    double level[2] = {0.0, 0.0};
    for (int m = 0; m < 2; ++m) {
        const TGmsl& msl = p.msl[m];
        for (int note : kKeys) {
            SCOPED_TRACE(std::string(msl.name) + " key " + std::to_string(note));
            const TGmsl_key& key = msl.keys[note];
            const std::string file = keySampleFileName(p, msl, note);
            WaveFormat format;
            std::vector<uint8_t> data;
            std::string message;
            ASSERT_EQ(readWav(file, format, data, message), 1) << message;
            EXPECT_EQ(format.nSamplesPerSec, 44100u);
            EXPECT_EQ(format.nChannels, 2);
            EXPECT_EQ(format.wBitsPerSample, 16);
            const int64_t frames = int64_t(data.size() / format.nBlockAlign);
            EXPECT_EQ(frames, int64_t(kRate * 2.5)); // 1.5 s + 0.5 s + 0.5 s
            EXPECT_EQ(key.hasAudio, 1);

            const double noteIn = double(key.Note_In) / kRate;
            std::fprintf(stderr, "%s key %d: Note_In %d (%.4f s), latency %.4f s\n", msl.name, note,
                         key.Note_In, noteIn, latency);
            EXPECT_NEAR(noteIn, 0.5 + latency, 0.030);
            // Note_Out = Release_In: the measured note length less the latency setting.
            EXPECT_NEAR(double(key.Note_Out - key.Note_In) / kRate,
                        1.5 - msl.recordsettings.latency * 0.001, 0.030);
            EXPECT_EQ(key.Release_In, key.Note_Out);
            EXPECT_GT(key.Release_Out, key.Release_In);
            EXPECT_LT(key.Release_Out, frames);

            EXPECT_EQ(key.loopMode, 1);
            EXPECT_GT(key.Loop_In, key.Note_In);
            EXPECT_GT(key.Loop_Out, key.Loop_In + key.LoopSearch_Len);
            EXPECT_GE(key.Loop_Out, key.LoopSearch_In);
            EXPECT_LE(key.Loop_Out, key.Note_Out);
            EXPECT_GT(key.xfadeLen, 0);

            const std::vector<double> left = firstChannel(data, 2, frames);
            level[m] += rmsBetween(left, key.Note_In + kRate / 10, key.Note_Out - kRate / 10);
        }
    }
    std::fprintf(stderr, "mean level: velocity 63 %.1f, velocity 127 %.1f\n", level[0] / 4,
                 level[1] / 4);
    EXPECT_GT(level[0], 4 * 100.0);
    EXPECT_GT(level[1], level[0] * 1.5); // the louder layer is clearly louder
}

TEST_F(RecordOnTheSynth, KilledRunLeavesALoadableProjectAndItsFinishedTakes)
{
    const pid_t pid = startCli({"record", project()}, log());
    ASSERT_GT(pid, 0);
    Model before;
    ASSERT_TRUE(load(before));
    const Project& p = before.project(0);
    // Kill it while the third take (the first layer's key 72) is being recorded: the second
    // one is on disk by then.
    const std::string second = keySampleFileName(p, p.msl[0], 60);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!std::filesystem::exists(second) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ASSERT_TRUE(std::filesystem::exists(second)) << fileText(log());
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    kill(pid, SIGKILL);
    EXPECT_EQ(waitCli(pid), 128 + SIGKILL);

    Model after;
    ASSERT_TRUE(load(after));
    const TGmsl& msl = after.project(0).msl[0];
    for (int note : {48, 60}) {
        SCOPED_TRACE(note);
        const TGmsl_key& key = msl.keys[note];
        EXPECT_EQ(key.hasAudio, 1);
        WaveFormat format;
        std::vector<uint8_t> data;
        std::string message;
        ASSERT_EQ(readWav(keySampleFileName(after.project(0), msl, note), format, data, message), 1)
            << message;
        EXPECT_EQ(int64_t(data.size() / format.nBlockAlign), int64_t(kRate * 2.5));
        // Its markers were saved with it.
        EXPECT_GT(key.Note_In, 0);
        EXPECT_GT(key.Loop_Out, key.Loop_In);
    }
    EXPECT_EQ(msl.keys[72].hasAudio, 0);
    EXPECT_EQ(after.project(0).msl[1].keys[48].hasAudio, 0);
    for (const auto& entry : std::filesystem::directory_iterator(dataPath()))
        EXPECT_NE(entry.path().filename().string()[0], '.') << "temporary file left behind";
}

TEST_F(RecordOnTheSynth, InterruptStopsTheRunAndKeepsTheProject)
{
    const pid_t pid = startCli({"record", project()}, log());
    ASSERT_GT(pid, 0);
    Model before;
    ASSERT_TRUE(load(before));
    const std::string first = keySampleFileName(before.project(0), before.project(0).msl[0], 48);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!std::filesystem::exists(first) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    std::this_thread::sleep_for(std::chrono::milliseconds(1500)); // into the second note
    kill(pid, SIGINT);
    EXPECT_EQ(waitCli(pid), 1);
    EXPECT_NE(fileText(log()).find("Recording stopped."), std::string::npos) << fileText(log());
    // The square lead sustains for as long as its key is held: silence now means the stop
    // sequence reached the synth.
    const std::vector<double> heard = recordSynth(0.5, {});
    ASSERT_FALSE(heard.empty());
    EXPECT_LT(rmsBetween(heard, 0, int64_t(heard.size())), 2.0);

    Model after;
    ASSERT_TRUE(load(after));
    EXPECT_EQ(after.project(0).msl[0].keys[48].hasAudio, 1);
    EXPECT_EQ(after.project(0).msl[0].keys[60].hasAudio, 0);
}

TEST(StartupWithDevices, InitializationBuildsTheTablesFromTheRealPorts)
{
    TempDir home;
    Model model;
    CoreFolders folders;
    folders.programFolder = home.path();
    folders.userDataFolder = home.path();
    std::string message;
    forgetLoopSearchSpeeds();
    ASSERT_EQ(initializeWithDevices(model, folders, message), 1) << message;
    for (double seconds : cachedLoopSearchSpeeds())
        EXPECT_GT(seconds, 0.0) << "start-up measures the loop-search speed";
    const DeviceTables& tables = deviceTables();
    EXPECT_GE(audioInTableIndex(tables, kSynthAudioDevice), 0);
    EXPECT_GE(tableIndex(tables.midiOut, kSynthMidiPort), 0);
    EXPECT_EQ(model.audioInputDeviceCount(), int(tables.audioIn.size()));
    const std::string initLog = fileText(home.file(kInitLogFileName));
    EXPECT_NE(initLog.find(formatText("\r\n\t-found %ld MIDI In Device(s)\r\n\t-found %ld MIDI "
                                      "Out Device(s)",
                                      tables.midiInDevices, tables.midiOutDevices)),
              std::string::npos)
        << initLog;
    audio::terminate();
    midi::destroyMidi();
}

} // namespace
} // namespace tg::test
