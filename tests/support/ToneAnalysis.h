// Measurements on recorded 16-bit audio: where sound starts, its pitch, its level.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tg::test {

// The first channel of interleaved 16-bit frames as doubles.
std::vector<double> firstChannel(const std::vector<uint8_t>& bytes, int channels, int64_t frames);

// First frame whose magnitude exceeds `threshold`, or -1.
int64_t firstFrameAbove(const std::vector<double>& samples, double threshold);

// Largest magnitude in [from, to).
double peakBetween(const std::vector<double>& samples, int64_t from, int64_t to);
// Root mean square over [from, to).
double rmsBetween(const std::vector<double>& samples, int64_t from, int64_t to);

// Fundamental frequency of [from, to) by normalised autocorrelation, searched only between
// `lowHz` and `highHz` (so an octave error cannot win), refined by parabolic interpolation.
double pitchHz(const std::vector<double>& samples, int64_t from, int64_t to, double rate,
               double lowHz, double highHz);

// Equal-tempered frequency of a MIDI note, A4 (69) = 440 Hz.
double noteHz(int note);
// pitchHz searched within a tritone (a factor of 1.4) below and above `note`, so that an
// octave error cannot pass.
double pitchNearNote(const std::vector<double>& samples, int64_t from, int64_t to, double rate,
                     int note);
// Frequency of a steady tone in [from, to) from its first to its last rising zero crossing,
// each placed between its two frames by linear interpolation.
double crossingPitchHz(const std::vector<double>& samples, int64_t from, int64_t to, double rate);

} // namespace tg::test
