// The hosted instrument in real time on the dummy JACK server: "-Vst Plugin-" as a
// Multi-Sample's audio input plays the instrument on the output, and a recording takes it
// from there through the ring buffer, with nothing allocated or locked on the audio thread.
#include "audiofile/WavFile.h"
#include "core/Model.h"
#include "core/Names.h"
#include "devices/AudioEngine.h"
#include "devices/AudioManager.h"
#include "devices/DeviceTables.h"
#include "devices/HostedInstrument.h"
#include "devices/InstrumentHost.h"
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
        host.stop();
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
    InstrumentHost host;
    PeakRecorder peaks;
};

TEST_F(HostedInstrumentOnJack, RecordingTakesTheInstrumentThroughTheRingBuffer)
{
    audioManager.currentMultiSampleChanged(msl);
    ASSERT_TRUE(audioManager.lastMessage().empty()) << audioManager.lastMessage();
    EXPECT_TRUE(audio::pluginInput());
    EXPECT_FALSE(audio::inputOpen()); // no device behind the pseudo input
    ASSERT_TRUE(audio::outputOpen());
    const AudioStreamConfig output = audio::currentOutputConfig();
    EXPECT_EQ(output.sampleRate, 44100);
    EXPECT_EQ(output.channels, 2);

    InstrumentSpec choice;
    std::string msg;
    ASSERT_EQ(parseInstrumentSpec("/usr/share/sounds/sf2/FluidR3_GM.sf2?preset=19", choice, msg),
              1);
    auto organ = openHostedInstrument(choice, output.sampleRate, msg);
    ASSERT_NE(organ, nullptr) << msg;
    ASSERT_EQ(host.start(std::move(organ), output, audio::player(), msg), 1) << msg;

    ASSERT_TRUE(recordWithActions(2.0,
                                  {{0.5,
                                    [this] {
                                        host.sendMidi(0x90, 57, 100); // A3
                                    }},
                                   {1.5, [this] { host.sendMidi(0x80, 57, 0); }}},
                                  msg))
        << msg;
    RecordedTake take = audio::recordBuffer();
    ASSERT_EQ(take.frames, 88200);
    ASSERT_EQ(take.format.channels, 1); // the Multi-Sample's mono format, from a stereo output
    const std::vector<double> mono = firstChannel(*take.data, 1, take.frames);
    EXPECT_LT(peakBetween(mono, 0, 22050 - 2 * kJackPeriod), 2.0) << "silence before the note";
    const int64_t onset = firstFrameAbove(mono, 100.0);
    std::fprintf(stderr, "onset frame %lld (%.4f s)\n", (long long)onset, onset / kRate);
    ASSERT_GT(onset, 0);
    // The note is late by at most the instrument's lead in the ring and a JACK period or two.
    EXPECT_GE(onset, 22050 - kJackPeriod);
    EXPECT_LE(onset, 22050 + 4 * kJackPeriod);
    const double pitch = pitchHz(mono, onset + 4410, onset + 4410 + 16384, kRate, 180.0, 300.0);
    EXPECT_NEAR(pitch, 220.0, 220.0 * 0.005);
    EXPECT_GT(rmsBetween(mono, onset + 4410, onset + 30000), 300.0);
    // No gap: once sounding, the ring never ran dry (a dry ring plays zeros).
    int longestZeroRun = 0;
    for (int64_t i = onset, run = 0; i < onset + 11025; ++i) {
        run = mono[size_t(i)] == 0.0 ? run + 1 : 0;
        longestZeroRun = std::max(longestZeroRun, int(run));
    }
    EXPECT_LT(longestZeroRun, 8);
    EXPECT_GT(peaks.highest(), 0.01f); // the meters see the instrument too

    EXPECT_TRUE(audioThreadMarked());
    EXPECT_EQ(audioThreadAllocations(), 0);
    EXPECT_EQ(audioThreadMutexLocks(), 0);
}

TEST_F(HostedInstrumentOnJack, AnotherInputDeviceLeavesPluginModeAgain)
{
    audioManager.currentMultiSampleChanged(msl);
    EXPECT_TRUE(audio::player().pluginMode());
    std::strcpy(msl.AudioInDevice, kSynthAudioDevice);
    audioManager.multiSampleSettingChanged(msl, "msl_AudioInDevice");
    EXPECT_FALSE(audio::pluginInput());
    EXPECT_FALSE(audio::player().pluginMode());
    EXPECT_TRUE(audio::inputOpen());
}

// The recording run in real time, as the record dialog drives it with its timers: notes go to
// the hosted instrument, takes come from the output through the ring buffer.
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
        const std::vector<double> left =
            firstChannel(data, format.nChannels, int64_t(data.size() / format.nBlockAlign));
        // A note half a second in, late by the instrument's lead and a JACK period or two.
        EXPECT_GE(key.Note_In, 22050 - kJackPeriod) << note;
        EXPECT_LE(key.Note_In, 22050 + 4 * kJackPeriod) << note;
        const double hz =
            pitchNearNote(left, key.Note_In + 4410, key.Note_In + 4410 + 8192, kRate, note);
        EXPECT_NEAR(hz / noteHz(note), 1.0, 0.005) << note << ": " << hz << " Hz";
        EXPECT_GT(rmsBetween(left, key.Note_In + 4410, key.Note_In + 22050), 300.0) << note;
    }
}

} // namespace
} // namespace tg::test
