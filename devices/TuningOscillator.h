// The tuning oscillator: a steady sine or square tone on the audio output that a musician
// tunes the sound source against before sampling it.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

enum class TuningWaveform { Sine, Rect };

// The notes offered: the piano's range, A0 to C8, where sound sources are tuned.
constexpr int kTuningLowestNote = 21;
constexpr int kTuningHighestNote = 108;
// The quietest level offered, in dB below full scale.
constexpr int kTuningQuietestDb = -60;

// What the oscillator plays. A sound source is tuned to concert pitch, so the default is A4 at
// 440 Hz, and every other note is equal-tempered from it: the tuning that sample players map
// the recorded keys with. The level is the wave's peak: -12 dB leaves room for a synthesizer
// played alongside it (the square sounds about 3 dB louder than the sine at the same peak).
struct TuningTone {
    TuningWaveform waveform = TuningWaveform::Sine;
    int note = 69;
    int volumeDb = -12;
};

// The equal-tempered frequency of MIDI note `note`, A4 (69) = 440 Hz.
double tuningFrequency(int note);

// One second of the tone, looped from a zero crossing near its start to the loop end the loop
// search finds in its second half, so that the repeats join without a step.
struct TuningWave {
    WaveFormat format = makeWaveFormat(44100, 1, 16);
    std::vector<uint8_t> data; // 88200 bytes
    int32_t loopStart = 0;     // frames
    int32_t loopEnd = 0;       // frames, exclusive: the wrap plays loopStart in its place
};

// Builds the wave of `tone`. Returns 1, or 0 with `msg` for a note or level out of range.
int makeTuningWave(const TuningTone& tone, TuningWave& out, std::string& msg);

// Plays tuning waves through the Key-Sample player: the start of the second once, then its loop
// until stop(). GUI thread (or the CLI's one thread) only.
class TuningOscillator {
  public:
    TuningOscillator() = default;
    TuningOscillator(const TuningOscillator&) = delete;
    TuningOscillator& operator=(const TuningOscillator&) = delete;
    ~TuningOscillator();

    // Stops what plays and plays `tone` on `outputDevice` (a name of the output device list).
    // When no stream of that device is open, one is opened (the open input is kept).
    // Returns 1, or 0 with `msg` when the device or the tone cannot be had.
    int start(const TuningTone& tone, const std::string& outputDevice, std::string& msg);
    // Fades the tone out within one output block.
    void stop();
    // The tone still sounds: nothing else (a Key-Sample played from a key or by MIDI) has
    // taken the player over since start().
    bool isPlaying() const;

  private:
    bool started_ = false;
    uint64_t playerStart_ = 0; // the player's start count of the tone
};

} // namespace tg
