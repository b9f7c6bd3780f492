// The PortAudio engine: device queries, stream lifetime and the two audio callbacks.
#include "devices/AudioEngine.h"

#include "core/Message.h"
#include "devices/AlsaMessages.h"
#include "devices/InputChannelMap.h"
#include "devices/JackPorts.h"
#include "devices/PeakLevel.h"

#include <atomic>
#include <cmath>
#include <cstring>
#include <pa_jack.h>
#include <portaudio.h>

#if defined(__has_include)
#if __has_include(<pa_asio.h>)
#include <pa_asio.h>
#define TG_HAVE_PA_ASIO 1
#endif
#endif

namespace tg::audio {

namespace {

struct EngineState {
    bool initialized = false;
    AudioStreamConfig input{0, -1, -1, 0, 0, 0, -1.0f};
    AudioStreamConfig output{0, -1, -1, 0, 0, 0, -1.0f};
    PaStream* inputStream = nullptr;  // the duplex stream when duplex
    PaStream* outputStream = nullptr; // null when duplex
    bool duplex = false;
    unsigned long inputFrames = 0;
    unsigned long outputFrames = 0;
    // The device channels the input stream delivers and the ones a take keeps.
    InputChannelMap inputMap;
    Recorder recorder;
    LevelListenerList listeners;
    Player player;
    // The audio input is the hosted instrument: the output block, which plays the
    // instrument's ring buffer, is also what the recorder and the meters take.
    std::atomic<bool> pluginInput{false};
};

// Bytes of the ring buffer between the hosted instrument and the output: frames enough for
// the render thread's lead and a generous margin for a late wake-up.
constexpr size_t kPluginRingFrames = 16384;

EngineState& engine()
{
    static EngineState state;
    return state;
}

// What PortAudio said about a block: its time on the stream's clock and its xrun flags.
BlockStatus inputStatus(const PaStreamCallbackTimeInfo* time, PaStreamCallbackFlags flags)
{
    BlockStatus status;
    if (time != nullptr) {
        status.timed = true;
        status.time = time->inputBufferAdcTime;
    }
    // Some hosts flag both sides of every xrun; an output underflow is counted by the output
    // side of the stream alone.
    status.inputOverflow = (flags & paInputOverflow) != 0;
    return status;
}

BlockStatus outputStatus(PaStreamCallbackFlags flags)
{
    BlockStatus status;
    status.outputUnderflow = (flags & paOutputUnderflow) != 0;
    return status;
}

// Record side of a callback: meter peaks first, then the take.
void recordSide(EngineState& state, const void* input, unsigned long frames,
                const BlockStatus& status)
{
    const InputChannelMap& map = state.inputMap;
    if (!state.listeners.empty()) {
        float first = 0.0f;
        float second = 0.0f;
        pickedBlockPeaks(input, frames, map.streamChannels, state.input.bits, map.source[0],
                         map.takeChannels >= 2 ? map.source[1] : -1, first, second);
        state.listeners.notify(first, second);
    }
    state.recorder.processBlock(input, frames, map, status);
}

// Playback side: the player writes the WAV byte image; PortAudio's 8-bit format is signed.
void playSide(EngineState& state, void* output, unsigned long frames, const BlockStatus& status)
{
    if (output == nullptr)
        return;
    auto* bytes = static_cast<uint8_t*>(output);
    state.player.renderBlock(bytes, frames, state.output);
    if (state.output.bits == 8) {
        const size_t count = frames * size_t(state.output.channels);
        for (size_t i = 0; i < count; ++i)
            bytes[i] ^= 0x80u;
    }
    if (state.pluginInput.load(std::memory_order_acquire) && state.player.pluginMode()) {
        if (!state.listeners.empty()) {
            float first = 0.0f;
            float second = 0.0f;
            blockPeaks(output, frames, state.output.channels, state.output.bits, first, second);
            state.listeners.notify(first, second);
        }
        // The take is the rendered block itself: a late output loses nothing of it, so
        // only the underflow is counted, not as a hole in the take.
        state.recorder.processBlock(output, frames, state.output.channels, status);
    } else {
        state.recorder.noteOutputStatus(status);
    }
}

int recordCallback(const void* input, void*, unsigned long frames,
                   const PaStreamCallbackTimeInfo* time, PaStreamCallbackFlags flags, void* user)
{
    recordSide(*static_cast<EngineState*>(user), input, frames, inputStatus(time, flags));
    return paContinue;
}

int playCallback(const void*, void* output, unsigned long frames, const PaStreamCallbackTimeInfo*,
                 PaStreamCallbackFlags flags, void* user)
{
    playSide(*static_cast<EngineState*>(user), output, frames, outputStatus(flags));
    return paContinue;
}

int duplexCallback(const void* input, void* output, unsigned long frames,
                   const PaStreamCallbackTimeInfo* time, PaStreamCallbackFlags flags, void* user)
{
    auto& state = *static_cast<EngineState*>(user);
    recordSide(state, input, frames, inputStatus(time, flags));
    playSide(state, output, frames, outputStatus(flags));
    return paContinue;
}

PaSampleFormat sampleFormatFor(int32_t bits)
{
    switch (bits) {
    case 8:
        return paInt8;
    case 16:
        return paInt16;
    case 24:
        return paInt24;
    case 32:
        return paInt32;
    default:
        return paInt16;
    }
}

int deviceListError(std::string& msg, PaError error)
{
    return setMessage(msg,
                      "An error occured while requesting port audio device list.\n"
                      "Error number: %d\n"
                      "Error message: %s\n",
                      int(error), Pa_GetErrorText(error));
}

std::vector<AudioDevice> listDevices(bool wantInput, std::string& msg)
{
    std::vector<AudioDevice> devices;
    const PaDeviceIndex count = Pa_GetDeviceCount();
    if (count < 0) {
        deviceListError(msg, count);
        return devices;
    }
    for (PaDeviceIndex i = 0; i < count; ++i) {
        const PaDeviceInfo* info = Pa_GetDeviceInfo(i);
        if (info == nullptr)
            continue;
        const int channels = wantInput ? info->maxInputChannels : info->maxOutputChannels;
        if (channels > 0)
            devices.push_back({i, info->name != nullptr ? info->name : ""});
    }
    return devices;
}

int32_t deviceIndex(bool wantInput, const std::string& name, std::string& msg)
{
    std::string listMessage;
    for (const AudioDevice& device : listDevices(wantInput, listMessage))
        if (device.name == name)
            return device.index;
    setMessage(msg, "Could not find an audio device with this name.\n");
    return -1;
}

#if TG_HAVE_PA_ASIO
bool isAsioDevice(PaDeviceIndex device)
{
    const PaDeviceInfo* info = Pa_GetDeviceInfo(device);
    const PaHostApiInfo* api = info != nullptr ? Pa_GetHostApiInfo(info->hostApi) : nullptr;
    return api != nullptr && api->type == paASIO;
}

// Channel selectors for an ASIO side: mono takes the chosen left channel; stereo starts
// from channels 0 and 1 and takes each chosen channel the device really has.
bool asioSelectors(const AudioStreamConfig& config, int deviceChannels, int selectors[2])
{
    if (config.channels == 1 && config.channelLeft >= 0) {
        selectors[0] = config.channelLeft;
        return true;
    }
    if (config.channels == 2) {
        selectors[0] = 0;
        selectors[1] = 1;
        if (config.channelLeft >= 0 && config.channelLeft < deviceChannels)
            selectors[0] = config.channelLeft;
        if (config.channelRight >= 0 && config.channelRight < deviceChannels)
            selectors[1] = config.channelRight;
        return true;
    }
    return false;
}
#endif

// Stream parameters of one used side, with its frames per buffer.
struct SideParameters {
    PaStreamParameters stream{};
    unsigned long framesPerBuffer = 0;
    InputChannelMap map; // input side only
#if TG_HAVE_PA_ASIO
    PaAsioStreamInfo asio{};
    int selectors[2] = {0, 1};
#endif
};

bool buildSide(const AudioStreamConfig& config, bool isInput, SideParameters& side)
{
    const PaDeviceInfo* info = Pa_GetDeviceInfo(config.device);
    if (info == nullptr)
        return false;
    side.stream.device = config.device;
    side.stream.channelCount = config.channels;
    const int deviceChannels = isInput ? info->maxInputChannels : info->maxOutputChannels;
    side.map = inputChannelMap(config, deviceChannels);
    side.stream.sampleFormat = sampleFormatFor(config.bits);
    const double defaultLatency =
        isInput ? info->defaultLowInputLatency : info->defaultLowOutputLatency;
    side.stream.suggestedLatency = config.latency < 0.0f ? defaultLatency : config.latency;
    side.stream.hostApiSpecificStreamInfo = nullptr;
#if TG_HAVE_PA_ASIO
    if (isAsioDevice(config.device)) {
        // The driver picks the channels itself: the block arrives in the take's layout.
        side.map = inputChannelMap({config.device, -1, -1, 0, 0, config.channels, 0.0f}, 0);
        if (asioSelectors(config, deviceChannels, side.selectors)) {
            side.asio.size = sizeof(PaAsioStreamInfo);
            side.asio.hostApiType = paASIO;
            side.asio.version = 1;
            side.asio.flags = paAsioUseChannelSelectors;
            side.asio.channelSelectors = side.selectors;
            side.stream.hostApiSpecificStreamInfo = &side.asio;
        }
    }
#endif
    if (isInput)
        side.stream.channelCount = side.map.streamChannels;
    side.framesPerBuffer = framesPerBufferFor(side.stream.suggestedLatency, config.sampleRate);
    return true;
}

void resetPlaybackAndRecording(EngineState& state)
{
    state.recorder.reset();
    state.player.clear();
}

int portAudioError(std::string& msg, PaError error)
{
    return setMessage(msg, "%s", Pa_GetErrorText(error));
}

} // namespace

int initialize(std::string& msg)
{
    EngineState& state = engine();
    if (state.initialized)
        return 1;
    silenceAlsaLibraryMessages();
    PaJack_SetClientName("Tonegrabber");
    const PaError error = Pa_Initialize();
    if (error != paNoError)
        return portAudioError(msg, error);
    state.initialized = true;
    return 1;
}

void terminate()
{
    EngineState& state = engine();
    if (!state.initialized)
        return;
    std::string ignored;
    closeStreams(ignored);
    Pa_Terminate();
    state.initialized = false;
}

bool isInitialized()
{
    return engine().initialized;
}

std::vector<AudioDevice> listInputDevices(std::string& msg)
{
    return listDevices(true, msg);
}

std::vector<AudioDevice> listOutputDevices(std::string& msg)
{
    return listDevices(false, msg);
}

int32_t inputDeviceIndex(const std::string& name, std::string& msg)
{
    return deviceIndex(true, name, msg);
}

int32_t outputDeviceIndex(const std::string& name, std::string& msg)
{
    return deviceIndex(false, name, msg);
}

int32_t deviceDefaultRate(int32_t deviceIndex)
{
    const PaDeviceInfo* info = isInitialized() ? Pa_GetDeviceInfo(deviceIndex) : nullptr;
    return info != nullptr && info->defaultSampleRate > 0.0
               ? int32_t(std::lround(info->defaultSampleRate))
               : 0;
}

std::vector<std::string> asioChannelNames(int32_t deviceIndex, std::string& msg)
{
    std::vector<std::string> names;
    (void)msg;
#if TG_HAVE_PA_ASIO
    if (deviceIndex < 0 || deviceIndex >= Pa_GetDeviceCount() || !isAsioDevice(deviceIndex))
        return names;
    const PaDeviceInfo* info = Pa_GetDeviceInfo(deviceIndex);
    for (int channel = 0; channel < info->maxInputChannels; ++channel) {
        const char* name = nullptr;
        const PaError error = PaAsio_GetInputChannelName(deviceIndex, channel, &name);
        if (error != paNoError) {
            portAudioError(msg, error);
            names.clear();
            return names;
        }
        names.push_back(name != nullptr ? name : "");
    }
#else
    (void)deviceIndex;
#endif
    return names;
}

std::vector<std::string> inputChannelNames(int32_t deviceIndex, std::string& msg)
{
    std::vector<std::string> names;
    if (deviceIndex < 0 || deviceIndex >= Pa_GetDeviceCount())
        return names;
    const PaDeviceInfo* info = Pa_GetDeviceInfo(deviceIndex);
    if (info == nullptr)
        return names;
#if TG_HAVE_PA_ASIO
    if (isAsioDevice(deviceIndex))
        return asioChannelNames(deviceIndex, msg); // the driver names its channels
#else
    (void)msg; // only an ASIO driver can fail to name its channels
#endif
    // A stereo or mono device records its channels as they come.
    if (info->maxInputChannels <= 2)
        return names;
    const PaHostApiInfo* api = Pa_GetHostApiInfo(info->hostApi);
    // ALSA's plug-in devices ("default", "pulse", "pipewire") claim dozens of channels that a
    // sound server fills by upmixing; only a card's own device has real channels to choose.
    if (api != nullptr && api->type == paALSA &&
        (info->name == nullptr || std::strstr(info->name, "(hw:") == nullptr))
        return names;
    if (api != nullptr && api->type == paJACK && info->name != nullptr)
        names = jackOutputPortNames(info->name);
    // The server's ports may have changed since PortAudio counted them: the stream opens the
    // counted channels, so the list always names exactly those.
    names.resize(size_t(info->maxInputChannels));
    for (size_t channel = 0; channel < names.size(); ++channel)
        if (names[channel].empty())
            names[channel] = "Channel " + std::to_string(channel + 1);
    return names;
}

int closeStreams(std::string& msg)
{
    EngineState& state = engine();
    PaError failure = paNoError;
    // Stop first, so that no callback runs while the ring buffer and the list are reset.
    for (PaStream* stream : {state.inputStream, state.outputStream}) {
        if (stream != nullptr && Pa_IsStreamStopped(stream) == 0) {
            const PaError error = Pa_StopStream(stream);
            if (error != paNoError)
                failure = error;
        }
    }
    state.player.setOutputRunning(false);
    state.player.clearPluginRing();
    resetPlaybackAndRecording(state);
    for (PaStream** stream : {&state.inputStream, &state.outputStream}) {
        if (*stream != nullptr) {
            const PaError error = Pa_CloseStream(*stream);
            if (error != paNoError)
                failure = error;
            *stream = nullptr;
        }
    }
    state.duplex = false;
    state.inputFrames = 0;
    state.outputFrames = 0;
    if (failure != paNoError)
        return setMessage(msg,
                          "An error occured while using the portaudio stream\n"
                          "Error number: %d\n"
                          "Error message: %s\n",
                          int(failure), Pa_GetErrorText(failure));
    return 1;
}

int openStreams(const AudioStreamConfig& input, const AudioStreamConfig& output, std::string& msg)
{
    EngineState& state = engine();
    std::string closeMessage;
    closeStreams(closeMessage);
    state.input = input;
    state.output = output;
    if (output.device >= 0)
        state.player.resizePluginRing(kPluginRingFrames * size_t(bytesPerFrame(output)));

    const bool useInput = input.device >= 0;
    const bool useOutput = output.device >= 0;
    SideParameters in;
    SideParameters out;
    if (useInput && !buildSide(input, true, in))
        return portAudioError(msg, paInvalidDevice);
    if (useOutput && !buildSide(output, false, out))
        return portAudioError(msg, paInvalidDevice);
    state.inputMap = in.map;

    PaError error = paNoError;
    if (useInput && useOutput && input.device == output.device) {
        error = Pa_OpenStream(&state.inputStream, &in.stream, &out.stream, input.sampleRate,
                              in.framesPerBuffer, paClipOff, duplexCallback, &state);
        state.duplex = error == paNoError;
        state.inputFrames = state.outputFrames = in.framesPerBuffer;
    } else {
        if (useInput) {
            error = Pa_OpenStream(&state.inputStream, &in.stream, nullptr, input.sampleRate,
                                  in.framesPerBuffer, paNoFlag, recordCallback, &state);
            state.inputFrames = in.framesPerBuffer;
        }
        if (error == paNoError && useOutput) {
            error = Pa_OpenStream(&state.outputStream, nullptr, &out.stream, output.sampleRate,
                                  out.framesPerBuffer, paNoFlag, playCallback, &state);
            state.outputFrames = out.framesPerBuffer;
        }
    }
    if (error != paNoError) {
        portAudioError(msg, error);
        closeStreams(closeMessage);
        return 0;
    }
    return 1;
}

int startStreams(std::string& msg)
{
    EngineState& state = engine();
    if (state.inputStream != nullptr) {
        const PaError error = Pa_StartStream(state.inputStream);
        if (error != paNoError)
            return portAudioError(msg, error);
        if (state.duplex)
            state.player.setOutputRunning(true);
    }
    if (state.outputStream != nullptr) {
        const PaError error = Pa_StartStream(state.outputStream);
        if (error != paNoError)
            return portAudioError(msg, error);
        state.player.setOutputRunning(true);
    }
    return 1;
}

AudioStreamConfig currentInputConfig()
{
    return engine().input;
}

AudioStreamConfig currentOutputConfig()
{
    return engine().output;
}

bool inputOpen()
{
    return engine().inputStream != nullptr && engine().input.device >= 0;
}

bool outputOpen()
{
    const EngineState& state = engine();
    return state.outputStream != nullptr || (state.duplex && state.inputStream != nullptr);
}

bool isDuplex()
{
    return engine().duplex;
}

unsigned long inputFramesPerBuffer()
{
    return engine().inputFrames;
}

unsigned long outputFramesPerBuffer()
{
    return engine().outputFrames;
}

int startRecording(double seconds)
{
    EngineState& state = engine();
    return state.recorder.arm(state.input, seconds);
}

bool isRecording()
{
    return engine().recorder.isRecording();
}

void stopRecording()
{
    engine().recorder.stop();
}

RecordedTake recordBuffer()
{
    return engine().recorder.take();
}

bool addLevelListener(LevelListener* listener)
{
    return engine().listeners.add(listener);
}

void removeLevelListener(LevelListener* listener)
{
    engine().listeners.remove(listener);
}

Player& player()
{
    return engine().player;
}

void setPluginInput(bool on)
{
    EngineState& state = engine();
    state.pluginInput.store(on, std::memory_order_release);
    state.player.setPluginMode(on);
}

bool pluginInput()
{
    return engine().pluginInput.load(std::memory_order_acquire);
}

} // namespace tg::audio

namespace tg {

int TGaudio_playSample(int32_t outputDevice, const WaveFormat& format, const uint8_t* data,
                       size_t noteBytes, int32_t loopStart, int32_t loopEnd,
                       const uint8_t* releaseData, size_t releaseBytes, std::string& msg,
                       int64_t startFrame)
{
    if (outputDevice < 0 || !audio::outputOpen())
        return 1;
    return audio::player().playSample(audio::currentOutputConfig(), format, data, noteBytes,
                                      loopStart, loopEnd, releaseData, releaseBytes, msg,
                                      startFrame);
}

} // namespace tg
