// The recording run: samples every selected key of the record list, key by key, as a state
// machine over an injected clock and take source, so that the GUI drives it from timers, the
// CLI from a loop, and tests with a fake clock.
#pragma once

#include "recording/RecordList.h"
#include "recording/RunClock.h"
#include "recording/TakeSource.h"

#include <cstdint>
#include <string>

namespace tg {

class Model;

struct RunOptions {
    int command = kRecordSelectedMultiSample;
    bool automatic = true;           // false: semi-automatic, the user starts and stops takes
    bool recordOnlyEmptyKeys = true; // skip keys that already have audio
    bool keepLockedKeys = true;      // skip keys that have audio and are locked
    bool closeAfterRecording = true;
    bool verbose = true;
    int maxRecLength = 20;         // seconds, 0..1000: the armed length in semi-automatic mode
    std::string audioOutputDevice; // the preferences' audio output device
    // The title's text in place of the command's (the project wizard names its run so).
    std::string titleText;
};

// One take as the run judged it: kept (written to `file`) or refused for dropped frames.
struct TakeReport {
    std::string project;
    std::string multiSample;
    int note = -1;
    std::string file;
    int64_t frames = 0;
    TakeHealth health;
    bool kept = false;
};

// What the run shows. Every call comes from the thread that drives the run.
class RunObserver {
  public:
    virtual ~RunObserver() = default;
    virtual void log(const std::string& text) { (void)text; }
    // The window title "%1 - %2 keys (%3 done)" and the progress bar (done of total).
    virtual void progress(const std::string& title, int done, int total)
    {
        (void)title, (void)done, (void)total;
    }
    // Semi-automatic labels: "Countdown: %1", "Next Key: %1", the recorded size and time,
    // and the text of the start/stop button.
    virtual void countdownText(const std::string& text) { (void)text; }
    virtual void nextKeyText(const std::string& text) { (void)text; }
    virtual void sizeText(const std::string& text) { (void)text; }
    virtual void recordingText(const std::string& text) { (void)text; }
    virtual void buttonText(const std::string& text) { (void)text; }
    // A message box: "Error" (critical) or "Info".
    virtual void message(const std::string& title, const std::string& text)
    {
        (void)title, (void)text;
    }
    // Semi-automatic: the take of `note` is waiting for keepTake() or discardTake().
    virtual void checkTake(int note) { (void)note; }
    // Every take, as it was kept or refused.
    virtual void takeRecorded(const TakeReport& report) { (void)report; }
    // The run is over; `close` says whether the dialog closes now.
    virtual void finished(bool close) { (void)close; }
};

// Thread rules: every call, and every call it makes to the take source and the observer,
// happens on the one thread that drives the run (the GUI thread or the CLI's loop). The
// take source's capture runs on the audio thread; the run only polls isRecording().
class RecordingRun {
  public:
    enum class State {
        Idle,    // "Press 'Start'"
        Waiting, // semi-automatic: the next key waits for "Start Countdown"
        Countdown,
        Armed,        // waiting for the Note On, half a second into the take
        NoteSounding, // until the Note Off
        Release,      // polling until the armed length is captured
        Recording,    // semi-automatic: until the user stops or the length is full
        Checking,     // semi-automatic: the check dialog is open
        Finished,
    };

    RecordingRun(Model& model, const RunOptions& options, TakeSource& source, const RunClock& clock,
                 RunObserver& observer);
    RecordingRun(const RecordingRun&) = delete;
    RecordingRun& operator=(const RecordingRun&) = delete;

    // Builds and checks the record list. A refusal is also shown through the observer (with
    // its title) and leaves the run Finished. An empty list (no Multi-Sample) is accepted and
    // the run does nothing.
    Result open();

    // "Start Recording": advances to the first key.
    void start();
    // Semi-automatic "Start Countdown".
    void startCountdown();
    // "Stop Recording" (or Ctrl-C): the stop sequence. A semi-automatic run goes back to
    // waiting for the next countdown, or processes the take when the countdown was over;
    // an automatic run ends.
    void stop();
    // Closing the dialog: stops and ends the run in either mode.
    void close();
    // Semi-automatic check dialog: keep the take (its key gets the first 48 characters of
    // `keyName`) and go on, or record the same key again.
    void keepTake(const std::string& keyName);
    void discardTake();

    // Fires every timer that is due by the clock. The front end calls it from its timer or
    // loop; nextDueMs() says when the next one is due (-1: none is running).
    void service();
    int64_t nextDueMs() const;

    State state() const { return state_; }
    bool finished() const { return state_ == State::Finished; }
    bool failed() const { return failed_; } // ended by an error
    const RecordList& recordList() const { return list_; }
    int currentKey() const { return currentKey_; }
    // The record-list entry of the current key (null before the first key and at the end).
    const RecordEntry* currentEntry() const
    {
        return currentKey_ >= 0 && entry_ < list_.entries.size() ? &list_.entries[entry_] : nullptr;
    }
    int keysDone() const { return done_; }
    int totalKeys() const { return list_.totalKeys; }
    double measuredNoteMs() const { return measuredNoteMs_; }
    // The dialog title: the command's text and the mode.
    std::string title() const;

  private:
    struct Timer {
        bool active = false;
        bool singleShot = false;
        int64_t intervalMs = 0;
        int64_t dueMs = 0;
    };
    enum TimerId {
        kCountdownTimer,
        kMidiOnTimer,
        kMidiOffTimer,
        kRecordingTimer,
        kUpdateTimer,
        kTimerCount
    };

    void startTimer(TimerId id, int64_t intervalMs, bool singleShot);
    void stopTimer(TimerId id) { timers_[id].active = false; }
    void fire(TimerId id);

    void advance();
    void beginKey();
    void startKeyCountdown();
    // A take with dropped frames is not kept: the key is recorded again, a few times at most,
    // then the run stops. False when the take is refused.
    bool acceptTakeHealth(const TakeAudio& take);
    // Tells the observer of the current key's take, kept as the file `keptAs` or refused
    // (empty).
    void reportTake(const TakeAudio& take, const std::string& keptAs);
    void onCountdownTick();
    void recordNote();
    void onMidiOn();
    void onMidiOff();
    void onRecordingTick();
    void onUpdateTick();
    void processTake();
    void endOfRun();
    void fail(const std::string& message);
    void sendChannelMessage(uint8_t status, int data1, int data2);
    void sendStopMessages();
    void verbose(const std::string& text);
    void showNextKey();

    Model& model_;
    RunOptions options_;
    TakeSource& source_;
    const RunClock& clock_;
    RunObserver& observer_;
    RecordList list_;

    State state_ = State::Idle;
    bool failed_ = false;
    size_t entry_ = 0;    // current record-list entry
    int currentKey_ = -1; // MIDI note, -1 before the first
    int done_ = 0;
    // How often one key is recorded again after takes that dropped frames.
    static constexpr int kRetakesForDroppedFrames = 3;
    int retries_ = 0;                // takes of the current key refused for dropped frames
    int preparedEntry_ = -1;         // entry the devices were last prepared for
    const TGmsl* lastMsl_ = nullptr; // Multi-Sample whose channel the stop messages go to
    double countdown_ = 0.0;         // seconds
    int secondsToAnnounce_ = 0;
    double noteLength_ = 0.0;    // seconds
    double releaseLength_ = 0.0; // seconds
    double measuredNoteMs_ = 0.0;
    int64_t countdownStartMs_ = 0;
    int64_t noteStartMs_ = 0;
    int64_t armedAtMs_ = 0;
    int64_t armedMs_ = 0;
    Timer timers_[kTimerCount];
};

} // namespace tg
