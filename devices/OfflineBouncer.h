// Offline bouncing: one take of a hosted instrument rendered as fast as the CPU allows,
// laid out exactly as a real-time take of the same note would be.
#pragma once

#include "devices/AudioStreamConfig.h"
#include "devices/HostedInstrument.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// What the recording run hands the renderer for one take.
struct BounceNote {
    int32_t note = 60;            // MIDI note, 0..127
    int32_t attackVelocity = 127; // Note On velocity, 1..127
    int32_t releaseVelocity = 0;  // Note Off velocity, 0..127
    int32_t channel = 0;          // MIDI channel, 0..15
    double noteLength = 1.0;      // seconds from Note On to Note Off, >= 0
    double releaseLength = 0.0;   // seconds the take goes on after Note Off, >= 0
    double leadIn = 0.5;          // seconds of the take before Note On, >= 0
};

// Frames of a take: (int)(rate x (leadIn + noteLength + releaseLength)) in float arithmetic,
// the length the recorder arms for the same note.
int64_t bounceFrames(const BounceNote& note, int32_t sampleRate);

// Frame of Note On and of Note Off within the take.
int64_t bounceNoteOnFrame(const BounceNote& note, int32_t sampleRate);
int64_t bounceNoteOffFrame(const BounceNote& note, int32_t sampleRate);

// Renders one take into `take` (WAV byte image in `format`: its rate, channels and bits):
// first every voice of the previous take is silenced and its tail rendered away, then the
// lead-in, Note On, the note length, Note Off with the release velocity, and the release.
// The instrument must run at the format's rate. 0 with `msg` filled on a bad note, format,
// or when memory for the take cannot be had.
int bounceNote(HostedInstrument& instrument, const BounceNote& note,
               const AudioStreamConfig& format, std::vector<uint8_t>& take, std::string& msg);

} // namespace tg
