// Loop quality: how audible the jump from the loop end back to the loop start is.
#pragma once

#include "analysis/KeySampleFile.h"
#include "analysis/Renderer.h"
#include "audiofile/WaveFormat.h"
#include "core/Records.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// A seam step counts as a click when it is this many times the loop's median step ...
constexpr double kClickStepRatio = 8.0;
// ... and at least this fraction of the loop's peak (so quiet hiss cannot click).
constexpr double kClickPeakFraction = 0.02;

// The click rule: a sample-to-sample `step` against the loop's `medianStep` and `peak`
// (all in one scale). It is applied to the seam step, the part of the wrap step that the
// audio does not take itself where it first enters the loop: a square wave's own edge at
// the loop start is no click, a frame out of line before the wrap is.
bool isLoopClick(double step, double medianStep, double peak);

// Figures of one loop seam. Sample values are on the 16-bit scale whatever the format.
struct LoopQuality {
    int64_t length = 0;       // frames, loop end + 1 - loop start
    int64_t crossfade = 0;    // frames of the (first) crossfade
    int channel = 0;          // the channel the step figures below are taken from (the worse)
    double wrapStep = 0.0;    // |first loop frame - last loop frame|: the step played at a wrap
    double seamStep = 0.0;    // |wrap step - step into the loop start|: |x(start - 1) - x(end)|
    double medianStep = 0.0;  // median |x(i + 1) - x(i)| inside the loop
    double peak = 0.0;        // largest |x| inside the loop
    double levelStepDb = 0.0; // RMS of up to 100 ms after the loop start against before the wrap
    double seamError = 0.0;   // 0 seamless, 1 unrelated audio, 2 inverted (see measureLoop)
    bool click = false;       // the seam step clicks by isLoopClick in some channel

    // The seam step in median steps, the figure the click rule weighs (0 without steps).
    double stepRatio() const { return medianStep > 0.0 ? seamStep / medianStep : 0.0; }
};

// Measures the loop `loopStart`..`loopEnd` (frames, inclusive) of rendered audio `data`
// (`bytes` in `format`). The seam error compares, over up to 20 ms on either side, what a
// wrap plays with what the audio itself holds: the frames before the wrap against those
// before the loop start, and the frames after the wrap against those after the loop end
// (where the buffer has them); it is the energy of the differences over the energy of both.
// False when the format is not analysable or the loop lies outside the data.
bool measureLoop(const WaveFormat& format, const uint8_t* data, size_t bytes, int64_t loopStart,
                 int64_t loopEnd, LoopQuality& out);

// Renders Key-Sample `key` from its recording (with the audio after the loop, which the
// seam error compares against) and measures its loop. Returns 1; 0 with `message` when the
// key has no loop or cannot be rendered.
int measureKeySampleLoop(const TGmsl_key& key, const WaveFormat& format,
                         const std::vector<uint8_t>& recording, LoopQuality& out,
                         std::string& message);

// The loop of one Key-Sample of a Project.
struct KeyLoopQuality {
    int msl = 0;         // Multi-Sample index
    int note = 0;        // MIDI note of the key
    bool looped = false; // the key has a loop (the figures below are only then measured)
    LoopQuality quality;
};

// Measures the loop of every Key-Sample with audio in `scope` (see keysInScope), in order.
// Returns 1, or 0 with "Error reading data from disk:\n%s" when a recording cannot be read.
int measureLoops(const Project& project, KeyScope scope, int msl, int note,
                 std::vector<KeyLoopQuality>& out, std::string& message);

} // namespace tg
