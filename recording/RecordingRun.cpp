// The recording run's state machine.
#include "recording/RecordingRun.h"

#include "audiofile/WavFile.h"
#include "core/Model.h"
#include "core/Names.h"
#include "core/NoteNames.h"
#include "core/ProjectFile.h"
#include "audiofile/RecordFormats.h"
#include "recording/LowPriorityWork.h"
#include "recording/TakeFile.h"
#include "recording/TakeMarkers.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tg {

namespace {

constexpr int64_t kCountdownTickMs = 50;
constexpr int64_t kNoteOnDelayMs = 500;
constexpr int64_t kRecordingPollMs = 500;
constexpr int64_t kUpdateTickMs = 50;
constexpr double kNoteLeadIn = 0.5;        // seconds of the take before the Note On
constexpr int64_t kStalledInputMs = 10000; // grace after the armed length

// Numbers in the log read as the user typed them: 3.5, 2, 0.25.
std::string number(double value)
{
    return formatText("%g", value);
}

// The take's health line of the log.
std::string healthText(int note, const TakeHealth& health)
{
    return formatText("NOTE %d (%s): %lld of %lld frames received, %lld missing, %d input "
                      "overflow(s), %d output underflow(s)",
                      note, noteName(note).c_str(), (long long)health.framesReceived,
                      (long long)health.framesExpected, (long long)health.framesMissing(),
                      health.inputOverflows, health.outputUnderflows);
}

} // namespace

RecordingRun::RecordingRun(Model& model, const RunOptions& options, TakeSource& source,
                           const RunClock& clock, RunObserver& observer)
    : model_(model), options_(options), source_(source), clock_(clock), observer_(observer)
{
}

std::string RecordingRun::title() const
{
    const std::string text =
        options_.titleText.empty() ? recordCommandText(options_.command) : options_.titleText;
    return text + (options_.automatic ? " (Automatic Mode)" : " (Semi Automatic Mode)");
}

Result RecordingRun::open()
{
    Result result = buildRecordList(model_, options_.command, list_);
    std::string boxTitle = "Error";
    if (result.ok()) {
        std::string checkTitle;
        result = checkRecordList(list_, options_.audioOutputDevice, checkTitle);
        if (!checkTitle.empty())
            boxTitle = checkTitle;
    }
    if (!result.ok()) {
        state_ = State::Finished;
        failed_ = true;
        observer_.message(boxTitle, result.message);
        return result;
    }
    state_ = State::Idle;
    observer_.log("Press 'Start'");
    return result;
}

void RecordingRun::start()
{
    if (state_ != State::Idle)
        return;
    if (list_.entries.empty()) {
        state_ = State::Finished;
        observer_.finished(options_.closeAfterRecording);
        return;
    }
    entry_ = 0;
    currentKey_ = -1;
    advance();
}

// ------------------------------------------------------------------ timers

void RecordingRun::startTimer(TimerId id, int64_t intervalMs, bool singleShot)
{
    Timer& timer = timers_[id];
    timer.active = true;
    timer.singleShot = singleShot;
    timer.intervalMs = intervalMs;
    timer.dueMs = clock_.nowMs() + intervalMs;
}

int64_t RecordingRun::nextDueMs() const
{
    int64_t next = -1;
    for (const Timer& timer : timers_)
        if (timer.active && (next < 0 || timer.dueMs < next))
            next = timer.dueMs;
    return next;
}

void RecordingRun::service()
{
    // Fire what is due, earliest first; a handler may start or stop timers. The bound keeps
    // a clock that stands still from looping forever over a zero-length interval.
    for (int round = 0; round < 1000; ++round) {
        const int64_t now = clock_.nowMs();
        int due = -1;
        for (int id = 0; id < kTimerCount; ++id) {
            const Timer& timer = timers_[id];
            if (timer.active && timer.dueMs <= now && (due < 0 || timer.dueMs < timers_[due].dueMs))
                due = id;
        }
        if (due < 0)
            return;
        Timer& timer = timers_[due];
        if (timer.singleShot)
            timer.active = false;
        else
            timer.dueMs = std::max(timer.dueMs + timer.intervalMs, now + 1);
        fire(TimerId(due));
    }
}

