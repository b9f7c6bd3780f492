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

// The loop written into an exported sample file.
struct SampleLoop {
    bool enabled = false;
    int32_t start = 0; // frames
    int32_t end = 0;   // frames, inclusive (the last frame of the loop)
};

// What an AIFF sample's INST chunk says about its key.
struct SampleInstrument {
    uint8_t rootKey = 60;
    uint8_t lowKey = 0;
    uint8_t highKey = 127;
    uint8_t lowVelocity = 1;
    uint8_t highVelocity = 127;
};

struct ExportServices {
    // How many Key-Samples the reading, rendering, converting and level services may work on at
    // once, each call on its own thread. 1: everything runs on the exporting thread, in order.
    int renderThreads = 1;

    // Full reader of a Key-Sample file.
    std::function<int(const std::string& path, KeyAudio& audio, std::string& message)>
        readKeySample;
    // Renders note, loop and release of `key` from its recording; the part after the loop up
    // to Note_Out is included.
    std::function<int(const TGmsl_key& key, const KeyAudio& audio, RenderedKey& out,
                      std::string& message)>
        render;
    // Converts `data` from `from` to `to` in place, carrying the loop points along when given.
    std::function<int(std::vector<uint8_t>& data, const WaveFormat& from, const WaveFormat& to,
                      int32_t* loopStart, int32_t* loopEnd, ChannelMode channels,
                      ResampleMode resampling, std::string& message)>
        convert;
    // The level of a recording: the larger of its left and right peak, 0..1.
    std::function<double(const KeyAudio& audio)> peakLevel;

    // WAV writer with a `smpl` chunk holding the loop (when enabled) and the root key.
    std::function<int(const std::string& path, const WaveFormat& format,
                      const std::vector<uint8_t>& data, const SampleLoop& loop, int rootKey,
                      std::string& message)>
        writeWav;
    // AIFF writer with MARK (when the loop is enabled), INST and NAME chunks.
    std::function<int(const std::string& path, const WaveFormat& format,
                      const std::vector<uint8_t>& data, const SampleLoop& loop,
                      const SampleInstrument& instrument, const std::string& name,
                      std::string& message)>
        writeAiff;
};

} // namespace tg
