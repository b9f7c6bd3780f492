// What the end-to-end tests need around the engine: the synth's MIDI port, patching JACK
// ports, and a recording of a fixed length with MIDI sent at set times.
#pragma once

#include "devices/LevelListeners.h"

#include <jack/jack.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tg::test {

// The synth's ports as the sound chain script starts it.
constexpr const char* kSynthAudioDevice = "fluidsynth";
constexpr const char* kSynthMidiPort = "fluidsynth:midi_00";

// Initialises the audio engine and opens the synth's audio as the only stream, "44.1KHz,
// Stereo, 16bit" with `latency` seconds (negative: the device's own), and starts it. False
// with `msg` filled.
bool openSynthInput(std::string& msg, float latency = -1.0f);

// Creates the MIDI output and opens the port named `port`; false with `msg` filled.
bool openMidiOutByName(const std::string& port, std::string& msg);

void sendBytes(std::initializer_list<uint8_t> bytes);

// Keeps the highest peak it was given.
class PeakRecorder : public LevelListener {
  public:
    void onInputPeak(float first, float second) override;
    float highest() const { return highest_.load(); }

  private:
    std::atomic<float> highest_{0.0f};
};

// An event of a timed recording: `action` runs `atSeconds` after the recording was armed.
struct TimedAction {
    double atSeconds;
    std::function<void()> action;
};

// Sends `bytes` to the open MIDI output at `atSeconds`.
TimedAction sendAt(double atSeconds, std::vector<uint8_t> bytes);

// Arms a recording of `seconds`, runs the actions at their times, waits for the take to end
// (or fails after a generous limit). False with `msg` filled.
bool recordWithActions(double seconds, std::vector<TimedAction> actions, std::string& msg);

// A JACK client of the test's own on the running server, closed with the object. Declare it
// after everything its callbacks use, so that it is closed before they go.
class JackClientHandle {
  public:
    // Opens client `name`, lets `setUp` register its ports and callbacks, then activates it
    // when asked; null when any step fails.
    JackClientHandle(const std::string& name, const std::function<bool(jack_client_t*)>& setUp,
                     bool activate = true);
    ~JackClientHandle();
    JackClientHandle(const JackClientHandle&) = delete;
    JackClientHandle& operator=(const JackClientHandle&) = delete;
    jack_client_t* get() const { return client_; }

  private:
    jack_client_t* client_ = nullptr;
};

// A JACK client of the test's own that rewires ports of the running server.
class JackPatchbay {
  public:
    bool ok() const { return client_.get() != nullptr; }
    bool connect(const std::string& from, const std::string& to);
    bool disconnect(const std::string& from, const std::string& to);
    // Full names of the ports whose name matches the regular expression.
    std::vector<std::string> ports(const std::string& pattern);
    // Names of the ports connected to `port`.
    std::vector<std::string> connections(const std::string& port);

  private:
    JackClientHandle client_{"tg-e2e-patchbay", [](jack_client_t*) { return true; }, false};
};

// Opens one duplex stream on the server's "system" device (44100 Hz, 16-bit stereo) and feeds
// its output back into its input in place of what fed it, so that the recorder captures
// exactly what the player plays. False with `msg` filled.
bool openPlaybackLoopback(JackPatchbay& patchbay, std::string& msg);

// A take that tells note and loop apart in what the loopback hears: after `leadFrames` of
// `leadValue`, a positive note part of kTakeNoteFrames, then a negative loop part of
// kTakeLoopFrames; stereo 16-bit, the second channel half the first.
constexpr int32_t kTakeNoteFrames = 13230; // 0.3 s
constexpr int32_t kTakeLoopFrames = 4410;  // 0.1 s
// JACK's float round trip (with PortAudio's dither) may move a 16-bit value by a step or two.
constexpr double kLoopbackTolerance = 3.0;
std::vector<uint8_t> noteAndLoopTake(int32_t leadFrames = 0, int16_t leadValue = 0);
// The first channel of that take `frame` frames after the lead; held: the loop repeating.
double takeValue(int64_t frame);
double heldTakeValue(int64_t frame);
// How many frames of `heard` from `onset` on match `expected` within the tolerance.
int64_t matchingFrames(const std::vector<double>& heard, int64_t onset,
                       const std::function<double(int64_t)>& expected);

// Records `seconds` of the open stereo 16-bit input while `actions` run (a gtest failure when
// the take cannot be made); its first channel on the 16-bit scale.
std::vector<double> captureFirstChannel(double seconds, std::vector<TimedAction> actions);

// A JACK client of the test's own with two audio inputs that records everything arriving
// there, from activation until `seconds` are full. Its name is an audio device to PortAudio,
// so a program told to play on it connects its outputs here as its stream starts.
class JackCapture {
  public:
    JackCapture(const std::string& name, double seconds);
    bool ok() const { return client_.get() != nullptr; }
    // Stops recording; what arrived so far, per channel, on the 16-bit scale.
    std::vector<double> channel(int index);
    // Starts recording again from the start of the buffer (connections stay).
    void restart();
    int sampleRate() const { return rate_; }
    // Periods the server missed while recording (what was heard then is not whole).
    int xruns() const { return xruns_.load(); }

  private:
    static int process(unsigned frames, void* self);
    static int xrun(void* self);
    std::atomic<int> xruns_{0};
    jack_port_t* ports_[2] = {nullptr, nullptr};
    std::vector<float> frames_[2];
    std::atomic<size_t> written_{0};
    std::atomic<bool> stopped_{false};
    int rate_ = 0;
    JackClientHandle client_;
};

// A JACK client of the test's own with one MIDI output, "<name>:out", standing for a MIDI
// keyboard: a message handed to send() goes out at the start of the next period.
class JackMidiKeys {
  public:
    explicit JackMidiKeys(const std::string& name);
    bool ok() const { return client_.get() != nullptr; }
    std::string portName() const { return name_ + ":out"; }
    void send(uint8_t status, uint8_t data1, uint8_t data2);

  private:
    static int process(unsigned frames, void* self);
    std::string name_;
    jack_port_t* port_ = nullptr;
    std::atomic<uint32_t> pending_{0}; // bit 24 set: three bytes waiting
    JackClientHandle client_;
};

// A JACK client of the test's own standing for a multi-channel audio interface: output
// ports "<name>:out_1".."out_N", port i playing a steady sine of frequencies[i] at a level
// of its own, 0.2 x (i + 1) of full scale. Made before the audio engine starts, it is a PortAudio
// input device of N channels.
class JackToneSource {
  public:
    JackToneSource(const std::string& name, const std::vector<double>& frequencies);
    bool ok() const { return client_.get() != nullptr; }

  private:
    static int process(unsigned frames, void* self);
    std::vector<jack_port_t*> ports_;
    std::vector<double> steps_;  // phase advance per frame, in cycles
    std::vector<double> phases_; // audio thread only
    JackClientHandle client_;
};

// A JACK client of the test's own whose process callback, once asked, sleeps through a few
// periods: the server misses its deadline and tells every client of the xrun.
class StallingClient {
  public:
    StallingClient();
    bool ok() const { return client_.get() != nullptr; }
    // The next process cycle takes `milliseconds`.
    void stallOnce(int milliseconds) { stallMs_.store(milliseconds); }
    // Xruns the server reported to this client.
    int xruns() const { return xruns_.load(); }

  private:
    static int process(unsigned frames, void* self);
    static int xrun(void* self);
    std::atomic<int> stallMs_{0};
    std::atomic<int> xruns_{0};
    JackClientHandle client_;
};

} // namespace tg::test
