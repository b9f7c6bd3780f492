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
