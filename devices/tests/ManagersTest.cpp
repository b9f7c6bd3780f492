// The two managers' reactions to model notifications and incoming MIDI, with the MIDI
// output captured. The real port, the pseudo output closing it, unchanged audio settings
// keeping the open stream and a Note On from the MIDI input playing its key are exercised end
// to end (ManagersOnTheSynth, KeyPlaybackEndToEnd); a changed format reopening it in
// DeviceModelListener.ModelChangesReachBothManagers.
#include "core/ControllerSettings.h"
#include "core/Model.h"
#include "core/SettingsAccessor.h"
#include "devices/AudioEngine.h"
#include "devices/AudioManager.h"
#include "devices/DeviceModelListener.h"
#include "devices/MidiManager.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <tuple>
#include <vector>

namespace tg {
namespace {

using Bytes = std::vector<int>;

// One application object for the process; the managers need its event loop.
QCoreApplication& application()
{
    static int argc = 1;
    static char name[] = "tg_devices_tests";
    static char* argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    return app;
}

// Runs the event loop until `done` or a generous limit.
template <typename Done> bool processUntil(Done done, int limitMs = 2000)
{
    application();
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < limitMs)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    return done();
}

class MidiManagerTest : public ::testing::Test {
  protected:
    void SetUp() override
    {
        application();
        manager = std::make_unique<MidiManager>();
        manager->setSender([this](const uint8_t* bytes, size_t count) {
            sent.push_back(Bytes(bytes, bytes + count));
        });
        manager->setNotePlayer([this](int note) { played.push_back(note); });
        std::strcpy(msl.MIDIoutDevice, "-No MIDI Out-");
        msl.MIDIoutChannel = 3;
        msl.MIDIoutProgram = 80;
    }