void RecordingRun::fire(TimerId id)
{
    switch (id) {
    case kCountdownTimer:
        onCountdownTick();
        break;
    case kMidiOnTimer:
        onMidiOn();
        break;
    case kMidiOffTimer:
        onMidiOff();
        break;
    case kRecordingTimer:
        onRecordingTick();
        break;
    case kUpdateTimer:
        onUpdateTick();
        break;
    case kTimerCount:
        break;
    }
}

// ------------------------------------------------------------------ advancing

void RecordingRun::verbose(const std::string& text)
{
    if (options_.verbose)
        observer_.log(text);
}

void RecordingRun::advance()
{
    for (;;) {
        if (entry_ >= list_.entries.size()) {
            endOfRun();
            return;
        }
        const RecordEntry& entry = list_.entries[entry_];
        int next = -1;
        for (int note = currentKey_ + 1; note < kKeyCount; ++note) {
            if (entry.keys.test(size_t(note))) {
                next = note;
                break;
            }
        }
        if (next < 0) { // past key 127: the next entry from key 0
            ++entry_;
            currentKey_ = -1;
            continue;
        }
        currentKey_ = next;
        retries_ = 0;
        const TGmsl_key& key = entry.msl->keys[next];
        if (key.hasAudio &&
            (options_.recordOnlyEmptyKeys || (options_.keepLockedKeys && key.locked))) {
            observer_.log(formatText("Skipping NOTE %d (%s)", next, noteName(next).c_str()));
            continue;
        }
        break;
    }
    beginKey();
}

void RecordingRun::beginKey()
{
    const RecordEntry& entry = list_.entries[entry_];
    observer_.progress(
        formatText("%s - %d keys (%d done)", title().c_str(), list_.totalKeys, done_), done_,
        list_.totalKeys);
    observer_.log(formatText("init PROJECT \"%s\"", entry.project->name));
    observer_.log(formatText("init MULTI-SAMPLE \"%s\"", entry.msl->name));
    if (model_.currentProjectIndex() != entry.projectIndex)
        model_.selectProject(entry.projectIndex);
    if (entry.project->currentMsl != entry.mslIndex)
        model_.selectMultiSample(entry.mslIndex);
    TGmsl& msl = *entry.msl;
    msl.keys[currentKey_].hasAudio = 0;
    msl.keys[currentKey_].locked = 0;
    lastMsl_ = &msl;
    verbose(formatText("Opening Audio In Device \"%s\"\r\nwith \"%s\"", msl.AudioInDevice,
                       msl.AudioInFormat));
    if (preparedEntry_ != int(entry_)) {
        std::string message;
        if (!source_.prepare(msl, message)) {
            fail(message);
            return;
        }
        preparedEntry_ = int(entry_);
    }
    noteLength_ = msl.recordsettings.notelength1;
    releaseLength_ = msl.recordsettings.releaselength1;
    countdown_ = source_.offlineRenderer() ? 0.0 : msl.recordsettings.recpause;
    startKeyCountdown();
}

void RecordingRun::startKeyCountdown()
{
    secondsToAnnounce_ = std::max(0, int(std::ceil(countdown_)) - 1);
    if (options_.automatic) {
        observer_.log(formatText("recording starts in %s second(s)", number(countdown_).c_str()));
        state_ = State::Countdown;
        countdownStartMs_ = clock_.nowMs();
        startTimer(kCountdownTimer, kCountdownTickMs, false);
    } else {
        state_ = State::Waiting;
        showNextKey();
    }
}

void RecordingRun::showNextKey()
{
    observer_.nextKeyText(formatText("Next Key: %s", noteName(currentKey_).c_str()));
    observer_.sizeText("0.0 MB");
    observer_.buttonText("Start Countdown");
}

void RecordingRun::startCountdown()
{
    if (state_ != State::Waiting)
        return;
    observer_.buttonText("Stop Recording");
    state_ = State::Countdown;
    countdownStartMs_ = clock_.nowMs();
    startTimer(kCountdownTimer, kCountdownTickMs, false);
}

void RecordingRun::onCountdownTick()
{
    const double elapsed = double(clock_.nowMs() - countdownStartMs_) / 1000.0;
    if (elapsed >= countdown_) {
        stopTimer(kCountdownTimer);
        recordNote();
        if (!options_.automatic && state_ == State::Recording)
            startTimer(kUpdateTimer, kUpdateTickMs, false);
        return;
    }
    if (options_.automatic) {
        if (secondsToAnnounce_ >= countdown_ - elapsed) {
            observer_.log(formatText("recording starts in %d second(s)", secondsToAnnounce_));
            secondsToAnnounce_ = std::max(0, secondsToAnnounce_ - 1);
        }
    } else {
        observer_.countdownText(formatText("Countdown: %.2f", elapsed - countdown_));
    }
}

