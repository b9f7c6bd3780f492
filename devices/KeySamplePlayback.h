// Playing one key's Key-Sample as a sampler would: the rendered note with its crossfaded
// loop repeated while the key is held, and the release part when it goes up.
#pragma once

#include "audiofile/WaveFormat.h"
#include "core/Records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

class AudioManager;
class Model;
struct Project;

// What a key plays, in the Key-Sample's own format.
struct KeySampleSound {
    WaveFormat format;
    std::vector<uint8_t> note;    // Note_In up to the loop's end (looped) or to Note_Out
    int32_t loopStart = 0;        // frames into `note`
    int32_t loopEnd = 0;          // frames into `note`, exclusive; equal to loopStart: no loop
    std::vector<uint8_t> release; // Release_In..Release_Out when the release is on
};

// Loads key `note` of `msl` from its WAV file and renders it (crossfaded or backward-forward
// loop, the click/pop fades of `fadeIn`/`fadeOut` frames when the key asks for them).
// Returns 1, or 0 with `msg`.
int prepareKeySampleSound(const Project& project, TGmsl& msl, int note, int32_t fadeIn,
                          int32_t fadeOut, KeySampleSound& out, std::string& msg);

// The keyboard, the editor and MIDI input play keys through this: the current Multi-Sample
// of the model's current Project, on the output `AudioManager` opened (the preferences'
// output device). GUI thread (or the CLI's one thread) only.
class KeyPlayer {
  public:
    KeyPlayer(Model& model, AudioManager& audio) : model_(model), audio_(audio) {}

    // Stops what plays and starts `note`'s Key-Sample. 1 also when the key has no audio or
    // no output is open (nothing to play); 0 with `msg` when its file cannot be played.
    int play(int note, std::string& msg);
    // The key went up: the loop plays to its end and hands on to the release, or, without a
    // release part, fades out.
    void release();
    // The note that play() last started, -1 before any.
    int lastNote() const { return lastNote_; }

  private:
    Model& model_;
    AudioManager& audio_;
    int lastNote_ = -1;
};

} // namespace tg
