// The hosted instrument in real time on the dummy JACK server: "-Vst Plugin-" as a
// Multi-Sample's audio input plays the instrument on the output, and a recording takes it
// from there through the ring buffer, with nothing allocated or locked on the audio thread.
#include "audiofile/WavFile.h"
#include "core/Model.h"
#include "core/Names.h"
#include "devices/AudioEngine.h"
#include "devices/AudioManager.h"
#include "devices/DeviceTables.h"
#include "recording/PluginTakeSource.h"
#include "recording/ProjectSetup.h"
#include "recording/RecordingRun.h"
#include "tests/e2e/AudioThreadChecks.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/support/TempDir.h"
#include "tests/support/ToneAnalysis.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>

namespace tg::test {
namespace {

constexpr double kRate = 44100.0;
constexpr int64_t kJackPeriod = 1024;

class HostedInstrumentOnJack : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::string msg;
        ASSERT_EQ(buildAudioDeviceTables(deviceTables(), msg), 1) << msg;
        std::strcpy(msl.AudioInDevice, kVstPluginEntry);
        std::strcpy(msl.AudioInFormat, "44.1KHz, Mono, 16bit");
        audioManager.setOutputDeviceName("system");
        audio::addLevelListener(&peaks);
    }

    void TearDown() override
    {
        audio::removeLevelListener(&peaks);
        std::string msg;
        audio::closeStreams(msg);
        audio::setPluginInput(false);
        audio::terminate();
    }

    int argc = 1;
    char name[16] = "tg_e2e_devices";
    char* argv[2] = {name, nullptr};
    QCoreApplication app{argc, argv};
    TGmsl msl;
    AudioManager audioManager;
    PeakRecorder peaks;
};

TEST_F(HostedInstrumentOnJack, PluginModeOpensTheOutputOnlyAndAnotherInputLeavesIt)
{
    audioManager.currentMultiSampleChanged(msl);
    ASSERT_TRUE(audioManager.lastMessage().empty()) << audioManager.lastMessage();
    EXPECT_TRUE(audio::pluginInput());
    EXPECT_TRUE(audio::player().pluginMode());
    EXPECT_FALSE(audio::inputOpen()); // no device behind the pseudo input
    ASSERT_TRUE(audio::outputOpen());
    EXPECT_EQ(audio::currentOutputConfig().sampleRate, 44100);
    EXPECT_EQ(audio::currentOutputConfig().channels, 2);

    std::strcpy(msl.AudioInDevice, kSynthAudioDevice);
    audioManager.multiSampleSettingChanged(msl, "msl_AudioInDevice");
    EXPECT_FALSE(audio::pluginInput());
    EXPECT_FALSE(audio::player().pluginMode());
    EXPECT_TRUE(audio::inputOpen());
}

// The recording run in real time, as the record dialog drives it with its timers: notes go to
// the hosted instrument, mono takes come from its stereo output through the ring buffer.
TEST_F(HostedInstrumentOnJack, RecordingRunSamplesTheHostedInstrumentInRealTime)
{
    TempDir dir;
    Model model;
    ProjectSetupRecord setup;
    setup.name = "Live";
    setup.dataPath = dir.path();
    setup.audioInDevice = kVstPluginEntry;
    setup.midiOutDevice = kVstPluginEntry;
    setup.pluginRecording = true;
    setup.keyCount = 37; // 48..84
    setup.keyStep = 18;  // 48, 66, 84
    setup.noteLength = 0.6;
    setup.releaseLength = 0.2f;
    setup.sampleFormat = "44.1KHz, Mono, 16bit";
    ASSERT_TRUE(createProjectFromSetup(model, setup).ok());
    Project& project = *model.currentProject();
    project.msl[0].recordsettings.recpause = 0.2;

    InstrumentSpec choice;
    std::string msg;
    ASSERT_EQ(parseInstrumentSpec("/usr/share/sounds/sf2/FluidR3_GM.sf2?preset=19", choice, msg),
              1);
    PluginTakeSource source(audioManager, choice);
    SteadyRunClock clock;
    RunObserver observer;
    RunOptions options;
    options.command = kRecordSelectedMultiSample;
    options.recordOnlyEmptyKeys = false;
    options.audioOutputDevice = "system";
    RecordingRun run(model, options, source, clock, observer);
    ASSERT_TRUE(run.open().ok());
    run.start();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!run.finished() && std::chrono::steady_clock::now() < deadline) {
        const int64_t next = run.nextDueMs();
        ASSERT_GE(next, 0);
        const int64_t wait = std::min<int64_t>(std::max<int64_t>(next - clock.nowMs(), 0), 20);
        std::this_thread::sleep_for(std::chrono::milliseconds(wait));
        run.service();
    }
    ASSERT_TRUE(run.finished());
    ASSERT_FALSE(run.failed());
    EXPECT_EQ(run.keysDone(), 3);

    for (int note : {48, 66, 84}) {
        const TGmsl_key& key = project.msl[0].keys[note];
        EXPECT_EQ(key.hasAudio, 1) << note;
        WaveFormat format;
        std::vector<uint8_t> data;
        ASSERT_EQ(readWav(keySampleFileName(project, project.msl[0], note), format, data, msg), 1)
            << msg;
        ASSERT_EQ(format.nChannels, 1);
        const std::vector<double> mono = firstChannel(data, 1, int64_t(data.size() / 2));
        // A note half a second in, late by the instrument's lead and a JACK period or two.
        EXPECT_GE(key.Note_In, 22050 - kJackPeriod) << note;
        EXPECT_LE(key.Note_In, 22050 + 4 * kJackPeriod) << note;
        const double hz =
            pitchNearNote(mono, key.Note_In + 4410, key.Note_In + 4410 + 8192, kRate, note);
        EXPECT_NEAR(hz / noteHz(note), 1.0, 0.005) << note << ": " << hz << " Hz";
        EXPECT_GT(rmsBetween(mono, key.Note_In + 4410, key.Note_In + 22050), 300.0) << note;
        // No gap: once sounding, the ring never ran dry (a dry ring plays zeros).
        int64_t longestZeroRun = 0;
        for (int64_t i = key.Note_In, run = 0; i < key.Note_In + 11025; ++i) {
            run = mono[size_t(i)] == 0.0 ? run + 1 : 0;
            longestZeroRun = std::max(longestZeroRun, run);
        }
        EXPECT_LT(longestZeroRun, 8) << note;
    }
    EXPECT_GT(peaks.highest(), 0.01f); // the meters see the instrument too
    EXPECT_TRUE(audioThreadMarked());
    EXPECT_EQ(audioThreadAllocations(), 0);
    EXPECT_EQ(audioThreadMutexLocks(), 0);
}

} // namespace
} // namespace tg::test
