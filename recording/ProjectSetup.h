// The set-up record the project wizard gathers, its page checks, and the creation of a new
// Project with one Multi-Sample per velocity layer from it.
#pragma once

#include "core/Message.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

class Model;

enum class LoopComplexity { Simple = 0, Intermediate = 1, Complex = 2 };

struct ProjectSetupRecord {
    std::string name = "MyProject";
    std::string dataPath;      // an existing folder
    int audioInDeviceRow = 0;  // current row of the audio input list
    std::string audioInDevice; // its name
    int audioInChannelLeft = -1;  // the device's input channel for left; -1 = its default
    int audioInChannelRight = -1; // and for right
    std::string sampleFormat = "44.1KHz, Stereo, 16bit";
    bool automatic = true;        // false: semi-automatic recording
    bool pluginRecording = false; // the hosted instrument is the source
    std::string midiOutDevice;
    int midiChannel = 1;        // 1..16
    int midiProgram = 0;        // 0..127; 0 = no program change is sent
    int keyCount = 37;          // 37, 49, 61, 76, 88 or 128
    int velocityLayers = 1;     // 1..127
    int keyStep = 1;            // distance between recorded keys
    double noteLength = 2.5;    // seconds
    float releaseLength = 0.0f; // seconds
    bool autoLoop = false;
    LoopComplexity complexity = LoopComplexity::Intermediate;
    int loopStartPercent = 50; // 30, 50 or 70
};

constexpr const char* kPluginDeviceName = "-Vst Plugin-";

// The wizard's checks of the name and data path pages; a refusal carries the page's message.
Result checkSetupName(const Model& model, const std::string& name);
Result checkSetupDataPath(const std::string& dataPath);

// The velocity range of each of `layers` layers: the 128 velocities are split evenly and the
// spare ones go to the later layers.
struct VelocityRange {
    int low;  // 0..127
    int high; // 0..127, inclusive
};
std::vector<VelocityRange> splitVelocities(int layers);

// The keyboard range of a key count: 37 keys 48-84, 49 keys 36-84, 61 keys 36-96, 76 keys
// 28-103, 88 and 128 keys 21-108, any other count 0-127.
void keyboardRangeFor(int keyCount, uint16_t& low, uint16_t& high);

// Appends a new Project made from `setup` and makes it current. Keys `KBrangeIn`,
// `KBrangeIn` + step, ... up to `KBrangeOut` are selected for recording.
Result createProjectFromSetup(Model& model, const ProjectSetupRecord& setup);

} // namespace tg
