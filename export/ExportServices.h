// The audio work an export needs from the lower layers, as small replaceable functions:
// reading a Key-Sample, rendering its note and loop, converting, measuring its level.
#pragma once

#include "audiofile/WaveFormat.h"
#include "core/Records.h"
#include "export/ExportSettings.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tg {

// A Key-Sample's recording as read from its file.
struct KeyAudio {
    WaveFormat format;
    std::vector<uint8_t> data; // WAV byte image
};

// A rendered Key-Sample: the note with its loop, and the release part (often empty).
struct RenderedKey {
    WaveFormat format;
    std::vector<uint8_t> note;    // WAV byte image
    std::vector<uint8_t> release; // WAV byte image, same format; empty when there is none
    int32_t loopStart = 0;        // frames into `note`
    int32_t loopEnd = 0;          // frames into `note`, inclusive
};

struct ExportServices {
    // Full reader of a Key-Sample file.
    std::function<int(const std::string& path, KeyAudio& audio, std::string& message)> readKeySample;
    // Renders note, loop and release of `key` from its recording; the part after the loop up
    // to Note_Out is included.
    std::function<int(const TGmsl_key& key, const KeyAudio& audio, RenderedKey& out,
                      std::string& message)>
        render;
    // Converts `data` from `from` to `to` in place, carrying the loop points along when given.
    std::function<int(std::vector<uint8_t>& data, const WaveFormat& from, const WaveFormat& to,
                      int32_t* loopStart, int32_t* loopEnd, ChannelMode channels,
                      ResamplingMode resampling, std::string& message)>
        convert;
    // The level of a recording: the larger of its left and right peak, 0..1.
    std::function<double(const KeyAudio& audio)> peakLevel;
};

} // namespace tg
