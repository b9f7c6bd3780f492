// Writing a SoundFont 2 bank ("sfbk"): one preset, one instrument with one zone per sample,
// and the 16-bit points of every sample, streamed to disk Key-Sample by Key-Sample.
#pragma once

#include "audiofile/WaveFormat.h"
#include "core/AtomicFile.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace tg {

// One Key-Sample for the bank: its converted audio and where it sits on the keyboard.
struct Sf2KeySample {
    int ordinal = 0;   // Multi-Sample ordinal in the export, for the sample name
    int note = 60;     // MIDI note: the original pitch
    WaveFormat format; // 16-bit expected; 8/24-bit are brought to 16 bits
    const std::vector<uint8_t>* data = nullptr; // WAV byte image
    bool hasLoop = false;
    int32_t loopStart = 0; // frames, first loop frame
    int32_t loopEnd = 0;   // frames, last loop frame (inclusive)
    uint8_t lowKey = 0, highKey = 127;
    uint8_t lowVelocity = 0, highVelocity = 127;
};

class SoundFont2File {
  public:
    SoundFont2File() = default;
    ~SoundFont2File(); // an unfinished bank is thrown away; a file it would replace stays
    SoundFont2File(const SoundFont2File&) = delete;
    SoundFont2File& operator=(const SoundFont2File&) = delete;

    // Starts the bank (in a temporary file beside `path`) and writes everything up to the
    // sample data. `expectedKeySamples` sizes the sample table.
    int open(const std::string& path, const std::string& bankName, size_t expectedKeySamples,
             std::string& message);
    // Appends the points of one Key-Sample (two linked samples when stereo) and its zones.
    int add(const Sf2KeySample& keySample, std::string& message);
    // Writes the preset, instrument and sample headers, patches every chunk size and puts the
    // bank in place of whatever was at the path.
    int finish(std::string& message);
    // Throws an unfinished bank away.
    void discard();

  private:
    struct SampleEntry {
        std::string name;
        uint32_t start = 0, end = 0, loopStart = 0, loopEnd = 0; // points in "smpl"
        uint32_t rate = 44100;
        uint8_t pitch = 60;
        uint16_t link = 0, type = 1;
        bool loop = false;
        uint8_t lowKey = 0, highKey = 127, lowVelocity = 0, highVelocity = 127;
    };

    int writeBytes(const std::string& bytes);
    int writeChannel(const Sf2KeySample& keySample, int channel, size_t frames,
                     std::string& message);
    int patchSize(long chunkStart, long chunkEnd);
    int fail(std::string& message, const char* format);

    std::unique_ptr<AtomicFile> atomic_;
    std::FILE* file_ = nullptr;         // the atomic file's stream while the bank is open
    std::vector<uint8_t> channelBytes_; // one channel's points, reused from sample to sample
    std::string path_;
    std::string bankName_;
    std::vector<SampleEntry> samples_;
    uint32_t points_ = 0; // points written to "smpl" so far
    long riffStart_ = 0, sdtaStart_ = 0, smplStart_ = 0;
};

} // namespace tg
