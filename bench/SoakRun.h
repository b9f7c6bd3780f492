// A long automatic recording run on the real sound chain, with the figures that tell whether
// the program keeps real time for its whole length: xruns, dropped frames, how far each note
// lands from the chain's usual latency, and whether memory grows.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tg {

struct SoakOptions {
    double minutes = 30.0;
    std::string folder; // an empty folder for the user data, the project and its takes
    std::string audioDevice = "fluidsynth";
    std::string midiPort = "fluidsynth:midi_00";
};

struct SoakFigures {
    double minutes = 0.0; // recorded for
    int passes = 0;       // runs over the project's keys
    int takesKept = 0;
    int takesRefused = 0; // recorded again for dropped frames
    int runsStopped = 0;  // ended by a key that dropped frames twice
    int inputOverflows = 0;
    int outputUnderflows = 0;
    long long framesMissing = 0;
    double medianLatencyMs = 0.0;    // note-on in the take after the MIDI Note On
    double worstTimingErrorMs = 0.0; // largest distance of a note-on from that median
    double rssAfterFirstPassMb = 0.0;
    double rssAtEndMb = 0.0;
    std::vector<std::string> stopReasons;
    std::string error; // a fault that ended the soak (devices, files)
};

// Records the project's keys over and over for `options.minutes` (the pass under way is
// stopped when the time is up). Needs a QCoreApplication and the sound chain running (JACK
// server in JACK_DEFAULT_SERVER). `progress` gets a line per pass. False with `error` set
// when the soak could not go on.
bool runSoak(const SoakOptions& options, SoakFigures& figures,
             const std::function<void(const std::string&)>& progress);

// The figures as lines for people.
std::string soakReport(const SoakFigures& figures);

} // namespace tg
