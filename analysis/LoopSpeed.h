// This machine's loop-search speed, measured once per program run for the time estimates.
#pragma once

#include "audiofile/WaveFormat.h"

#include <array>
#include <string>

namespace tg {

constexpr int kLoopSpeedFormatCount = 6;

// The measured formats in measuring order, by their recording-format names.
extern const char* const kLoopSpeedFormatNames[kLoopSpeedFormatCount];

// Seconds one test search took per format (order of kLoopSpeedFormatNames); negative
// before it has been measured.
using LoopSpeedTable = std::array<double, kLoopSpeedFormatCount>;

// The cached figure for the bit depth and channel count of `format` (44.1 kHz tests);
// negative when not measured yet or for a format outside the table. Any thread.
double loopSearchSpeed(const WaveFormat& format);

// Runs the test search for all six formats when any cached figure is negative, caches and
// returns the table. Takes a few tenths of a second. Any thread; callers are serialised.
LoopSpeedTable measureLoopSearchSpeeds();

// The table as cached now, without measuring.
LoopSpeedTable cachedLoopSearchSpeeds();

// Forgets the measurement (the next measure call measures again).
void forgetLoopSearchSpeeds();

} // namespace tg
