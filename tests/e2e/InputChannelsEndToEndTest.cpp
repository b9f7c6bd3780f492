// Choosing the channels of a multi-channel input: a JACK client with four outputs, each a
// tone of its own, recorded through the device table, the audio manager and the engine.
#include "audiofile/WavFile.h"
#include "devices/AudioEngine.h"
#include "devices/AudioManager.h"
#include "devices/DeviceTables.h"
#include "tests/e2e/AudioThreadChecks.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/e2e/ToneAnalysis.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <string>

namespace tg::test {
namespace {

constexpr double kRate = 44100.0;
constexpr const char* kInterface = "tg-e2e-interface";
// No tone is near a multiple of another, so a wrong channel cannot pass for the right one.
const std::vector<double> kTones = {250.0, 370.0, 530.0, 770.0};

class FourChannelInterface : public ::testing::Test {
  protected:
    void SetUp() override
    {
        // The client must exist before PortAudio lists the devices.
        ASSERT_TRUE(tones.ok()) << "is the JACK server running?";
        std::string msg;
        ASSERT_EQ(buildAudioDeviceTables(deviceTables(), msg), 1) << msg;
        row = audioInTableIndex(deviceTables(), kInterface);
        ASSERT_GE(row, 0);
        std::strcpy(msl.AudioInDevice, kInterface);
        msl.audioInChannelL.assign(deviceTables().audioIn.size(), -1);
        msl.audioInChannelR.assign(deviceTables().audioIn.size(), -1);
        audio::addLevelListener(&peaks);
    }

    void TearDown() override
    {
        std::string msg;
        audio::removeLevelListener(&peaks);
        audio::closeStreams(msg);
        audio::terminate();
    }

    // Applies `format` with the chosen channels, records half a second and gives each
    // channel of the take.
    std::vector<std::vector<double>> record(const char* format, int left, int right)
    {
        std::strcpy(msl.AudioInFormat, format);
        msl.audioInChannelL[size_t(row)] = left;
        msl.audioInChannelR[size_t(row)] = right;
        std::string msg;
        EXPECT_EQ(manager.apply(msl, msg), 1) << msg;
        EXPECT_TRUE(recordWithActions(0.5, {}, msg)) << msg;
        // Each sample's top two bytes, whatever its width.
        const RecordedTake take = audio::recordBuffer();
        const int sampleBytes = take.format.bits / 8;
        const size_t frameBytes = size_t(sampleBytes * take.format.channels);
        std::vector<std::vector<double>> channels(size_t(take.format.channels));
        for (int64_t i = 0; i < take.frames; ++i)
            for (size_t c = 0; c < channels.size(); ++c) {
                const uint8_t* at =
                    take.data->data() + size_t(i) * frameBytes + c * sampleBytes + sampleBytes - 2;
                channels[c].push_back(int16_t(uint16_t(at[0] | at[1] << 8)));
            }
        return channels;
    }

    static double pitchNear(const std::vector<double>& samples, double expected)
    {
        return pitchHz(samples, 4096, 4096 + 8192, kRate, expected * 0.85, expected * 1.15);
    }

