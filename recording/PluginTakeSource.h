// The take source of a real-time recording from the hosted instrument: notes go to the
// instrument's render thread, its audio plays on the output and the recorder takes it from
// the output block ("-Vst Plugin-" as the audio input).
#pragma once

#include "devices/InstrumentHost.h"
#include "devices/InstrumentSpec.h"
#include "recording/TakeSource.h"

namespace tg {

class AudioManager;

// Thread rules: the run's thread (GUI or the CLI's loop); the instrument lives on the host's
// render thread between prepare() and destruction.
class PluginTakeSource : public TakeSource {
  public:
    // `audio` must have the output device set that the instrument is heard on.
    PluginTakeSource(AudioManager& audio, InstrumentSpec choice)
        : audio_(audio), spec_(std::move(choice))
    {
    }
    ~PluginTakeSource() override;

    // Opens the Multi-Sample's streams (the output, the pseudo input), and starts the
    // instrument on the output's rate and format. Without an output there is nothing to
    // record from: "Please select a valid audio out device to sample your plugin."
    int prepare(const TGmsl& msl, std::string& message) override;
    WaveFormat inputFormat() const override;
    int arm(double seconds, std::string& message) override;
    bool isRecording() override;
    void stopRecording() override;
    TakeAudio take() override;
    void sendMidi(const uint8_t* bytes, size_t count) override;

  private:
    AudioManager& audio_;
    InstrumentSpec spec_;
    InstrumentHost host_;
    AudioStreamConfig hostFormat_{-1, -1, -1, 0, 0, 0, -1.0f};
};

} // namespace tg
