// The NN-XT patch file (".sxt"): an IFF file that maps WAV files lying beside it to zones with
// key, velocity and loop settings. The layout is described in this folder's README.md.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tg {

// One zone: a WAV file played over a key and velocity range.
struct NnxtZone {
    std::string fileName;   // the WAV file, in the patch's own folder; plain ASCII
    int group = 0;          // index into NnxtPatch::groups, from 0
    int rootKey = 60;       // MIDI note the audio sounds at, 0..127
    int lowKey = 0;         // inclusive, 0..127
    int highKey = 127;      // inclusive, 0..127
    int lowVelocity = 1;    // inclusive, 1..127
    int highVelocity = 127; // inclusive, 1..127
    uint32_t frames = 0;    // length of the file's audio, frames
    bool loop = false;      // forward loop over loopStart..loopEnd while the key is held
    uint32_t loopStart = 0; // frames into the file, first looped frame
    uint32_t loopEnd = 0;   // frames into the file, last looped frame (inclusive)
};

// The whole patch: one voice group per exported layer, and the zones in file-reference order.
struct NnxtPatch {
    std::string name; // shown as the patch name (UTF-8)
    int groups = 1;   // number of voice groups
    std::vector<NnxtZone> zones;
};

// The file's bytes.
std::vector<uint8_t> nnxtPatchFile(const NnxtPatch& patch);

} // namespace tg
