// The tuning oscillator's wave and its playback on the output.
#include "devices/TuningOscillator.h"

#include "analysis/LoopSearch.h"
#include "audiofile/ZeroCrossing.h"
#include "devices/AudioEngine.h"
#include "devices/DeviceTables.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tg {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int kLoopCandidates = 5;

// The correction of a square wave's step where it jumps at phase 0 (polynomial band-limited
// step): without it every edge falls on a whole frame and the harmonics above half the sample
// rate fold back as tones that are not multiples of the pitch, which a tuning reference must
// not have.
double edgeCorrection(double phase, double increment)
{
    if (phase < increment) {
        const double t = phase / increment;
        return t + t - t * t - 1.0;
    }
    if (phase > 1.0 - increment) {
        const double t = (phase - 1.0) / increment;
        return t * t + t + t + 1.0;
    }
    return 0.0;
}

// The waveform at `phase` (cycles, 0..1), between -1 and 1, rising through 0 at phase 0.
double waveValue(TuningWaveform waveform, double phase, double increment)
{
    if (waveform == TuningWaveform::Sine)
        return std::sin(2.0 * kPi * phase);
    const double naive = phase < 0.5 ? 1.0 : -1.0;
    return naive + edgeCorrection(phase, increment) -
           edgeCorrection(std::fmod(phase + 0.5, 1.0), increment);
}

} // namespace

double tuningFrequency(int note)
{
    return 440.0 * std::pow(2.0, (note - 69) / 12.0);
}

int makeTuningWave(const TuningTone& tone, TuningWave& out, std::string& msg)
{
    if (tone.note < kTuningLowestNote || tone.note > kTuningHighestNote) {
        msg = "The tuning note must lie between " + std::to_string(kTuningLowestNote) + " and " +
              std::to_string(kTuningHighestNote) + ".";
        return 0;
    }
    if (tone.volumeDb < kTuningQuietestDb || tone.volumeDb > 0) {
        msg = "The tuning volume must lie between " + std::to_string(kTuningQuietestDb) +
              " and 0 dB.";
        return 0;
    }
    out = TuningWave{};
    const int32_t frames = int32_t(out.format.nSamplesPerSec);
    const double frequency = tuningFrequency(tone.note);
    const double increment = frequency / out.format.nSamplesPerSec;
    const double peak = 32767.0 * std::pow(10.0, tone.volumeDb / 20.0);
    out.data.resize(size_t(frames) * out.format.nBlockAlign);
    for (int32_t i = 0; i < frames; ++i) {
        const double phase = std::fmod(i * increment, 1.0);
        const auto value = int16_t(std::lround(peak * waveValue(tone.waveform, phase, increment)));
        std::memcpy(&out.data[size_t(i) * 2], &value, 2);
    }

    // The second does not hold a whole number of periods of an equal-tempered pitch, so the loop
    // end is searched: the crossing in the second half whose next two periods match those after
    // the loop start best.
    const auto bytes = int32_t(out.data.size());
    out.loopStart =
        findZeroCrossing(&out.format, out.data.data(), bytes, 1, 1, kZeroCrossingEitherChannel);
    const auto window = int32_t(std::ceil(2.0 / increment));
    int32_t candidates[kLoopCandidates];
    out.loopEnd = loopSearch(&out.format, out.data.data(), out.data.size(), out.loopStart,
                             frames / 2, frames, window, candidates, kLoopCandidates, false, true);
    if (out.loopEnd <= out.loopStart) {
        msg = "No loop was found in the tuning wave.";
        return 0;
    }
    return 1;
}

TuningOscillator::~TuningOscillator()
{
    stop();
}

int TuningOscillator::start(const TuningTone& tone, const std::string& outputDevice,
                            std::string& msg)
{
    stop();
    if (outputDevice.empty() || outputDevice == kNoAudioOutEntry) {
        msg = "No audio output is chosen in the preferences.";
        return 0;
    }
    const int32_t device = audio::outputDeviceIndex(outputDevice, msg);
    if (device < 0)
        return 0;
    TuningWave wave;
    if (!makeTuningWave(tone, wave, msg))
        return 0;
    if (!audio::outputOpen() || audio::currentOutputConfig().device != device) {
        AudioStreamConfig input = audio::currentInputConfig();
        if (!audio::inputOpen())
            input.device = -1;
        // An open input sets the rate (the streams run at one rate, one duplex stream when
        // both sides are the same device); else the device's own rate, as a JACK server
        // refuses any other. The player converts the wave to whatever the output runs at.
        const int32_t deviceRate = audio::deviceDefaultRate(device);
        const int32_t rate = input.device >= 0 ? input.sampleRate
                             : deviceRate > 0  ? deviceRate
                                               : 44100;
        const AudioStreamConfig output{device, -1, -1, rate, 16, 2, -1.0f};
        if (!audio::openStreams(input, output, msg) || !audio::startStreams(msg))
            return 0;
    }
    // The hosted instrument's ring buffer gives way to the tone, as to a key played by hand.
    audio::player().setPluginMode(false);
    if (!TGaudio_playSample(device, wave.format, wave.data.data(),
                            size_t(wave.loopEnd) * wave.format.nBlockAlign, wave.loopStart,
                            wave.loopEnd, nullptr, 0, msg, 0))
        return 0;
    started_ = true;
    playerStart_ = audio::player().startCount();
    return 1;
}

void TuningOscillator::stop()
{
    if (isPlaying())
        audio::player().requestStop();
    started_ = false;
}

bool TuningOscillator::isPlaying() const
{
    return started_ && audio::player().isPlaying() && audio::player().startCount() == playerStart_;
}

} // namespace tg
