// The recording run against the real chain: `tonegrabber-cli new` then `record` samples the
// synth key by key; an interrupted run stops the synth and keeps its project; start-up builds
// the device tables from the real ports.
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
#include "tests/support/ProjectFileAccess.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"
#include "tests/support/ToneAnalysis.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <signal.h>
#include <unistd.h>

namespace tg::test {
namespace {

constexpr int kRate = 44100;
const std::vector<int> kKeys = {48, 60, 72, 84}; // 37 keys from C3, every 12th

// A Project as the wizard makes it for the synth: two velocity layers, 37 keys, step 12,
// note 1.5 s, release 0.5 s, auto-loop intermediate, a square lead (program 80), and a short
// pause between notes so the test stays short.
class RecordOnTheSynth : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::filesystem::create_directories(dataPath());
        std::string output;
        ASSERT_EQ(runCliProcess("new '" + project() + "' --data-path '" + dataPath() +
                                    "' --audio-in " + kSynthAudioDevice + " --midi-out " +
                                    kSynthMidiPort +
                                    " --format '44.1KHz, Stereo, 16bit' --program 80 --layers 2 "
                                    "--keys 37 --step 12 --note-length 1.5 --release-length 0.5 "
                                    "--autoloop intermediate",
                                &output),
                  0)
            << output;
        for (int m = 0; m < 2; ++m)
            ASSERT_EQ(runCliProcess("set '" + project() + "' --multisample " + std::to_string(m) +
                                        " msl_recordsettings_recpause=0.5",
                                    &output),
                      0)
                << output;
    }

    std::string project() const { return folder.file("Synth.TGprj"); }
    std::string dataPath() const { return folder.file("data"); }
    std::string log() const { return folder.file("cli.log"); }

    TempDir folder;
};

// Records `seconds` of the synth's first channel through the device layer, with `actions`
// at their times. Empty when the chain cannot be opened.
std::vector<double> recordSynth(double seconds, std::vector<TimedAction> actions)
{
    std::string msg;
    std::vector<double> left;
    if (openMidiOutByName(kSynthMidiPort, msg) && openSynthInput(msg) &&
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
    const std::vector<double> left = recordSynth(
        1.0, {sendAt(0.0, {0xC0, 80}), sendAt(0.5, {0x90, 60, 127}), sendAt(0.9, {0x80, 60, 0})});
    const int64_t onset = firstFrameAbove(left, 8.0);
    return onset > 0 ? double(onset) / kRate - 0.5 : std::nan("");
}

TEST_F(RecordOnTheSynth, CliRecordsEverySelectedKeyOfBothLayers)
{
    const std::string out = folder.file("takes.json");
    const std::string record =
        "record '" + project() + "' --verbose --json >'" + out + "' 2>'" + log() + "'";
    // A server that keeps missing its periods (a loaded machine) stops the run after four bad
    // takes in a row; such a run is tried once more, and not judged if that stops too.
    int status = runCliProcess(record);
    for (int attempt = 1; status != 0 && attempt <= 2; ++attempt) {
        // With --json the run's final message is in the JSON answer, its progress in the log.
        if ((readFileBytes(out) + readFileBytes(log())).find("Frames were dropped again") ==
            std::string::npos)
            break;
        if (attempt == 2)
            GTEST_SKIP() << "the JACK server dropped frames in every attempt:\n"
                         << readFileBytes(log()) << readFileBytes(out);
        status = runCliProcess(record);
    }
    ASSERT_EQ(status, 0) << readFileBytes(log()) << readFileBytes(out);
    const std::string text = readFileBytes(log());
    // Every kept take came whole: all the frames the server's clock let pass.
    const nlohmann::json takes = nlohmann::json::parse(readFileBytes(out))["takes"];
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
    const std::unique_ptr<Model> model = loadProjectFile(project()); // hasAudio from the files
    ASSERT_EQ(model->projectCount(), 1);
    const Project& p = model->project(0);
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
            // How the markers and the loop follow from the note is TakeMarkersTest's; here
            // that the run set them inside the take.
            EXPECT_LT(key.Release_Out, frames);
            EXPECT_EQ(key.loopMode, 1);

            const std::vector<double> left = firstChannel(data, 2, frames);
            level[m] += rmsBetween(left, key.Note_In + kRate / 10, key.Note_Out - kRate / 10);
        }
    }
    std::fprintf(stderr, "mean level: velocity 63 %.1f, velocity 127 %.1f\n", level[0] / 4,
                 level[1] / 4);
    EXPECT_GT(level[0], 4 * 100.0);
    EXPECT_GT(level[1], level[0] * 1.5); // the louder layer is clearly louder
}

TEST_F(RecordOnTheSynth, InterruptStopsTheRunAndKeepsTheProject)
{
    const pid_t pid = startCliProcess({"record", project()}, "/dev/null", log());
    ASSERT_GT(pid, 0);
    const std::unique_ptr<Model> before = loadProjectFile(project());
    ASSERT_EQ(before->projectCount(), 1);
    const std::string first = keySampleFileName(before->project(0), before->project(0).msl[0], 48);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!std::filesystem::exists(first) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    std::this_thread::sleep_for(std::chrono::milliseconds(1500)); // into the second note
    kill(pid, SIGINT);
    EXPECT_EQ(waitCliProcess(pid), 1);
    EXPECT_NE(readFileBytes(log()).find("Recording stopped."), std::string::npos)
        << readFileBytes(log());
    // The square lead sustains for as long as its key is held: silence now means the stop
    // sequence reached the synth.
    const std::vector<double> heard = recordSynth(0.5, {});
    ASSERT_FALSE(heard.empty());
    EXPECT_LT(rmsBetween(heard, 0, int64_t(heard.size())), 2.0);

    const std::unique_ptr<Model> after = loadProjectFile(project());
    ASSERT_EQ(after->projectCount(), 1);
    EXPECT_EQ(after->project(0).msl[0].keys[48].hasAudio, 1);
    EXPECT_EQ(after->project(0).msl[0].keys[60].hasAudio, 0);
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
    // The tables count the real devices only, without their pseudo entries.
    const DeviceTables& tables = deviceTables();
    EXPECT_GE(tables.midiOutDevices, 1);
    EXPECT_EQ(tables.midiOutDevices, long(tables.midiOut.size()) - 2);
    EXPECT_EQ(tables.midiInDevices, long(tables.midiIn.size()) - 1);
    if (::access("/dev/snd/seq", F_OK) != 0) { // no sequencer here: JACK MIDI took over
        EXPECT_EQ(midi::midiOutApiName(), "jack");
    }
    EXPECT_GE(tableIndex(tables.midiOut, kSynthMidiPort), 0);
    const int synth = audioInTableIndex(tables, kSynthAudioDevice);
    ASSERT_GE(synth, 0);
    EXPECT_EQ(tables.audioIn[size_t(synth)].channels,
              std::vector<std::string>{"Default"}); // no ASIO channel names on JACK
    EXPECT_EQ(model.audioInputDeviceCount(), int(tables.audioIn.size()));
    const std::string initLog = readFileBytes(home.file(kInitLogFileName));
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