// ------------------------------------------------------------------ one note

void RecordingRun::recordNote()
{
    const int note = currentKey_;
    double seconds;
    if (options_.automatic) {
        observer_.log(formatText("Recording NOTE %d (%s), rec.dur. = %s seconds", note,
                                 noteName(note).c_str(),
                                 number(noteLength_ + releaseLength_).c_str()));
        seconds = noteLength_ + kNoteLeadIn + releaseLength_;
    } else {
        observer_.log(formatText("Recording NOTE %d (%s), rec.dur. = manual (max. %d seconds)",
                                 note, noteName(note).c_str(), options_.maxRecLength));
        seconds = options_.maxRecLength;
    }
    stopTimer(kRecordingTimer);
    stopTimer(kUpdateTimer);
    std::string message;
    if (!source_.arm(seconds, message)) {
        fail(message);
        return;
    }
    armedAtMs_ = clock_.nowMs();
    armedMs_ = int64_t(std::llround(seconds * 1000.0));
    measuredNoteMs_ = 0.0;
    const TGmsl& msl = *list_.entries[entry_].msl;
    OfflineNoteRenderer* renderer = source_.offlineRenderer();
    if (!options_.automatic && renderer == nullptr) {
        state_ = State::Recording;
        startTimer(kRecordingTimer, kRecordingPollMs, false);
    } else if (renderer != nullptr) {
        // Bouncing plays the note itself, in either mode: a semi-automatic take is the
        // Multi-Sample's note, bounced when the user starts it, and then checked as usual.
        OfflineNote offline;
        offline.note = note;
        offline.attackVelocity = msl.MIDIoutAttackVelocity;
        offline.releaseVelocity = msl.MIDIoutReleaseVelocity;
        offline.channel = msl.MIDIoutChannel & 0x0F;
        offline.noteLength = noteLength_;
        offline.releaseLength = releaseLength_;
        offline.leadIn = kNoteLeadIn;
        renderer->renderNote(offline);
        state_ = options_.automatic ? State::Release : State::Recording;
        startTimer(kRecordingTimer, kRecordingPollMs, false);
    } else {
        state_ = State::Armed;
        startTimer(kMidiOnTimer, kNoteOnDelayMs, true);
    }
}

void RecordingRun::sendChannelMessage(uint8_t status, int data1, int data2)
{
    if (lastMsl_ == nullptr)
        return;
    const uint8_t bytes[3] = {uint8_t(status | (lastMsl_->MIDIoutChannel & 0x0F)),
                              uint8_t(data1 & 0x7F), uint8_t(data2 & 0x7F)};
    source_.sendMidi(bytes, 3);
}

void RecordingRun::onMidiOn()
{
    if (state_ != State::Armed)
        return;
    startTimer(kMidiOffTimer, int64_t(std::llround(noteLength_ * 1000.0)), true);
    sendChannelMessage(0x90, currentKey_, lastMsl_->MIDIoutAttackVelocity);
    noteStartMs_ = clock_.nowMs();
    state_ = State::NoteSounding;
}

void RecordingRun::onMidiOff()
{
    if (state_ != State::NoteSounding)
        return;
    // A real Note Off with the release velocity: a Note On of velocity 0 has no release
    // velocity, and some instruments shape their release with it.
    sendChannelMessage(0x80, currentKey_, lastMsl_->MIDIoutReleaseVelocity);
    measuredNoteMs_ = double(clock_.nowMs() - noteStartMs_);
    state_ = State::Release;
    startTimer(kRecordingTimer, kRecordingPollMs, false);
}

void RecordingRun::onRecordingTick()
{
    if (source_.isRecording()) {
        // An input that stopped delivering blocks (a server gone, a device unplugged) would
        // otherwise keep the run polling for ever.
        if (options_.automatic && clock_.nowMs() > armedAtMs_ + armedMs_ + kStalledInputMs)
            fail("The audio input stopped delivering audio before the take was complete.");
        return;
    }
    stopTimer(kRecordingTimer);
    stopTimer(kUpdateTimer);
    processTake();
}

