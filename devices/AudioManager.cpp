// Building stream configurations from a Multi-Sample and applying them to the engine.
#include "devices/AudioManager.h"

#include "devices/AudioEngine.h"
#include "devices/DeviceTables.h"
#include "devices/InputChannelChoice.h"
#include "audiofile/RecordFormats.h"

namespace tg {

namespace {

// How often the GUI thread looks at the playback state: a play cursor moving at 50 Hz.
constexpr int kPlaybackPollMs = 20;

} // namespace

AudioManager::AudioManager(QObject* parent) : QObject(parent)
{
    connect(this, &AudioManager::startPlayback, this, &AudioManager::onPlaybackStarted);
    connect(this, &AudioManager::stopPlayback, this, &AudioManager::onPlaybackStopped);
    connect(this, &AudioManager::frameIndexChanged, this, &AudioManager::onFrameIndexChanged);
    connect(&pollTimer_, &QTimer::timeout, this, &AudioManager::pollPlayback);
    pollTimer_.start(kPlaybackPollMs);
}

AudioStreamConfig AudioManager::buildInputConfig(const TGmsl& msl) const
{
    AudioStreamConfig config{0, -1, -1, 0, 0, 0, -1.0f};
    std::string msg;
    config.device = audio::inputDeviceIndex(msl.AudioInDevice, msg);
    // The names as start-up listed them: asking the driver again costs a JACK client.
    const std::vector<std::string> channelNames =
        choosableInputChannels(deviceTables(), msl.AudioInDevice);
    auto keep = [&](ChannelSide side) {
        const int32_t channel = storedInputChannel(deviceTables(), msl, side);
        return channel >= 0 && size_t(channel) < channelNames.size() ? channel : -1;
    };
    config.channelLeft = keep(ChannelSide::Left);
    config.channelRight = keep(ChannelSide::Right);
    WaveFormat format;
    formatFromName(msl.AudioInFormat, format);
    config.sampleRate = int32_t(format.nSamplesPerSec);
    config.bits = format.wBitsPerSample;
    config.channels = format.nChannels;
    config.latency = -1.0f;
    return config;
}

AudioStreamConfig AudioManager::buildOutputConfig(const AudioStreamConfig& input) const
{
    std::string msg;
    AudioStreamConfig config{
        audio::outputDeviceIndex(outputDeviceName_, msg), -1, -1, 44100, 16, 2, -1.0f};
    if (input.sampleRate != 0) {
        config.sampleRate = input.sampleRate;
        config.bits = input.bits;
    }
    return config;
}

int AudioManager::apply(const TGmsl& msl, std::string& msg)
{
    const AudioStreamConfig input = buildInputConfig(msl);
    const AudioStreamConfig output = buildOutputConfig(input);
    audio::setPluginInput(std::string(msl.AudioInDevice) == kVstPluginEntry);
    if (sameConfig(input, audio::currentInputConfig()) &&
        sameConfig(output, audio::currentOutputConfig()))
        return 1;
    ++openCount_;
    if (!audio::openStreams(input, output, msg))
        return 0;
    return audio::startStreams(msg);
}

void AudioManager::currentMultiSampleChanged(const TGmsl& msl)
{
    lastMessage_.clear();
    apply(msl, lastMessage_);
}

void AudioManager::multiSampleSettingChanged(const TGmsl& msl, const std::string& key)
{
    // Either chosen channel reopens the input: a stereo take keeps both.
    if (key == "msl_AudioInDevice" || key == "msl_AudioInFormat" || key == "msl_AudioInChannelL" ||
        key == "msl_AudioInChannelR")
        currentMultiSampleChanged(msl);
}

void AudioManager::pollPlayback()
{
    const Player& player = audio::player();
    const bool playing = player.isPlaying();
    if (playing && !wasPlaying_)
        emit startPlayback();
    if (playing) {
        const int64_t frame = player.cursorFrame();
        if (frame != lastFrame_) {
            lastFrame_ = frame;
            emit frameIndexChanged(static_cast<unsigned int>(frame));
        }
    }
    if (!playing && wasPlaying_) {
        lastFrame_ = -1;
        emit stopPlayback();
    }
    wasPlaying_ = playing;
}

void AudioManager::onPlaybackStarted()
{
    emit playbackStarted();
}

void AudioManager::onPlaybackStopped()
{
    emit playbackStopped();
}

void AudioManager::onFrameIndexChanged(unsigned int frame)
{
    emit playPositionChanged(frame);
}

} // namespace tg