    std::unique_ptr<MidiManager> manager;
    std::vector<Bytes> sent;
    std::vector<int> played;
    TGmsl msl;
};

TEST_F(MidiManagerTest, NewMultiSampleSendsProgramResetAndControllers)
{
    msl.controllerTable[7][0] = 1;
    msl.controllerTable[7][1] = 100;
    msl.parameterTable[56][0] = 1; // controller 120: never in the bulk send
    manager->currentMultiSampleChanged(msl);
    EXPECT_EQ(sent, (std::vector<Bytes>{{0xC3, 80}, {0xB3, 121, 0}, {0xB3, 7, 100}}));

    sent.clear();
    msl.AutoSendReset = 0;
    manager->currentMultiSampleChanged(msl);
    EXPECT_EQ(sent, (std::vector<Bytes>{{0xC3, 80}, {0xB3, 7, 100}}));
}

TEST_F(MidiManagerTest, InactiveProgramIsNeverSent)
{
    msl.MIDIoutProgram_active = 0;
    manager->currentMultiSampleChanged(msl);
    for (const char* key : {"msl_MIDIoutDevice", "msl_MIDIoutChannel", "msl_MIDIoutProgram",
                            "msl_MIDIoutProgram_active"})
        manager->multiSampleSettingChanged(msl, key);
    EXPECT_EQ(sent, (std::vector<Bytes>{{0xB3, 121, 0}})); // the reset, no program change
}

TEST_F(MidiManagerTest, SettingKeysSendOnlyWhatTheyConcern)
{
    manager->multiSampleSettingChanged(msl, "msl_MIDIoutProgram");
    manager->multiSampleSettingChanged(msl, "msl_AudioInFormat");
    manager->resetRequested(msl);
    msl.parameterTable[56][0] = 1;
    msl.parameterTable[56][1] = 0;
    manager->controllerChanged(msl, 120);
    manager->controllerChanged(msl, 5); // not active
    EXPECT_EQ(sent, (std::vector<Bytes>{{0xC3, 80}, {0xB3, 121, 0}, {0xB3, 120, 0}}));
}

TEST_F(MidiManagerTest, NoteOnWithVelocityZeroCancelsLikeANoteOff)
{
    manager->onMidiIn({0x90, 64, 90});
    EXPECT_TRUE(manager->notePending());
    manager->onMidiIn({0x90, 64, 0});
    EXPECT_FALSE(manager->notePending());
    manager->onMidiIn({0x91, 65, 90});
    manager->onMidiIn({0x81, 65, 0});
    EXPECT_FALSE(manager->notePending());
    processUntil([] { return false; }, 50);
    EXPECT_TRUE(played.empty());
}

TEST_F(MidiManagerTest, ControllersAreCapturedOnlyWhenAskedAndBelow64)
{
    bool capturing = false;
    std::vector<Bytes> captured;
    manager->setControllerCapture([&] { return capturing; },
                                  [&](int controller, int value) {
                                      captured.push_back({controller, value});
                                  });
    manager->onMidiIn({0xB0, 7, 99});
    capturing = true;
    manager->onMidiIn({0xB0, 33, 5});
    manager->onMidiIn({0xB0, 64, 127});
    manager->onMidiIn({0xC0, 7});
    EXPECT_EQ(captured, (std::vector<Bytes>{{33, 5}}));
}

TEST_F(MidiManagerTest, ThroughPassesTheInputChannelOnToTheSourceInsteadOfPlayingKeys)
{
    manager->currentMultiSampleChanged(msl); // output channel 4 (3 stored)
    sent.clear();
    manager->setThrough(true, 2);
    manager->onMidiIn({0x91, 60, 100});
    manager->onMidiIn({0xC1, 5});
    manager->onMidiIn({0xB1, 7, 99});
    manager->onMidiIn({0x81, 60, 0});
    manager->onMidiIn({0xF0, 0x7E, 0xF7}); // system messages stay here
    manager->onMidiIn({0xC1});             // cut short: nothing half is sent
    EXPECT_EQ(sent, (std::vector<Bytes>{{0x93, 60, 100}, {0xC3, 5}, {0xB3, 7, 99}, {0x83, 60, 0}}));
    EXPECT_FALSE(manager->notePending());

    // Another channel's notes still play Key-Samples; a new output channel is followed.
    sent.clear();
    manager->onMidiIn({0x90, 62, 100});
    EXPECT_TRUE(manager->notePending());
    // Moving the output or leaving Through lets go of what the keyboard held on the old one.
    msl.MIDIoutChannel = 9;
    sent.clear();
    manager->multiSampleSettingChanged(msl, "msl_MIDIoutChannel");
    EXPECT_EQ(sent, (std::vector<Bytes>{{0xB3, 64, 0}, {0xB3, 123, 0}, {0xC9, 80}}));
    sent.clear();
    manager->onMidiIn({0x91, 64, 1});
    EXPECT_EQ(sent, (std::vector<Bytes>{{0x99, 64, 1}}));

    sent.clear();
    manager->setThrough(false, 2);
    EXPECT_EQ(sent, (std::vector<Bytes>{{0xB9, 64, 0}, {0xB9, 123, 0}}));
    sent.clear();
    manager->onMidiIn({0x91, 64, 1});
    EXPECT_TRUE(sent.empty());
    EXPECT_TRUE(manager->notePending());
}

class AudioManagerTest : public ::testing::Test {
  protected:
    AudioManagerTest()
    {
        std::strcpy(msl.AudioInDevice, "-No Audio In-");
        std::strcpy(msl.AudioInFormat, "44.1KHz, Stereo, 16bit");
    }

