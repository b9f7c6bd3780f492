// MIDI port lookup, timed recording and JACK patching for the end-to-end tests.
#include "tests/e2e/SoundChainClient.h"

#include "core/Message.h"
#include "devices/AudioEngine.h"
#include "devices/MidiPorts.h"
#include "tests/e2e/AudioThreadChecks.h"
#include "tests/support/Pcm16.h"
#include "tests/support/ToneAnalysis.h"

#include <gtest/gtest.h>
#include <jack/jack.h>
#include <jack/midiport.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

namespace tg::test {

bool openSynthInput(std::string& msg, float latency)
{
    if (audio::initialize(msg) != 1)
        return false;
    const int32_t device = audio::inputDeviceIndex(kSynthAudioDevice, msg);
    const AudioStreamConfig input{device, -1, -1, 44100, 16, 2, latency};
    const AudioStreamConfig noOutput{-1, -1, -1, 44100, 16, 2, -1.0f};
    return device >= 0 && audio::openStreams(input, noOutput, msg) == 1 &&
           audio::startStreams(msg) == 1;
}

bool openMidiOutByName(const std::string& port, std::string& msg)
{
    if (!midi::midiOutCreated() && !midi::createMidiOut(msg))
        return false;
    const std::vector<std::string> ports = midi::listMidiOutPorts(msg);
    for (size_t i = 0; i < ports.size(); ++i)
        if (ports[i] == port)
            return midi::openMidiOutPort(int(i), msg) == 1;
    setMessage(msg, "MIDI output port %s not found (API %s)", port.c_str(),
               midi::midiOutApiName().c_str());
    return false;
}

void sendBytes(std::initializer_list<uint8_t> bytes)
{
    midi::sendMidiMessage(bytes.begin(), bytes.size());
}

void PeakRecorder::onInputPeak(float first, float second)
{
    markAudioThread();
    const float peak = first > second ? first : second;
    float seen = highest_.load();
    while (peak > seen && !highest_.compare_exchange_weak(seen, peak)) {
    }
}

TimedAction sendAt(double atSeconds, std::vector<uint8_t> bytes)
{
    return {atSeconds, [bytes] { midi::sendMidiMessage(bytes.data(), bytes.size()); }};
}

bool recordWithActions(double seconds, std::vector<TimedAction> actions, std::string& msg)
{
    using Clock = std::chrono::steady_clock;
    if (!audio::startRecording(seconds)) {
        setMessage(msg, "the record buffer could not be allocated");
        return false;
    }
    const Clock::time_point armed = Clock::now();
    for (const TimedAction& timed : actions) {
        std::this_thread::sleep_until(armed + std::chrono::duration_cast<Clock::duration>(
                                                  std::chrono::duration<double>(timed.atSeconds)));
        timed.action();
    }
    const Clock::time_point limit = armed + std::chrono::duration_cast<Clock::duration>(
                                                std::chrono::duration<double>(seconds + 10.0));
    while (audio::isRecording()) {
        if (Clock::now() > limit) {
            audio::stopRecording();
            setMessage(msg, "the recording did not end: is the JACK server running?");
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

JackClientHandle::JackClientHandle(const std::string& name,
                                   const std::function<bool(jack_client_t*)>& setUp, bool activate)
{
    jack_status_t status;
    auto* client = jack_client_open(name.c_str(), JackNoStartServer, &status);
    if (client == nullptr)
        return;
    if (!setUp(client) || (activate && jack_activate(client) != 0)) {
        jack_client_close(client);
        return;
    }
    client_ = client;
}

JackClientHandle::~JackClientHandle()
{
    if (client_ != nullptr)
        jack_client_close(client_);
}

bool JackPatchbay::connect(const std::string& from, const std::string& to)
{
    return jack_connect(client_.get(), from.c_str(), to.c_str()) == 0;
}

bool JackPatchbay::disconnect(const std::string& from, const std::string& to)
{
    return jack_disconnect(client_.get(), from.c_str(), to.c_str()) == 0;
}

namespace {
// The names of a list JACK handed out, which is freed.
std::vector<std::string> takeNames(const char** list)
{
    std::vector<std::string> names;
    for (const char** name = list; name != nullptr && *name != nullptr; ++name)
        names.push_back(*name);
    jack_free(list);
    return names;
}
} // namespace

std::vector<std::string> JackPatchbay::ports(const std::string& pattern)
{
    return takeNames(jack_get_ports(client_.get(), pattern.c_str(), nullptr, 0));
}

std::vector<std::string> JackPatchbay::connections(const std::string& port)
{
    jack_port_t* handle = jack_port_by_name(client_.get(), port.c_str());
    return handle == nullptr ? std::vector<std::string>()
                             : takeNames(jack_port_get_all_connections(client_.get(), handle));
}

bool openPlaybackLoopback(JackPatchbay& patchbay, std::string& msg)
{
    const int32_t device = audio::inputDeviceIndex("system", msg);
    const AudioStreamConfig config{device, -1, -1, 44100, 16, 2, -1.0f};
    if (device < 0 || !audio::openStreams(config, config, msg) || !audio::startStreams(msg))
        return false;
    const std::vector<std::string> inputs = patchbay.ports("^Tonegrabber:in");
    const std::vector<std::string> outputs = patchbay.ports("^Tonegrabber:out");
    if (!patchbay.ok() || inputs.size() != 2 || outputs.size() != 2) {
        setMessage(msg, "the stream's two JACK inputs and outputs were not found");
        return false;
    }
    for (size_t channel = 0; channel < 2; ++channel) {
        for (const std::string& source : patchbay.connections(inputs[channel]))
            patchbay.disconnect(source, inputs[channel]);
        if (!patchbay.connect(outputs[channel], inputs[channel])) {
            setMessage(msg, "%s could not be connected to %s", outputs[channel].c_str(),
                       inputs[channel].c_str());
            return false;
        }
    }
    return true;
}

double takeValue(int64_t frame)
{
    return frame < kTakeNoteFrames ? 1000.0 + double(frame % 100) * 50.0
                                   : -2000.0 - double((frame - kTakeNoteFrames) % 50) * 40.0;
}

double heldTakeValue(int64_t frame)
{
    return frame < kTakeNoteFrames
               ? takeValue(frame)
               : takeValue(kTakeNoteFrames + (frame - kTakeNoteFrames) % kTakeLoopFrames);
}

std::vector<uint8_t> noteAndLoopTake(int32_t leadFrames, int16_t leadValue)
{
    const size_t frames = size_t(leadFrames + kTakeNoteFrames + kTakeLoopFrames);
    return pcm16(frames, 2, [&](size_t frame, int channel) {
        const int64_t at = int64_t(frame) - leadFrames;
        const int16_t left = at < 0 ? leadValue : int16_t(takeValue(at));
        return int16_t(channel == 0 ? left : left / 2);
    });
}

int64_t matchingFrames(const std::vector<double>& heard, int64_t onset,
                       const std::function<double(int64_t)>& expected)
{
    int64_t frame = onset;
    while (frame < int64_t(heard.size()) &&
           std::fabs(heard[size_t(frame)] - expected(frame - onset)) <= kLoopbackTolerance)
        ++frame;
    return frame - onset;
}

std::vector<double> captureFirstChannel(double seconds, std::vector<TimedAction> actions)
{
    std::string msg;
    EXPECT_TRUE(recordWithActions(seconds, std::move(actions), msg)) << msg;
    const RecordedTake take = audio::recordBuffer();
    return firstChannel(*take.data, 2, take.frames);
}

JackCapture::JackCapture(const std::string& name, double seconds)
    : client_(name, [this, seconds](jack_client_t* client) {
          rate_ = int(jack_get_sample_rate(client));
          for (int ch = 0; ch < 2; ++ch) {
              frames_[ch].assign(size_t(seconds * rate_), 0.0f);
              const std::string port = "in_" + std::to_string(ch + 1);
              ports_[ch] = jack_port_register(client, port.c_str(), JACK_DEFAULT_AUDIO_TYPE,
                                              JackPortIsInput, 0);
          }
          return ports_[0] != nullptr && ports_[1] != nullptr &&
                 jack_set_process_callback(client, &JackCapture::process, this) == 0 &&
                 jack_set_xrun_callback(client, &JackCapture::xrun, this) == 0;
      })
{
}

JackToneSource::JackToneSource(const std::string& name, const std::vector<double>& frequencies)
    : client_(name, [&](jack_client_t* client) {
          for (size_t i = 0; i < frequencies.size(); ++i) {
              const std::string port = "out_" + std::to_string(i + 1);
              ports_.push_back(jack_port_register(client, port.c_str(), JACK_DEFAULT_AUDIO_TYPE,
                                                  JackPortIsOutput, 0));
              steps_.push_back(frequencies[i] / jack_get_sample_rate(client));
              phases_.push_back(0.0);
          }
          return std::count(ports_.begin(), ports_.end(), nullptr) == 0 &&
                 jack_set_process_callback(client, &JackToneSource::process, this) == 0;
      })
{
}

int JackToneSource::process(unsigned frames, void* self)
{
    auto* source = static_cast<JackToneSource*>(self);
    for (size_t i = 0; i < source->ports_.size(); ++i) {
        auto* out = static_cast<float*>(jack_port_get_buffer(source->ports_[i], frames));
        double& phase = source->phases_[i];
        const double level = 0.2 * double(i + 1);
        for (unsigned frame = 0; frame < frames; ++frame) {
            out[frame] = float(level * std::sin(2.0 * M_PI * phase));
            phase = std::fmod(phase + source->steps_[i], 1.0);
        }
    }
    return 0;
}

int JackCapture::process(unsigned frames, void* self)
{
    auto* capture = static_cast<JackCapture*>(self);
    if (capture->stopped_.load())
        return 0;
    const size_t at = capture->written_.load();
    const size_t count = std::min<size_t>(frames, capture->frames_[0].size() - at);
    for (int ch = 0; ch < 2; ++ch) {
        const auto* in =
            static_cast<const float*>(jack_port_get_buffer(capture->ports_[ch], frames));
        std::copy(in, in + count, capture->frames_[ch].begin() + std::ptrdiff_t(at));
    }
    capture->written_.store(at + count);
    return 0;
}

std::vector<double> JackCapture::channel(int index)
{
    stopped_.store(true);
    std::vector<double> out(written_.load());
    for (size_t i = 0; i < out.size(); ++i)
        out[i] = double(frames_[index][i]) * 32768.0;
    return out;
}

int JackCapture::xrun(void* self)
{
    auto* capture = static_cast<JackCapture*>(self);
    if (!capture->stopped_.load())
        capture->xruns_.fetch_add(1);
    return 0;
}

void JackCapture::restart()
{
    stopped_.store(true);
    std::this_thread::sleep_for(std::chrono::milliseconds(50)); // a period under way ends
    written_.store(0);
    xruns_.store(0);
    stopped_.store(false);
}

JackMidiKeys::JackMidiKeys(const std::string& name)
    : name_(name), client_(name, [this](jack_client_t* client) {
          port_ = jack_port_register(client, "out", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0);
          return port_ != nullptr &&
                 jack_set_process_callback(client, &JackMidiKeys::process, this) == 0;
      })
{
}

void JackMidiKeys::send(uint8_t status, uint8_t data1, uint8_t data2)
{
    pending_.store((1u << 24) | (uint32_t(status) << 16) | (uint32_t(data1) << 8) | data2);
}

int JackMidiKeys::process(unsigned frames, void* self)
{
    auto* keys = static_cast<JackMidiKeys*>(self);
    void* buffer = jack_port_get_buffer(keys->port_, frames);
    jack_midi_clear_buffer(buffer);
    const uint32_t message = keys->pending_.exchange(0);
    if ((message >> 24) != 0) {
        const jack_midi_data_t bytes[3] = {jack_midi_data_t(message >> 16),
                                           jack_midi_data_t(message >> 8),
                                           jack_midi_data_t(message)};
        jack_midi_event_write(buffer, 0, bytes, 3);
    }
    return 0;
}

StallingClient::StallingClient()
    : client_("tg-e2e-staller", [this](jack_client_t* client) {
          return jack_set_process_callback(client, &StallingClient::process, this) == 0 &&
                 jack_set_xrun_callback(client, &StallingClient::xrun, this) == 0;
      })
{
}

int StallingClient::process(unsigned, void* self)
{
    const int ms = static_cast<StallingClient*>(self)->stallMs_.exchange(0);
    if (ms > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(ms));
    return 0;
}

int StallingClient::xrun(void* self)
{
    static_cast<StallingClient*>(self)->xruns_.fetch_add(1);
    return 0;
}

} // namespace tg::test
