// The take source of a real recording: the audio device layer records the input while the
// MIDI layer plays the notes on the Multi-Sample's output port.
#pragma once

#include "recording/TakeSource.h"

namespace tg {

class AudioManager;
class MidiManager;

// Thread rules: GUI thread or the CLI's loop, like the managers it drives.
class RealTimeTakeSource : public TakeSource {
  public:
    RealTimeTakeSource(AudioManager& audio, MidiManager& midi) : audio_(audio), midi_(midi) {}

    // Opens the Multi-Sample's audio input (refused with the device layer's text when no
    // input device has its name, since a take could then never fill) and its MIDI output,
    // and sends its program, reset and controllers.
    int prepare(const TGmsl& msl, std::string& message) override;
    WaveFormat inputFormat() const override;
    int arm(double seconds, std::string& message) override;
    bool isRecording() override;
    void stopRecording() override;
    TakeAudio take() override;
    void sendMidi(const uint8_t* bytes, size_t count) override;

  private:
    AudioManager& audio_;
    MidiManager& midi_;
};

} // namespace tg
