// Bouncing each note of a recording run from the hosted instrument.
#include "recording/OfflineTakeSource.h"

#include "core/Message.h"
#include "devices/DeviceTables.h"
#include "devices/OfflineBouncer.h"
#include "audiofile/RecordFormats.h"
#include "recording/RecordingRun.h"

#include <chrono>

namespace tg {

int OfflineTakeSource::prepare(const TGmsl& msl, std::string& message)
{
    WaveFormat format;
    formatFromName(msl.AudioInFormat, format);
    if (format.nChannels == 0)
        return setMessage(message, "Unknown recording format \"%s\"", msl.AudioInFormat);
    const AudioStreamConfig wanted{-1,
                                   -1,
                                   -1,
                                   int32_t(format.nSamplesPerSec),
                                   int32_t(format.wBitsPerSample),
                                   int32_t(format.nChannels),
                                   -1.0f};
    if (instrument_ == nullptr || instrument_->sampleRate() != wanted.sampleRate) {
        instrument_.reset();
        instrument_ = openHostedInstrument(spec_, wanted.sampleRate, message);
        if (instrument_ == nullptr)
            return 0;
    }
    format_ = wanted;
    return 1;
}

int OfflineTakeSource::arm(double seconds, std::string& message)
{
    if (instrument_ == nullptr)
        return setMessage(message, "No instrument is open for offline bouncing");
    armedSeconds_ = seconds;
    frames_ = 0;
    armed_ = true;
    return 1;
}

void OfflineTakeSource::renderNote(const OfflineNote& note)
{
    BounceNote bounce;
    bounce.note = note.note;
    bounce.attackVelocity = note.attackVelocity;
    bounce.releaseVelocity = note.releaseVelocity;
    bounce.channel = note.channel;
    bounce.noteLength = note.noteLength;
    bounce.releaseLength = note.releaseLength;
    bounce.leadIn = note.leadIn;
    lastError_.clear();
    const auto begin = std::chrono::steady_clock::now();
    const int bounced =
        instrument_ != nullptr && bounceNote(*instrument_, bounce, format_, take_, lastError_);
    renderWallSeconds_ +=
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    if (!bounced) {
        if (lastError_.empty())
            lastError_ = "No instrument is open for offline bouncing";
        take_.clear();
    }
    const int32_t frameBytes = bytesPerFrame(format_);
    frames_ = frameBytes > 0 ? int64_t(take_.size()) / frameBytes : 0;
    secondsRendered_ += format_.sampleRate > 0 ? double(frames_) / format_.sampleRate : 0.0;
    armed_ = false;
}

TakeAudio OfflineTakeSource::take()
{
    TakeAudio audio;
    audio.format = waveFormatOf(format_);
    audio.data = &take_;
    audio.frames = frames_;
    // Rendered, not captured: every frame is there.
    audio.health.framesExpected = audio.health.framesReceived = frames_;
    return audio;
}

void OfflineTakeSource::sendMidi(const uint8_t* bytes, size_t count)
{
    if (instrument_ != nullptr && count >= 1)
        instrument_->sendMidi(bytes[0], count > 1 ? bytes[1] : 0, count > 2 ? bytes[2] : 0);
}

void OfflineTakeSource::resetNoteState()
{
    if (instrument_ != nullptr)
        instrument_->resetNotes();
}

std::string OfflineTakeSource::description() const
{
    return instrument_ != nullptr ? instrument_->description() : std::string();
}

} // namespace tg

namespace tg {

namespace {

// Passes everything on to the caller's observer and keeps the text of a message box, the
// only way the run reports why it stopped.
class FailureKeeper : public RunObserver {
  public:
    explicit FailureKeeper(RunObserver& inner) : inner_(inner) {}
    void log(const std::string& text) override { inner_.log(text); }
    void progress(const std::string& title, int done, int total) override
    {
        inner_.progress(title, done, total);
    }
    void message(const std::string& title, const std::string& text) override
    {
        failure = text;
        inner_.message(title, text);
    }
    void finished(bool close) override { inner_.finished(close); }
    void takeRecorded(const TakeReport& report) override { inner_.takeRecorded(report); }
    std::string failure;

  private:
    RunObserver& inner_;
};

} // namespace

int runOfflineRecording(Model& model, const RunOptions& options, OfflineTakeSource& source,
                        RunObserver& observer, std::string& message)
{
    SkippingRunClock clock;
    FailureKeeper keeper(observer);
    RunOptions automatic = options;
    automatic.automatic = true;
    // The run refuses to sample the plug-in without an audio output, which real-time plug-in
    // recording listens on. Bouncing renders straight into the takes and needs none: the
    // instrument itself stands in as the output.
    if (automatic.audioOutputDevice.empty() || automatic.audioOutputDevice == kNoAudioOutEntry)
        automatic.audioOutputDevice = kVstPluginEntry;
    RecordingRun run(model, automatic, source, clock, keeper);
    const Result opened = run.open();
    if (!opened.ok())
        return setMessage(message, "%s", opened.message.c_str());
    run.start();
    while (!run.finished() && source.lastError().empty()) {
        const int64_t next = run.nextDueMs();
        if (next < 0)
            break;
        clock.advanceTo(next);
        run.service();
    }
    if (!source.lastError().empty()) {
        run.close();
        return setMessage(message, "%s", source.lastError().c_str());
    }
    if (run.failed() || !run.finished())
        return setMessage(message, "%s",
                          keeper.failure.empty() ? "The recording run did not finish."
                                                 : keeper.failure.c_str());
    return 1;
}

} // namespace tg
