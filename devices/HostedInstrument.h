// The instrument hosted behind the pseudo devices "-Vst Plugin-": it takes channel messages
// and renders stereo float audio, either for the real-time ring buffer or offline, as fast
// as the CPU allows.
#pragma once

#include "devices/InstrumentSpec.h"

#include <cstdint>
#include <memory>
#include <string>

namespace tg {

// Thread rules: after opening, an instrument is used by one thread only, the one that
// renders it (the real-time host's thread or the offline bouncer's caller). Neither
// sendMidi() nor render() allocates or locks.
class HostedInstrument {
  public:
    virtual ~HostedInstrument() = default;

    // A three-byte channel message (Note On 0x9n, Note Off 0x8n, controller 0xBn, program
    // change 0xCn); it takes effect at the start of the next render().
    virtual void sendMidi(uint8_t status, uint8_t data1, uint8_t data2) = 0;

    // Silences every voice at once, tails included, so the next note starts from quiet.
    virtual void resetNotes() = 0;

    // Renders `frames` frames of both channels (any count; long requests run in blocks).
    virtual void render(float* left, float* right, uint32_t frames) = 0;

    // Frames per second the instrument was opened with.
    virtual int32_t sampleRate() const = 0;

    // A short human description: "SoundFont 'FluidR3_GM.sf2' bank 0 preset 0 (Yamaha Grand Piano)".
    virtual std::string description() const = 0;
};

// Opens the instrument `choice` names at `sampleRate` Hz; null with a message naming the
// file, plug-in or fault when it cannot.
std::unique_ptr<HostedInstrument> openHostedInstrument(const InstrumentSpec& choice,
                                                       int32_t sampleRate, std::string& msg);

} // namespace tg
