// The engine's messages before PortAudio is up, and streams with no side in use.
#include "devices/AudioEngine.h"

#include <gtest/gtest.h>

namespace tg {
namespace {

TEST(AudioEngine, DeviceQueriesBeforeInitializationSayWhy)
{
    ASSERT_FALSE(audio::isInitialized());
    std::string msg;
    EXPECT_TRUE(audio::listInputDevices(msg).empty());
    EXPECT_EQ(msg.rfind("An error occured while requesting port audio device list.\n"
                        "Error number: -10000\n"
                        "Error message: ",
                        0),
              0u)
        << msg;
    EXPECT_EQ(msg.back(), '\n');
    msg.clear();
    EXPECT_EQ(audio::inputDeviceIndex("fluidsynth", msg), -1);
    EXPECT_EQ(msg, "Could not find an audio device with this name.\n");
    msg.clear();
    EXPECT_EQ(audio::outputDeviceIndex("", msg), -1);
    EXPECT_EQ(msg, "Could not find an audio device with this name.\n");
    EXPECT_TRUE(audio::inputChannelNames(0, msg).empty());
    EXPECT_TRUE(audio::asioChannelNames(0, msg).empty()); // no ASIO on this host
}

TEST(AudioEngine, UnusedSidesOpenNothingAndBadDevicesFail)
{
    std::string msg;
    const AudioStreamConfig unused{-1, -1, -1, 44100, 16, 2, -1.0f};
    ASSERT_EQ(audio::openStreams(unused, unused, msg), 1) << msg;
    EXPECT_FALSE(audio::inputOpen());
    EXPECT_FALSE(audio::outputOpen());
    EXPECT_EQ(audio::startStreams(msg), 1);
    EXPECT_EQ(audio::currentInputConfig().device, -1);

    const AudioStreamConfig missing{999, -1, -1, 44100, 16, 2, -1.0f};
    EXPECT_EQ(audio::openStreams(missing, unused, msg), 0);
    EXPECT_FALSE(msg.empty());
    EXPECT_FALSE(audio::inputOpen());
    EXPECT_EQ(audio::closeStreams(msg), 1);
}

TEST(AudioEngine, ArmingAllocatesTheWholeTakeUpFront)
{
    std::string msg;
    const AudioStreamConfig input{-1, -1, -1, 48000, 24, 2, -1.0f};
    const AudioStreamConfig unused{-1, -1, -1, 44100, 16, 2, -1.0f};
    ASSERT_EQ(audio::openStreams(input, unused, msg), 1);
    ASSERT_EQ(audio::startRecording(0.5), 1);
    EXPECT_TRUE(audio::isRecording());
    EXPECT_EQ(audio::recordBuffer().data->size(), 24000u * 6);
    audio::stopRecording();
    EXPECT_FALSE(audio::isRecording());
    EXPECT_EQ(audio::recordBuffer().frames, 0);
    EXPECT_EQ(audio::closeStreams(msg), 1);
    EXPECT_FALSE(audio::isRecording()); // closing resets the recorder
}

} // namespace
} // namespace tg