    QCoreApplication& app = application();
    AudioManager manager;
    TGmsl msl;
};

TEST_F(AudioManagerTest, OutputFollowsTheInputRateAndBits)
{
    AudioStreamConfig none{-1, -1, -1, 0, 0, 0, -1.0f};
    AudioStreamConfig output = manager.buildOutputConfig(none);
    EXPECT_EQ(std::tie(output.sampleRate, output.bits, output.channels, output.channelLeft,
                       output.latency),
              std::make_tuple(44100, 16, 2, -1, -1.0f));
    output = manager.buildOutputConfig(AudioStreamConfig{3, -1, -1, 96000, 24, 1, -1.0f});
    EXPECT_EQ(std::tie(output.sampleRate, output.bits, output.channels),
              std::make_tuple(96000, 24, 2));
}

TEST_F(AudioManagerTest, InputComesFromTheStoredFormatAndUnknownDevicesAreUnused)
{
    std::strcpy(msl.AudioInFormat, "48KHz, Mono, 24bit");
    msl.audioInChannelL = {5, 5, 5};
    const AudioStreamConfig input = manager.buildInputConfig(msl);
    // No device here has five channel names: the left channel is left to the device.
    EXPECT_EQ(std::tie(input.device, input.sampleRate, input.bits, input.channels,
                       input.channelLeft, input.latency),
              std::make_tuple(-1, 48000, 24, 1, -1, -1.0f));
}

TEST_F(AudioManagerTest, PlaybackStateReachesTheGuiThreadAsSignals)
{
    int started = 0;
    int stopped = 0;
    std::vector<unsigned int> frames;
    QObject::connect(&manager, &AudioManager::playbackStarted, [&] { ++started; });
    QObject::connect(&manager, &AudioManager::playbackStopped, [&] { ++stopped; });
    QObject::connect(&manager, &AudioManager::playPositionChanged,
                     [&](unsigned int frame) { frames.push_back(frame); });
    Player& player = audio::player();
    player.clear();
    PlayItem item;
    item.format = AudioStreamConfig{0, -1, -1, 44100, 16, 1, -1.0f};
    item.data.assign(200, 0);
    ASSERT_EQ(player.addPlayItem(item), 1);
    ASSERT_EQ(player.setPlayPosition(42), 1);
    ASSERT_TRUE(processUntil([&] { return started == 1; }));
    EXPECT_EQ(frames, std::vector<unsigned int>{42});
    player.requestStop();
    ASSERT_TRUE(processUntil([&] { return stopped == 1; }));
    EXPECT_EQ(started, 1);
    player.clear();
}

TEST(DeviceModelListener, ModelChangesReachBothManagers)
{
    application();
    Model model;
    ASSERT_TRUE(model.newProject().ok());
    if (model.currentMultiSample() == nullptr) {
        ASSERT_TRUE(model.addMultiSample().ok());
    }
    AudioManager audioManager;
    MidiManager midiManager;
    std::vector<Bytes> sent;
    midiManager.setSender(
        [&](const uint8_t* bytes, size_t count) { sent.push_back(Bytes(bytes, bytes + count)); });
    DeviceModelListener listener(model, &audioManager, &midiManager);

    bool ok = false;
    setSettingText(model, "msl_AudioInDevice", "-No Audio In-", ok);
    ASSERT_TRUE(ok);
    setSettingText(model, "msl_AudioInFormat", "96KHz, Mono, 16bit", ok);
    ASSERT_TRUE(ok);
    EXPECT_EQ(audio::currentInputConfig().sampleRate, 96000);
    const int opens = audioManager.openCount();

    sent.clear();
    setSettingShort(model, "msl_MIDIoutChannel", 4, ok);
    ASSERT_TRUE(ok);
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(sent.back()[0], 0xC4);

    // One controller edited: that controller alone goes out (39 is the LSB of 7).
    sent.clear();
    ASSERT_TRUE(setControllerEntry(model, 39, {true, 5}));
    EXPECT_EQ(sent, (std::vector<Bytes>{{0xB4, 39, 5}}));

    sent.clear();
    ASSERT_TRUE(model.addMultiSample().ok()); // a new current Multi-Sample: full resend
    EXPECT_GE(sent.size(), 1u);
    setSettingText(model, "prefs_datapath", "/tmp", ok);
    EXPECT_EQ(audioManager.openCount(), opens + 1); // the new Multi-Sample's own format
}

} // namespace
} // namespace tg
