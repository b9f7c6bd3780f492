// Rendering a Key-Sample into playable audio: note, crossfaded loop, unfolded
// backward-forward loop, click/pop fades.
#pragma once

#include "audiofile/WaveFormat.h"
#include "core/Records.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tg {

struct RenderOptions {
    bool includeAfterLoop = false; // also render the note after the loop, up to Note_Out
    bool plainNote = false;        // ignore the loop and render Note_In..Note_Out
    int32_t clickPopFadeIn = 0;    // frames, prefs.ClickPopRedFade_in
    int32_t clickPopFadeOut = 0;   // frames, prefs.ClickPopRedFade_out
};

struct RenderedNote {
    WaveFormat format;
    std::vector<uint8_t> note;    // rendered audio; its byte count is always even
    int64_t frames = 0;           // rendered frames (the even-count pad byte is not one)
    std::vector<uint8_t> release; // the release part; never rendered, always empty
    int32_t loopStart = 0;        // frames into `note`
    int32_t loopEnd = 0;          // frames into `note`, inclusive
};

// Renders Key-Sample `k` from its recording (`buff_in`, `*nbuff_in` bytes in `*wft_in`).
// Returns 1, or 0 with `message` and `out` left empty.
int renderKeySample(const TGmsl_key* k, const WaveFormat* wft_in, const uint8_t* buff_in,
                    const size_t* nbuff_in, const RenderOptions& options, RenderedNote* out,
                    std::string& message);

} // namespace tg

namespace tg {

// Renders Key-Sample `k` of Multi-Sample `m` from the WAV file `fname_in` and writes
// "<fname_out>.wav": the whole rendered note (with its loop in a `smpl` chunk when looped),
// or with `loopOnly` and a loop mode just the loop. "<fname_out> - release.wav" would hold a
// release part, which the renderer never yields. Returns 1, or 0 with `message` and nothing
// written.
int renderKeySampleToFiles(const Project* p, const TGmsl* m, const TGmsl_key* k,
                           const char* fname_in, const char* fname_out,
                           const RenderOptions& options, bool loopOnly, std::string& message);

} // namespace tg
