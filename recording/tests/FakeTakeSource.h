// A take source for the run's unit tests: a fake clock, and a "synth" that turns the MIDI it
// is sent into a tone in the take, so the markers have something real to find.
#pragma once

#include "recording/RecordingRun.h"
#include "recording/RunClock.h"
#include "recording/TakeSource.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg::test {

class FakeClock : public RunClock {
  public:
    int64_t nowMs() const override { return now; }
    int64_t now = 1000;
};

struct SentMessage {
    int64_t atMs; // clock time it was sent
    std::vector<uint8_t> bytes;
};

class FakeTakeSource : public TakeSource {
  public:
    explicit FakeTakeSource(const FakeClock& clock) : clock_(clock) {}

    int prepare(const TGmsl& msl, std::string& message) override;
    WaveFormat inputFormat() const override { return format; }
    int arm(double seconds, std::string& message) override;
    bool isRecording() override;
    void stopRecording() override { stopped_ = true; }
    TakeAudio take() override;
    void sendMidi(const uint8_t* bytes, size_t count) override;

    // Settings of the fake.
    WaveFormat format = makeWaveFormat(44100, 2, 16);
    bool silent = false;     // the synth plays nothing
    int latencyFrames = 441; // how late the synth's sound arrives
    bool failPrepare = false;
    int droppingTakes = 0; // so many takes from now report lost frames, as after an xrun

    // What happened.
    std::vector<SentMessage> sent;    // since the last arm
    std::vector<SentMessage> history; // everything
    std::vector<double> armedSeconds;
    std::vector<int64_t> armedAtMs;
    int prepareCount = 0;

  private:
    const FakeClock& clock_;
    bool stopped_ = false;
    std::vector<uint8_t> buffer_;
};

// Collects what the run shows.
class RecordingObserver : public RunObserver {
  public:
    void log(const std::string& text) override { lines.push_back(text); }
    void progress(const std::string&, int done, int) override { lastDone = done; }
    void message(const std::string& title, const std::string& text) override
    {
        boxes.push_back(title + ": " + text);
    }
    void checkTake(int note) override { checked.push_back(note); }
    void takeRecorded(const TakeReport& report) override { takes.push_back(report); }
    bool logged(const std::string& text) const;

    std::vector<std::string> lines, boxes;
    std::vector<int> checked;
    std::vector<TakeReport> takes;
    int lastDone = -1;
};

// Moves the fake clock from one due timer to the next until the run finishes, stops waiting
// for timers, or `limitMs` of clock time passed.
void runToEnd(RecordingRun& run, FakeClock& clock, int64_t limitMs = 3600 * 1000);
// The same, but only until the clock reaches `untilMs`.
void runUntil(RecordingRun& run, FakeClock& clock, int64_t untilMs);

} // namespace tg::test
