// What the export pipeline hands a format writer for one Key-Sample: its rendered audio.
#pragma once

#include "audiofile/WaveFormat.h"
#include "core/Records.h"
#include "export/KeySampleFile.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tg {

// One Key-Sample after rendering, conversion to the export format and gain: the note part as a
// WAV byte image with its loop.
struct RenderedSample {
    WaveFormat format;          // the export format (rate, channels, bits)
    std::vector<uint8_t> audio; // interleaved frames, WAV byte image
    bool hasLoop = false;       // a loop survives in the rendered audio
    int32_t loopStart = 0;      // frames, first looped frame
    int32_t loopEnd = 0;        // frames, last looped frame (inclusive)
    int32_t rootKey = 60;       // MIDI note the audio sounds at, 0..127

    int32_t frames() const
    {
        return format.nBlockAlign ? static_cast<int32_t>(audio.size() / format.nBlockAlign) : 0;
    }
};

// Renders Key-Samples for a format writer. The export pipeline implements it: poll the abort
// flag, report progress, render through the loop renderer, convert as the Export Settings word
// asks and apply the key's gain.
class KeySampleSource {
  public:
    virtual ~KeySampleSource() = default;
    // Renders key `note` of Multi-Sample `mslIndex` (index into Project::msl); `ordinal` is its
    // place in the selection (from 0). Returns 1, or 0 with `message` (abort: "Export aborted.").
    virtual int render(int mslIndex, int ordinal, int note, RenderedSample& sample,
                       std::string& message) = 0;
    // Tells the source which keys render() will be asked for, in that order, so that it may
    // render them ahead on other threads. Optional: without it every key renders on request.
    virtual void willRender(const std::vector<SelectedKey>& keys) { (void)keys; }
};

// Writes a rendered sample as a WAV file with its loop and root key. Returns 1, or 0 with
// `message`. The pipeline passes its WAV writer.
using WavFileWriter =
    std::function<int(const std::string& path, const RenderedSample& sample, std::string& message)>;

} // namespace tg
