// The two managers against the real chain: AudioManager opens the synth's audio from a
// Multi-Sample's settings, MidiManager opens its MIDI port from the device table and its
// controller sends are heard (or not) in the recording.
#include "devices/AudioEngine.h"
#include "devices/AudioManager.h"
#include "devices/DeviceTables.h"
#include "devices/MidiManager.h"
#include "devices/MidiPorts.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/support/ToneAnalysis.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace tg::test {
namespace {

constexpr double kRate = 44100.0;

class ManagersOnTheSynth : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::string log;
        buildMidiDeviceTables(deviceTables(), log);
        std::string msg;
        ASSERT_EQ(buildAudioDeviceTables(deviceTables(), msg), 1) << msg;
        std::strcpy(msl.AudioInDevice, kSynthAudioDevice);
        std::strcpy(msl.AudioInFormat, "44.1KHz, Stereo, 16bit");
        std::strcpy(msl.MIDIoutDevice, kSynthMidiPort);
        msl.MIDIoutProgram = 80;
        msl.controllerTable[7][0] = 1; // channel volume, sent with the Multi-Sample
        msl.controllerTable[7][1] = 0;
    }

    void TearDown() override
    {
        sendBytes({0xB0, 123, 0});
        std::string msg;
        audio::closeStreams(msg);
        audio::terminate();
        midi::destroyMidi();
    }

    // RMS of the first channel while middle C sounds from 0.2 s to 0.8 s of a 1 s take.
    double heardLevel()
    {
        std::string msg;
        EXPECT_TRUE(
            recordWithActions(1.0, {sendAt(0.2, {0x90, 60, 100}), sendAt(0.8, {0x80, 60, 0})}, msg))
            << msg;
        RecordedTake take = audio::recordBuffer();
        const std::vector<double> left = firstChannel(*take.data, 2, take.frames);
        return rmsBetween(left, int64_t(0.35 * kRate), int64_t(0.75 * kRate));
    }

    int argc = 1;
    char name[16] = "tg_e2e_devices";
    char* argv[2] = {name, nullptr};
    QCoreApplication app{argc, argv};
    TGmsl msl;
};

TEST_F(ManagersOnTheSynth, MultiSampleSettingsOpenTheDevicesAndControllersAreHeard)
{
    std::string unused;
    AudioManager audioManager;
    audioManager.currentMultiSampleChanged(msl);
    ASSERT_TRUE(audioManager.lastMessage().empty()) << audioManager.lastMessage();
    EXPECT_EQ(audioManager.openCount(), 1);
    EXPECT_TRUE(audio::inputOpen());
    EXPECT_EQ(audio::currentInputConfig().device,
              audio::inputDeviceIndex(kSynthAudioDevice, unused));
    EXPECT_EQ(audio::currentInputConfig().sampleRate, 44100);

    MidiManager midiManager;
    midiManager.currentMultiSampleChanged(msl);
    ASSERT_TRUE(midiManager.lastMessage().empty()) << midiManager.lastMessage();
    ASSERT_TRUE(midi::midiOutPortOpen());
    const double muted = heardLevel();

    msl.controllerTable[7][1] = 127;
    midiManager.controllerChanged(msl, 7);
    const double loud = heardLevel();
    std::fprintf(stderr, "volume 0: %.1f, volume 127: %.1f\n", muted, loud);
    EXPECT_GT(loud, 300.0);
    EXPECT_LT(muted, loud * 0.01);

    // Choosing the pseudo output closes the port: notes no longer reach the synth.
    std::strcpy(msl.MIDIoutDevice, kNoMidiOutEntry);
    midiManager.multiSampleSettingChanged(msl, "msl_MIDIoutDevice");
    EXPECT_FALSE(midi::midiOutPortOpen());
    EXPECT_LT(heardLevel(), loud * 0.01);
}

} // namespace
} // namespace tg::test