    int argc = 1;
    char name[16] = "tg_e2e_devices";
    char* argv[2] = {name, nullptr};
    QCoreApplication app{argc, argv};
    JackToneSource tones{kInterface, kTones};
    AudioManager manager;
    PeakRecorder peaks;
    TGmsl msl;
    int row = -1;
};

TEST_F(FourChannelInterface, ChosenChannelsFillTheTake)
{
    EXPECT_EQ(deviceTables().audioIn[size_t(row)].channels,
              (std::vector<std::string>{"out_1", "out_2", "out_3", "out_4", "Default"}));

    // Channels 3 and 4 as left and right.
    std::vector<std::vector<double>> take = record("44.1KHz, Stereo, 16bit", 2, 3);
    ASSERT_EQ(take.size(), 2u);
    EXPECT_EQ(audio::currentInputConfig().channelLeft, 2);
    EXPECT_EQ(audio::currentInputConfig().channelRight, 3);
    EXPECT_NEAR(pitchNear(take[0], kTones[2]), kTones[2], kTones[2] * 0.01);
    EXPECT_NEAR(pitchNear(take[1], kTones[3]), kTones[3], kTones[3] * 0.01);
    EXPECT_NEAR(rmsBetween(take[1], 4096, 20000), 0.8 * 32767 / std::sqrt(2.0), 500.0);
    // The meter reads the chosen channels (channel 4 at 0.8 of full scale), on an audio
    // thread that allocates nothing for the picking.
    EXPECT_NEAR(peaks.highest(), 0.8f, 0.01f);
    EXPECT_TRUE(audioThreadMarked());
    EXPECT_EQ(audioThreadAllocations(), 0);

    // A mono take of channel 2; a stored channel the device lacks falls back to channel 1.
    take = record("44.1KHz, Mono, 24bit", 1, -1);
    ASSERT_EQ(take.size(), 1u);
    EXPECT_EQ(audio::currentInputConfig().bits, 24);
    EXPECT_NEAR(pitchNear(take[0], kTones[1]), kTones[1], kTones[1] * 0.01);
    take = record("44.1KHz, Stereo, 16bit", 7, -1);
    EXPECT_EQ(audio::currentInputConfig().channelLeft, -1);
    EXPECT_NEAR(pitchNear(take[0], kTones[0]), kTones[0], kTones[0] * 0.01);
    EXPECT_NEAR(pitchNear(take[1], kTones[1]), kTones[1], kTones[1] * 0.01);
}

// The same choice through the command line: `devices` names the channels and a recording
// run with --input-channels takes channels 3 and 4 into its Key-Sample.
TEST_F(FourChannelInterface, CliRecordsTheChannelsItIsGiven)
{
    test::TempDir dir;
    const std::string data = dir.file("data");
    std::filesystem::create_directories(data);
    const std::string project = dir.file("Tones.TGprj");
    auto cli = [&](const std::string& arguments, std::string* output = nullptr) {
        return runCommand("TONEGRABBER_HOME='" + dir.file("home") + "' '" + TG_CLI_PATH + "' " +
                              arguments + " 2>&1",
                          output);
    };
    std::string output;
    ASSERT_EQ(cli("devices", &output), 0) << output;
    EXPECT_NE(output.find("channels of tg-e2e-interface: 1=out_1 2=out_2 3=out_3 4=out_4"),
              std::string::npos)
        << output;
    ASSERT_EQ(cli("new '" + project + "' --data-path '" + data + "' --audio-in " + kInterface +
                      " --midi-out='-No MIDI Out-' --keys 37 --step 37 --note-length 0.6 "
                      "--release-length 0 --autoloop off",
                  &output),
              0)
        << output;
    EXPECT_EQ(cli("record '" + project + "' --quiet --input-channels 5", &output), 2) << output;
    EXPECT_NE(output.find("has channels 1 to 4"), std::string::npos) << output;
    ASSERT_EQ(cli("record '" + project + "' --quiet --input-channels 3,4", &output), 0) << output;

    int takes = 0;
    for (const auto& file : std::filesystem::directory_iterator(data)) {
        WaveFormat format;
        std::vector<uint8_t> bytes;
        std::string message;
        ASSERT_EQ(readWav(file.path().string(), format, bytes, message), 1) << message;
        ASSERT_EQ(format.nChannels, 2);
        const std::vector<uint8_t> right(bytes.begin() + 2, bytes.end());
        const int64_t frames = int64_t(bytes.size() / 4) - 1;
        EXPECT_NEAR(pitchNear(firstChannel(bytes, 2, frames), kTones[2]), kTones[2], 5.3);
        EXPECT_NEAR(pitchNear(firstChannel(right, 2, frames), kTones[3]), kTones[3], 7.7);
        ++takes;
    }
    EXPECT_EQ(takes, 1);
}

} // namespace
} // namespace tg::test
