// Choosing the channels of a multi-channel input: a JACK client with four outputs, each a
// tone of its own, recorded through the device table, the audio manager and the engine.
#include "audiofile/WavFile.h"
#include "devices/AudioEngine.h"
#include "devices/AudioManager.h"
#include "devices/DeviceTables.h"
#include "tests/e2e/AudioThreadChecks.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"
#include "tests/support/ToneAnalysis.h"

#include <QCoreApplication>

#include <nlohmann/json.hpp>

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

// Each channel of interleaved little-endian samples of any width, by their top two bytes.
std::vector<std::vector<double>> channelsOf(const std::vector<uint8_t>& bytes, int bits, int count)
{
    const size_t sampleBytes = size_t(bits / 8), frameBytes = sampleBytes * size_t(count);
    auto channels = std::vector<std::vector<double>>(size_t(count));
    for (size_t at = sampleBytes - 2; at + frameBytes <= bytes.size(); at += sampleBytes)
        channels[(at / sampleBytes) % size_t(count)].push_back(
            int16_t(uint16_t(bytes[at] | bytes[at + 1] << 8)));
    return channels;
}

double pitchNear(const std::vector<double>& samples, double expected)
{
    return pitchHz(samples, 4096, 4096 + 8192, kRate, expected * 0.85, expected * 1.15);
}

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

TEST_F(FourChannelInterface, ChosenChannelFillsTheTakeAndTheMeter)
{
    // Channel 4 alone, in 24 bits (a stereo pair is chosen by the command line's test below).
    std::strcpy(msl.AudioInFormat, "44.1KHz, Mono, 24bit");
    msl.audioInChannelL[size_t(row)] = 3;
    std::string msg;
    ASSERT_EQ(manager.apply(msl, msg), 1) << msg;
    ASSERT_TRUE(recordWithActions(0.5, {}, msg)) << msg;
    const RecordedTake recorded = audio::recordBuffer();
    const auto take = channelsOf(*recorded.data, recorded.format.bits, recorded.format.channels);
    ASSERT_EQ(take.size(), 1u);
    EXPECT_EQ(audio::currentInputConfig().channelLeft, 3);
    EXPECT_EQ(audio::currentInputConfig().bits, 24);
    EXPECT_NEAR(pitchNear(take[0], kTones[3]), kTones[3], kTones[3] * 0.01);
    EXPECT_NEAR(rmsBetween(take[0], 4096, 20000), 0.8 * 32767 / std::sqrt(2.0), 500.0);
    // The meter reads the chosen channel (at 0.8 of full scale), on an audio thread that
    // allocates nothing for the picking.
    EXPECT_NEAR(peaks.highest(), 0.8f, 0.01f);
    EXPECT_TRUE(audioThreadMarked());
    EXPECT_EQ(audioThreadAllocations(), 0);
}

// The same choice through the command line: `devices` names the channels the table found
// for the interface, and a recording
// run with --input-channels takes channels 3 and 4 into its Key-Sample.
TEST_F(FourChannelInterface, CliRecordsTheChannelsItIsGiven)
{
    test::TempDir dir;
    const std::string data = dir.file("data");
    std::filesystem::create_directories(data);
    const std::string project = dir.file("Tones.TGprj");
    auto cli = [&](const std::string& arguments, std::string* output = nullptr) {
        return runCliProcess(arguments, output, dir.file("home"));
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
    // The level check measures the channels it is given: channel i sounds at 0.2 i.
    ASSERT_EQ(cli(std::string("levels --input --device ") + kInterface +
                      " --input-channels 2,3 --seconds 0.6 --json",
                  &output),
              0)
        << output;
    const auto levels = nlohmann::json::parse(output.substr(output.find('{')));
    EXPECT_NEAR(levels["left"].get<double>(), 0.4, 0.01) << output;
    EXPECT_NEAR(levels["right"].get<double>(), 0.6, 0.01) << output;
    EXPECT_EQ(cli("record '" + project + "' --quiet --input-channels 5", &output), 2) << output;
    EXPECT_NE(output.find("has channels 1 to 4"), std::string::npos) << output;
    const int status = cli("record '" + project + "' --quiet --input-channels 3,4", &output);
    // A server that keeps missing its periods (a loaded machine) stops the run, which then
    // says nothing about the channels: such a run is not judged.
    if (status != 0 && output.find("Frames were dropped again") != std::string::npos)
        GTEST_SKIP() << "the JACK server dropped frames in every attempt:\n" << output;
    ASSERT_EQ(status, 0) << output;

    int takes = 0;
    for (const auto& file : std::filesystem::directory_iterator(data)) {
        WaveFormat format;
        std::vector<uint8_t> bytes;
        std::string message;
        ASSERT_EQ(readWav(file.path().string(), format, bytes, message), 1) << message;
        ASSERT_EQ(format.nChannels, 2);
        const auto channels = channelsOf(bytes, format.wBitsPerSample, 2);
        EXPECT_NEAR(pitchNear(channels[0], kTones[2]), kTones[2], kTones[2] * 0.01);
        EXPECT_NEAR(pitchNear(channels[1], kTones[3]), kTones[3], kTones[3] * 0.01);
        ++takes;
    }
    EXPECT_EQ(takes, 1);
}

} // namespace
} // namespace tg::test
