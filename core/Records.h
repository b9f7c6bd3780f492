// The plain records of the model: Projects, Multi-Samples (TGmsl) and their 128 key records.
#pragma once

#include <cstdint>
#include <vector>

namespace tg {

// Compile-time limits of the model.
constexpr int kMaxProjects = 128;
constexpr int kMaxMultiSamples = 128;
constexpr int kKeyCount = 128;

// Sizes of the fixed text fields as they are stored in files, terminating NUL included.
// The device names and curve names may fill their stored field completely (the settings
// accessor copies up to the full size), so in memory they get one byte more for the NUL;
// writers store only the field size.
constexpr int kNameSize = 48;
constexpr int kPathSize = 260;
constexpr int kMidiOutDeviceSize = 36;
constexpr int kAudioInDeviceSize = 68;
constexpr int kAudioInFormatSize = 38;
constexpr int kCurveNameSize = 16;

constexpr int kControllerRows = 32;
constexpr int kParameterRows = 57;
constexpr int kLoopResultCount = 5;

// The record settings of a Multi-Sample. The preferences hold the same block (at file
// offset 432, 160 bytes); adding a Multi-Sample copies it over as a whole.
struct RecordSettings {
    double notelength1 = 2.5;          // seconds
    uint8_t notelength2_active = 0;    // flag
    double notelength2 = 1.5;          // seconds
    double releaselength1 = 0.0;       // seconds
    uint8_t releaselength2_active = 0; // flag
    double releaselength2 = 0.0;       // seconds
    uint8_t clickpopred = 1;           // flag: click/pop reduction fades
    uint8_t zerocrossing = 1;          // flag: snap markers to zero crossings
    int32_t latency = 21;              // recording latency compensation
    double thresPrecisionIn = 0.6;     // auto-note threshold precision at the start
    double thresPrecisionOut = 0.5;    // auto-note threshold precision at the end
    double recpause = 3.5;             // seconds between notes
    uint8_t autoloop = 0;              // flag: search loops after recording
    uint8_t autogain = 1;              // flag
    double loopsearchlength = 1.0;
    double loopstart = 30.0;
    double loopoutsearchstart = 55.0;
    double xfadelength = 0.2;
    char xfadetype[kCurveNameSize + 1] = "Exponential^2"; // up to 16 characters
    double bfxfadelength = 0.5;
    char bfxfadetype[kCurveNameSize + 1] = "Exponential^2"; // up to 16 characters
};

// One key record (one MIDI note) of a Multi-Sample. Marker positions are frame indices
// into the Key-Sample's own recording; end markers are inclusive.
struct TGmsl_key {
    uint8_t keyState = 0;      // 1 = slot in use (selected for recording, exported with audio)
    uint8_t hasAudio = 0;      // 1 = recorded audio exists; never stored in the project file
    uint8_t locked = 0;        // 1 = a run that keeps locked keys skips it
    uint8_t autoGainXFade = 1; // automatic gain crossfade (loopMode 1)
    uint8_t mapLowFlag = 1;    // 1 = mapLow set by the key-range mapping, 0 = by hand
    uint8_t mapLow = 0;        // low note of the zone, 0..127
    uint8_t mapHighFlag = 1;   // 1 = mapHigh set by the key-range mapping, 0 = by hand
    uint8_t mapHigh = 0;       // high note of the zone, 0..127
    char name[kNameSize] = "Noname";
    int32_t Silence_In = 0;  // frames
    int32_t Silence_Out = 0; // frames, inclusive
    int32_t Note_In = 0;     // frames
    int32_t Note_Out = 0;    // frames, inclusive
    int32_t Release_In = 0;  // frames
    int32_t Release_Out = 0; // frames, inclusive
    uint8_t releaseOn = 0;   // "Release ON" / "Release OFF"
    uint8_t loopMode = 0;    // 0 loop off, 1 crossfade loop, 2 backward-forward crossfade loop
    uint8_t clickpopred = 1; // apply the click/pop fades
    uint8_t zerocrossing = 1;
    int32_t Loop_In = 0;        // frames
    int32_t Loop_Out = 0;       // frames, inclusive
    int32_t LoopSearch_In = 0;  // frames
    int32_t LoopSearch_Out = 0; // frames
    int32_t LoopSearch_Len = 0; // frames
    int32_t loopResults[kLoopResultCount] = {-1, -1, -1, -1, -1}; // further loop positions
    int32_t xfadeLen = 0;       // frames, loopMode 1
    int32_t bfxfadeLen = 0;     // frames, loopMode 2
    uint8_t xfadeCurve = 2;     // index into the fade-curve table
    uint8_t bfxfadeCurve = 2;   // index into the fade-curve table
    int32_t reserved1 = 0;      // kept and saved, meaning open
    int32_t reservedA[6] = {};  // kept and saved, meaning open
    int32_t reservedB[6] = {};  // kept and saved, meaning open
};

// A new key record for MIDI note `note`: the defaults above with its zone on its own note.
TGmsl_key makeNewKey(int note);

// A Multi-Sample: one instrument layer with its devices, settings and 128 key records.
struct TGmsl {
    char name[kNameSize] = "";
    char MIDIoutDevice[kMidiOutDeviceSize + 1] = ""; // up to 36 characters
    uint16_t MIDIoutChannel = 0; // 0-based
    uint16_t AutoSendReset = 1;
    uint16_t controllerTable[kControllerRows][4] = {};
    uint16_t parameterTable[kParameterRows][2] = {};
    uint16_t MIDIoutProgram_active = 1;
    uint16_t MIDIoutProgram = 0;
    uint16_t MIDIoutAttackVelocity = 64;
    uint16_t MIDIoutReleaseVelocity = 0;
    uint16_t MIDIoutAfterTouch = 0;
    char AudioInDevice[kAudioInDeviceSize + 1] = ""; // up to 68 characters
    char AudioInFormat[kAudioInFormatSize] = "";      // up to 36 characters
    RecordSettings recordsettings;
    int32_t range_start = 0; // velocity range low, 0..127
    int32_t range_end = 127; // velocity range high, 0..127
    int32_t mapTo = 0;       // non-zero: the layer has no velocity range
    TGmsl_key keys[kKeyCount];
    uint16_t KBrangeIn = 48;  // lowest key to record
    uint16_t KBrangeOut = 79; // highest key to record
    // One entry per audio input device: the chosen left/right channel, -1 = not chosen.
    std::vector<int32_t> audioInChannelL;
    std::vector<int32_t> audioInChannelR;

    TGmsl();
};

// A Project: a named set of up to 128 Multi-Samples. Large (about 3 MB): allocate on the heap.
struct Project {
    TGmsl msl[kMaxMultiSamples];
    char name[kNameSize] = "";
    char projectDir[kPathSize] = ""; // folder of the project file; empty until saved or loaded
    // The project file's own name in projectDir, which a save goes back to: a longer name than
    // `name` holds, or another spelling of the extension, would otherwise name a different file.
    // Empty until saved or loaded.
    char fileName[kPathSize] = "";
    char dataPath[kPathSize] = "";   // folder of the Key-Sample WAV files
    int32_t mslCount = 0;            // Multi-Samples in use, 0..128
    int32_t currentMsl = 0;
    int32_t topMsl = 0;              // first visible row of the Multi-Sample list
    int32_t viewValue = 0;           // kept and saved, meaning open
    uint16_t viewKey = 65535;        // not saved
    uint8_t modified = 0;            // unsaved changes
};

} // namespace tg
