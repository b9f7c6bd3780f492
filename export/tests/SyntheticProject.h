// Test inputs for the format writers: Projects with recorded keys and synthetic rendered
// audio, written through the program's WAV writer.
#pragma once

#include "core/Records.h"
#include "export/templates/RenderedSample.h"

#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace tg::test {

// A heap Project (the record is large) named `name`.
std::unique_ptr<Project> makeProject(const char* name);

// Adds a Multi-Sample with velocity range low..high and key range keyLow..keyHigh; returns
// its index.
int addLayer(Project& project, const char* name, int velocityLow, int velocityHigh,
             int keyLow = 0, int keyHigh = 127);

// Marks `note` present and recorded with zone mapLow..mapHigh and the given loop switch.
void addKey(Project& project, int mslIndex, int note, int mapLow, int mapHigh,
            uint8_t loopMode = 0);

// Audio that differs per layer, note and frame, so that a reader can tell samples apart.
RenderedSample syntheticSample(int mslIndex, int note, int frames, uint16_t channels,
                               uint16_t bits, bool loop);

// Renders syntheticSample() for every request and records what was asked.
class SyntheticSource : public KeySampleSource {
public:
    int frames = 1000;
    uint16_t channels = 2;
    uint16_t bits = 16;
    std::map<int, bool> loopedNotes; // notes whose audio carries a loop
    std::vector<std::tuple<int, int, int>> requests; // (mslIndex, ordinal, note)
    bool failAfterFirst = false;

    int render(int mslIndex, int ordinal, int note, RenderedSample& sample,
               std::string& message) override;
};

// The program's WAV writer, with the loop and root key in `smpl` when the sample is looped.
WavFileWriter wavFileWriter();

} // namespace tg::test