void RecordingRun::onUpdateTick()
{
    const double seconds = double(clock_.nowMs() - armedAtMs_) / 1000.0;
    const double bytes =
        std::min(seconds, double(options_.maxRecLength)) * source_.inputFormat().nAvgBytesPerSec;
    observer_.recordingText(formatText("Recording: %.1f", seconds));
    observer_.sizeText(formatText("%.1f MB", bytes / (1024.0 * 1024.0)));
}

// ------------------------------------------------------------------ the take

void RecordingRun::reportTake(const TakeAudio& take, const std::string& keptAs)
{
    const RecordEntry& entry = list_.entries[entry_];
    TakeReport report;
    report.project = entry.project->name;
    report.multiSample = entry.msl->name;
    report.note = currentKey_;
    report.file = keptAs;
    report.frames = take.frames;
    report.health = take.health;
    report.kept = !keptAs.empty();
    observer_.takeRecorded(report);
}

bool RecordingRun::acceptTakeHealth(const TakeAudio& take)
{
    const TakeHealth& health = take.health;
    if (!health.droppedFrames())
        return true;
    observer_.log(healthText(currentKey_, health));
    reportTake(take, "");
    // A burst of load (another program starting, the disk waking up) spoils a take or two; an
    // unattended run rides it out. Drops that outlast several takes of one key mean the system
    // cannot keep up, and recording on would only fill the project with refusals.
    if (retries_ >= kRetakesForDroppedFrames) {
        fail(formatText("Frames were dropped again while recording NOTE %d (%s), in %d takes in "
                        "a row; the last: %lld frame(s) missing, %d input overflow(s). The take "
                        "was not kept and the recording stopped; lower the system's load or "
                        "raise the audio latency, then record again.",
                        currentKey_, noteName(currentKey_).c_str(), retries_ + 1,
                        (long long)health.framesMissing(), health.inputOverflows));
        return false;
    }
    ++retries_;
    observer_.log(formatText("Frames were dropped: the take is not kept, NOTE %d (%s) is "
                             "recorded again (take %d of %d)",
                             currentKey_, noteName(currentKey_).c_str(), retries_ + 1,
                             kRetakesForDroppedFrames + 1));
    if (options_.automatic) {
        startKeyCountdown();
    } else {
        state_ = State::Waiting;
        showNextKey();
    }
    return false;
}

void RecordingRun::processTake()
{
    RecordEntry& entry = list_.entries[entry_];
    Project& project = *entry.project;
    TGmsl& msl = *entry.msl;
    const int note = currentKey_;
    TGmsl_key& key = msl.keys[note];
    const TakeAudio take = source_.take();
    if (!acceptTakeHealth(take))
        return;
    ++done_;
    const std::string fileName = keySampleFileName(project, msl, note);
    observer_.log(formatText("saving \"%s\"", fileName.c_str()));
    observer_.log(healthText(note, take.health));
    const size_t bufferBytes = take.data ? take.data->size() : 0;
    const size_t bytes = takeByteCount(take.format, take.frames, bufferBytes);
    const uint8_t* data = bytes ? take.data->data() : nullptr;
    std::string message;
    // The take goes to disk before anything else is done with it.
    if (!writeTakeFile(fileName, take.format, data, bytes, message)) {
        fail(message);
        return;
    }
    WaveFormat wanted;
    if (formatFromName(msl.AudioInFormat, wanted) &&
        wanted.nSamplesPerSec == take.format.nSamplesPerSec &&
        (wanted.nChannels != take.format.nChannels ||
         wanted.wBitsPerSample != take.format.wBitsPerSample)) {
        if (!convertWavFile(fileName, wanted, message)) {
            fail(message);
            return;
        }
    }
    key.hasAudio = 1;

    const RecordSettings& rs = msl.recordsettings;
    const double noteSeconds = source_.offlineRenderer() ? noteLength_ : measuredNoteMs_ / 1000.0;
    // A semi-automatic take from a live source holds a note the user played: the run timed no
    // Note On to Note Off, so a release placed after a note duration would start at the Note
    // In (and then throw the found note away). Its end is found in the audio instead, as in a
    // take without a release.
    const bool noteTimed = options_.automatic || source_.offlineRenderer() != nullptr;
    setTakeNoteMarkers(key, take.format, data, bytes, rs, noteTimed ? releaseLength_ : 0.0,
                       noteSeconds);
    setUpTakeLoop(key, rs);
    if (rs.autoloop) {
        observer_.log("Loop Detection - This may take a bit...");
        const double searchSeconds =
            take.format.nSamplesPerSec
                ? double(key.LoopSearch_Out - key.LoopSearch_In) / take.format.nSamplesPerSec
                : 0.0;
        verbose(formatText("        searching for loop-Out, search dur. = %s second(s)",
                           number(searchSeconds).c_str()));
        runAtLowPriority([&] { searchTakeLoop(key, take.format, data, bytes, rs); });
        verbose("       setting loop-Out");
    }
    key.name[0] = '\0';
    std::fill(std::begin(key.reservedA), std::end(key.reservedA), 0);
    std::fill(std::begin(key.reservedB), std::end(key.reservedB), 0);
    project.viewKey = uint16_t(note);
    project.modified = 1;

    // Saved after every take, so that stopping or a crash loses at most the take under way.
    if (!saveProjectAgain(project, message)) {
        fail(message);
        return;
    }
    reportTake(take, fileName);
    observer_.progress(
        formatText("%s - %d keys (%d done)", title().c_str(), list_.totalKeys, done_), done_,
        list_.totalKeys);
    if (options_.automatic) {
        advance();
    } else {
        state_ = State::Checking;
        observer_.checkTake(note);
    }
}

