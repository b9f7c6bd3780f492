// The Decent Sampler preset (".dspreset"): an XML description that maps WAV files in a
// "Samples" folder beside it to keys and velocities, one group per velocity layer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// One <sample> zone: a WAV file played over a key and velocity range.
struct DecentZone {
    std::string path;      // relative to the preset, "Samples/<file>.wav"
    int rootNote = 60;     // MIDI note the audio sounds at
    int loNote = 0;        // lowest key, inclusive
    int hiNote = 127;      // highest key, inclusive
    bool release = false;  // plays on note-off (the Key-Sample's release part)
    bool loop = false;     // loop the frames loopStart..loopEnd while the key is held
    int32_t loopStart = 0; // frames into the file, first looped frame
    int32_t loopEnd = 0;   // frames into the file, last looped frame (inclusive)
};

// One <group>: the zones of one Multi-Sample (velocity layer).
struct DecentGroup {
    std::string name;        // the Multi-Sample's name, as stored
    bool hasVelocity = true; // false: the layer answers every velocity
    int loVel = 0;           // inclusive, 0..127
    int hiVel = 127;         // inclusive, 0..127
    std::vector<DecentZone> zones;
};

// The whole preset text (UTF-8, LF line ends).
std::string decentPresetXml(const std::vector<DecentGroup>& groups);

} // namespace tg
