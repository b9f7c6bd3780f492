// What a recording run records from: the audio input it arms and the MIDI output it plays
// notes on, or an instrument that renders the notes itself.
#pragma once

#include "audiofile/WaveFormat.h"
#include "core/Records.h"
#include "devices/TakeHealth.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// A finished take: read it only after isRecording() turned false.
struct TakeAudio {
    WaveFormat format;                          // the format it was recorded in
    const std::vector<uint8_t>* data = nullptr; // WAV byte image; may be longer than the take
    int64_t frames = 0;                         // frames captured
    TakeHealth health;                          // how well the capture kept up
};

// A note for an instrument that renders offline, faster than real time.
struct OfflineNote {
    int note = 60;              // MIDI note 0..127
    int attackVelocity = 64;    // 1..127
    int releaseVelocity = 0;    // 0..127
    int channel = 0;            // 0..15
    double noteLength = 2.5;    // seconds from Note On to Note Off
    double releaseLength = 0.0; // seconds recorded after Note Off
    double leadIn = 0.5;        // seconds of silence before Note On
};

// Renders notes into the take of its source; the run starts its polling right after handing
// the note over and processes the take once the source no longer records.
class OfflineNoteRenderer {
  public:
    virtual ~OfflineNoteRenderer() = default;
    virtual void renderNote(const OfflineNote& note) = 0;
    // Forgets any sounding note (the run was stopped).
    virtual void resetNoteState() = 0;
};

// Thread rules: every call comes from the run's thread (the GUI thread or the CLI's loop).
class TakeSource {
  public:
    virtual ~TakeSource() = default;

    // Makes the devices follow `msl`: opens its audio input and its MIDI output and sends its
    // program, reset and controllers. Returns 1, or 0 with the device layer's message.
    virtual int prepare(const TGmsl& msl, std::string& message) = 0;
    // The format takes are recorded in (valid after prepare()).
    virtual WaveFormat inputFormat() const = 0;

    // Arms a take of `seconds`. Returns 1, or 0 with a message when it cannot be had.
    virtual int arm(double seconds, std::string& message) = 0;
    virtual bool isRecording() = 0;
    virtual void stopRecording() = 0;
    virtual TakeAudio take() = 0;

    // Sends one channel message (1 to 3 bytes) to the sound source.
    virtual void sendMidi(const uint8_t* bytes, size_t count) = 0;

    // The renderer of an offline source, or null for a source that records in real time.
    virtual OfflineNoteRenderer* offlineRenderer() { return nullptr; }
};

} // namespace tg