void RecordingRun::keepTake(const std::string& keyName)
{
    if (state_ != State::Checking)
        return;
    RecordEntry& entry = list_.entries[entry_];
    copyText(entry.msl->keys[currentKey_].name, keyName.substr(0, kNameSize).c_str());
    std::string message;
    if (!saveProjectAgain(*entry.project, message)) {
        fail(message);
        return;
    }
    advance();
}

void RecordingRun::discardTake()
{
    if (state_ != State::Checking)
        return;
    // The same key comes again, as a new try: its take will be overwritten and counted then.
    --done_;
    retries_ = 0;
    state_ = State::Waiting;
    showNextKey();
}

// ------------------------------------------------------------------ ending

void RecordingRun::sendStopMessages()
{
    stopTimer(kRecordingTimer);
    if (OfflineNoteRenderer* renderer = source_.offlineRenderer())
        renderer->resetNoteState();
    if (currentKey_ >= 0)
        sendChannelMessage(0x80, currentKey_, lastMsl_ ? lastMsl_->MIDIoutReleaseVelocity : 0);
    sendChannelMessage(0xB0, 123, 0);
}

void RecordingRun::endOfRun()
{
    observer_.log("\r\n\r\nFinished recording.\r\n\r\n");
    currentKey_ = -1;
    sendStopMessages();
    for (Timer& timer : timers_)
        timer.active = false;
    state_ = State::Finished;
    observer_.finished(options_.closeAfterRecording);
}

void RecordingRun::fail(const std::string& message)
{
    failed_ = true;
    observer_.message("Error", message);
    sendStopMessages();
    source_.stopRecording();
    for (Timer& timer : timers_)
        timer.active = false;
    state_ = State::Finished;
    observer_.finished(true);
}

void RecordingRun::stop()
{
    if (state_ == State::Idle || state_ == State::Finished)
        return;
    const bool countdownOver = state_ == State::Recording;
    sendStopMessages();
    if (!options_.automatic) {
        if (state_ == State::Countdown || state_ == State::Waiting) {
            stopTimer(kCountdownTimer);
            state_ = State::Waiting;
            showNextKey();
            return;
        }
        if (countdownOver) {
            source_.stopRecording();
            stopTimer(kUpdateTimer);
            processTake();
            return;
        }
    }
    source_.stopRecording();
    for (Timer& timer : timers_)
        timer.active = false;
    state_ = State::Finished;
    observer_.finished(options_.closeAfterRecording);
}

} // namespace tg

namespace tg {

void RecordingRun::close()
{
    if (state_ == State::Finished)
        return;
    if (!options_.automatic && state_ == State::Recording)
        stop(); // the take is kept, as with the stop button
    if (state_ == State::Finished)
        return;
    sendStopMessages();
    source_.stopRecording();
    for (Timer& timer : timers_)
        timer.active = false;
    state_ = State::Finished;
    observer_.finished(true);
}

} // namespace tg
