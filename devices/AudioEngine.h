// The audio device layer: one process-wide engine over PortAudio with device lists, the
// input and output streams, the one-shot recorder, input levels and Key-Sample playback.
#pragma once

#include "audiofile/WaveFormat.h"
#include "devices/AudioStreamConfig.h"
#include "devices/LevelListeners.h"
#include "devices/Player.h"
#include "devices/Recorder.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg::audio {

struct AudioDevice {
    int32_t index = -1; // PortAudio device index
    std::string name;
};

// Thread rules: every function here is for the GUI thread (or the CLI's one thread), except
// isRecording(), which any thread may call. The callbacks run on PortAudio's threads and
// touch only the recorder, the level listeners and the player.

// Initializes PortAudio (its JACK client is named "Tonegrabber"); 0 with PortAudio's error
// text in `msg` on failure. A second call is harmless.
int initialize(std::string& msg);
// Closes the streams and shuts PortAudio down (at exit).
void terminate();
bool isInitialized();

// Every device with at least one input (output) channel, in PortAudio's order. When the
// device count cannot be had the list is empty and `msg` says why.
std::vector<AudioDevice> listInputDevices(std::string& msg);
std::vector<AudioDevice> listOutputDevices(std::string& msg);

// The first input (output) device with exactly this name, or -1 with `msg` filled.
int32_t inputDeviceIndex(const std::string& name, std::string& msg);
int32_t outputDeviceIndex(const std::string& name, std::string& msg);

// The rate a device runs at when nothing else asks (for a JACK port, the server's rate), in
// Hz; 0 when the device is unknown.
int32_t deviceDefaultRate(int32_t deviceIndex);

// The channel names an ASIO device reports; empty for every other device (and wherever
// PortAudio was built without ASIO), or with `msg` filled when the driver fails.
std::vector<std::string> asioChannelNames(int32_t deviceIndex, std::string& msg);

// The names of an input device's channels, for choosing the two a take records: an ASIO
// device's own channel names; a JACK client's output port names; "Channel 1".."Channel N"
// on an ALSA card's own ("hw:") device. Empty for a device with one or two channels (there is
// nothing to choose), and for a device index that does not exist.
std::vector<std::string> inputChannelNames(int32_t deviceIndex, std::string& msg);

// Closes what is open, resets recorder and playback, and opens the streams: one duplex
// stream when both sides use the same device, else one per used side. 0 with PortAudio's
// error text in `msg` (and everything closed) on failure.
int openStreams(const AudioStreamConfig& input, const AudioStreamConfig& output, std::string& msg);
// Starts the input stream, then the output stream; 1 if every open one started.
int startStreams(std::string& msg);
// Stops and closes both streams, empties the plug-in ring buffer, resets playback.
int closeStreams(std::string& msg);

AudioStreamConfig currentInputConfig();
AudioStreamConfig currentOutputConfig();
// True when an input (output) stream, or the duplex stream, is open.
bool inputOpen();
bool outputOpen();
bool isDuplex();
// Frames per buffer the open input (output) side asked PortAudio for.
unsigned long inputFramesPerBuffer();
unsigned long outputFramesPerBuffer();

// Arms a recording of `seconds` in the current input format (buffer allocated here, whole).
// 0 when the buffer cannot be had.
int startRecording(double seconds);
bool isRecording();
void stopRecording();
// The recorded bytes, their format, frame count and health. A take still recording is
// stopped first (stopRecording() returns once the callback is out of the buffer).
RecordedTake recordBuffer();

// Registers an object that receives the input peaks on the audio thread.
bool addLevelListener(LevelListener* listener);
void removeLevelListener(LevelListener* listener);

// The player the output callback plays from.
Player& player();

// "-Vst Plugin-" as the audio input: the output plays the hosted instrument's ring buffer,
// and the recorder and level meters take that same output block (in the output's channels,
// a mono take keeping the mean of both). The input side then opens no device. The output
// must be open for a take to fill, as it is the output callback that feeds the recorder.
void setPluginInput(bool on);
bool pluginInput();

} // namespace tg::audio

namespace tg {

// Plays a Key-Sample on the open output (see Player::playSample). `outputDevice` is the
// output device the caller means; when it is negative or no output stream is open there is
// nothing to play on and the result is 1.
int TGaudio_playSample(int32_t outputDevice, const WaveFormat& format, const uint8_t* data,
                       size_t noteBytes, int32_t loopStart, int32_t loopEnd,
                       const uint8_t* releaseData, size_t releaseBytes, std::string& msg,
                       int64_t startFrame);

} // namespace tg
