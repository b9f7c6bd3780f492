// The take source of offline bouncing: the hosted instrument renders each note straight
// into the take, as fast as the CPU allows, with no audio device at all.
#pragma once

#include "devices/AudioStreamConfig.h"
#include "devices/HostedInstrument.h"
#include "devices/InstrumentSpec.h"
#include "recording/RunClock.h"
#include "recording/TakeSource.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace tg {

// Thread rules: the run's thread only; the instrument is opened and rendered there.
class OfflineTakeSource : public TakeSource, public OfflineNoteRenderer {
  public:
    explicit OfflineTakeSource(InstrumentSpec choice) : spec_(std::move(choice)) {}

    // Takes the Multi-Sample's recording format ("msl_AudioInFormat") and opens the
    // instrument at its rate (again only when the rate changed). The instrument's own
    // preset is the sound: the Multi-Sample's program is not sent.
    int prepare(const TGmsl& msl, std::string& message) override;
    WaveFormat inputFormat() const override { return waveFormatOf(format_); }

    // Arming only notes the length; the take is made whole by renderNote().
    int arm(double seconds, std::string& message) override;
    bool isRecording() override { return armed_; }
    void stopRecording() override { armed_ = false; }
    TakeAudio take() override;
    void sendMidi(const uint8_t* bytes, size_t count) override;
    OfflineNoteRenderer* offlineRenderer() override { return this; }

    void renderNote(const OfflineNote& note) override;
    void resetNoteState() override;

    // The instrument's description (empty before prepare()), the last bouncing fault, and
    // the audio seconds rendered so far.
    std::string description() const;
    const std::string& lastError() const { return lastError_; }
    double secondsRendered() const { return secondsRendered_; }
    // Wall-clock seconds spent rendering them (the bouncing alone, without the run's
    // processing of each take).
    double renderWallSeconds() const { return renderWallSeconds_; }

  private:
    InstrumentSpec spec_;
    std::unique_ptr<HostedInstrument> instrument_;
    AudioStreamConfig format_{-1, -1, -1, 0, 0, 0, -1.0f};
    bool armed_ = false;
    double armedSeconds_ = 0.0;
    std::vector<uint8_t> take_;
    int64_t frames_ = 0;
    std::string lastError_;
    double secondsRendered_ = 0.0;
    double renderWallSeconds_ = 0.0;
};

// A clock for offline runs: time stands still until the driving loop moves it to the run's
// next due time, so half-second polls and note lengths cost nothing.
class SkippingRunClock : public RunClock {
  public:
    int64_t nowMs() const override { return now_; }
    void advanceTo(int64_t ms)
    {
        if (ms > now_)
            now_ = ms;
    }

  private:
    int64_t now_ = 0;
};

} // namespace tg

namespace tg {

class Model;
struct RunOptions;
class RunObserver;

// Runs a whole automatic recording run over `source` on a skipping clock: every timer fires
// as soon as it is the next one due, so the run waits for nothing and the only time spent is
// the bouncing and the processing of each take. Returns 1 when the run finished; 0 with the
// run's refusal, the run's failure or the bouncing fault.
int runOfflineRecording(Model& model, const RunOptions& options, OfflineTakeSource& source,
                        RunObserver& observer, std::string& message);

} // namespace tg
