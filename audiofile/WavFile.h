// Reading and writing WAV files: header reader, full reader, writer and in-place format change.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// The sampler loop and root key stored in a `smpl` chunk of a written WAV file.
struct WavLoopInfo {
    int32_t loopStart = 0; // frame of the first looped sample
    int32_t loopEnd = 0;   // frame of the last looped sample (inclusive)
    int32_t rootKey = 60;  // MIDI unity note, 0..127
};

// Reads format, frame count, loop points and root key without the audio. Loop start, loop end
// and root key are -1 when the file has no usable `smpl` chunk. Returns 1, or 0 with `message`.
int readWavHeader(const std::string& path, WaveFormat& format, int32_t& loopStart, int32_t& loopEnd,
                  int32_t& rootKey, int32_t& frames, std::string& message);

// Reads format and the bytes of the `data` chunk (its size rounded up to even, as the RIFF pad
// rule says). On failure `data` is empty. Returns 1, or 0 with `message`.
int readWav(const std::string& path, WaveFormat& format, std::vector<uint8_t>& data,
            std::string& message);

// Writes a 16-byte PCM `fmt `, one `data` chunk made of the three buffers in turn (a null
// buffer counts as empty), an optional `smpl` chunk with one forward loop, and the closing
// "tngb" chunk. An odd data chunk is followed by a pad byte only when a `smpl` chunk follows.
// Returns 1, or 0 with `message`.
int writeWav(const std::string& path, const WaveFormat& format, const uint8_t* a, int32_t aBytes,
             const uint8_t* b, int32_t bBytes, const uint8_t* c, int32_t cBytes,
             std::string& message, const WavLoopInfo* loop = nullptr);

// Writes one buffer as a WAV file.
int writeWav(const std::string& path, const WaveFormat& format, const std::vector<uint8_t>& data,
             std::string& message, const WavLoopInfo* loop = nullptr);

// Rewrites the file at `path` in the format `destination` (rate, channels, bits), mixing
// stereo to mono and averaging when the rate goes down. A file already in that format is left
// alone. Returns 1, or 0 with `message`.
int convertWavFile(const std::string& path, const WaveFormat& destination, std::string& message);

} // namespace tg
