// A recorded two-layer Project for the further formats' tests: real Key-Sample files, the
// program's own renderer and writers, and a record of what the renderer gave each key, so
// that a test can compare the exported audio with the rendered Key-Sample.
#pragma once

#include "core/Records.h"
#include "export/ExportServices.h"
#include "tests/support/TempDir.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace tg::test {

// Layers "Soft" (velocity 1-64, mono) and "Loud" (65-127, stereo), keys 60 and 67 in each,
// key range 48-72, 16 bit at 44.1 kHz. Every key is looped with a crossfade except Loud 67;
// Soft 60 has a release part.
struct RecordedProject {
    RecordedProject();

    // Same rate, depth and channels, no resampling, no level changes, tail after the loop
    // removed: the exported audio is the rendered audio.
    static constexpr uint32_t kPlainSettings = 0x91010101;

    TempDir dir;
    std::unique_ptr<Project> project = std::make_unique<Project>();
    ExportServices services;
    // What the renderer gave each key, by (Multi-Sample index, note). Keys render on several
    // threads at once, so the map is filled under `renderedLock`.
    std::map<std::pair<int, int>, RenderedKey> rendered;
    std::mutex renderedLock;
    // The zones the export maps, by (Multi-Sample index, note): low and high key.
    std::map<std::pair<int, int>, std::pair<int, int>> zones() const;
    std::string out; // an empty folder for the export
};

// The format and audio of a WAV file, through the program's reader.
struct WavImage {
    bool ok = false;
    WaveFormat format;
    std::vector<uint8_t> data;
};
WavImage readWavImage(const std::string& path);

// The attributes of every element named `element` in `xml`, in document order.
std::vector<std::map<std::string, std::string>> xmlElements(const std::string& xml,
                                                            const std::string& element);

} // namespace tg::test
