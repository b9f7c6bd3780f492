// The preferences record (application defaults) and its file Tonegrabber.prefs: exactly
// 5872 bytes, little-endian, every field at a fixed offset.
#pragma once

#include "core/Records.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tg {

constexpr size_t kPreferencesFileSize = 5872;
constexpr int kPrefsFolderSize = 516; // stored size of SampleEditor and TempDir

// In memory the record keeps named fields; the fields called openNNNN (NNNN = file offset)
// have no use in the model, they carry export defaults and must survive a load/save at
// their place. The comment after each field gives its file offset.
struct Preferences {
    uint8_t open0[16] = {};                          // 0
    char datapath[kPathSize] = "";                   // 16: data path of new Projects
    char MIDIoutDevice[kMidiOutDeviceSize + 1] = ""; // 276, stored in 36 bytes
    uint16_t MIDIoutChannel = 0;                     // 312, 0-based
    uint16_t AutoSendReset = 1;                      // 314, flag
    uint16_t MIDIoutProgram_active = 1;              // 316, flag
    uint16_t MIDIoutProgram = 0;                     // 318, 0..127
    uint16_t MIDIoutAttackVelocity = 64;             // 320, 0..127
    uint16_t MIDIoutReleaseVelocity = 0;             // 322, 0..127
    uint16_t MIDIoutAfterTouch = 0;                  // 324, 0..127
    char AudioInDevice[kAudioInDeviceSize + 1] = ""; // 326, stored in 68 bytes
    char AudioInFormat[kAudioInFormatSize] = "44.1KHz, Stereo, 16bit"; // 394
    RecordSettings recordsettings;                                     // 432..591
    uint16_t open592 = 1;                                              // 592
    uint8_t open630 = 0;                                               // 630
    uint16_t open708 = 1;                                              // 708
    double open712 = 0.7;                                              // 712
    char SampleEditor[kPrefsFolderSize] = "";                          // 726: outside sample editor
    uint16_t open1242[2] = {6, 4};                                     // 1242
    uint16_t open1250 = 0;                                             // 1250
    char TempDir[kPrefsFolderSize] = "";                               // 1252: temporary files
    uint16_t promptWhenDeleting = 1;                                   // 1768, flag
    uint16_t showPrjWizardAtStartup = 1;                               // 1770, flag
    uint16_t open5384 = 2;                                             // 5384
    uint16_t ClickPopRedFade_in = 25;                // 5386, click/pop fade-in length
    uint16_t ClickPopRedFade_out = 25;               // 5388, click/pop fade-out length
    uint16_t loadPrjAtStartup = 1;                   // 5390, flag
    int32_t open5392[4] = {-1000, 20, 1000, 488};    // 5392
    uint16_t open5408[8] = {1, 1, 1, 1, 1, 1, 1, 0}; // 5408
    double open5424[2] = {0.9, 0.5};                 // 5424
    uint16_t open5440 = 1;                           // 5440
    char instrumentName[kNameSize] = "MyInstrument"; // 5448: default instrument name
    char secondPath[kPathSize] = "";                 // 5496: starts as the data path
    int32_t open5756[4] = {0, 15, 0, 0};             // 5756
    int32_t open5772[4] = {1, 0, 2, 1};              // 5772
    int32_t open5788 = 6;                            // 5788
    double open5792[2] = {10.0, 0.0};                // 5792
    int32_t open5808[2] = {0, 1};                    // 5808
    uint32_t open5816 = 1;                           // 5816
    uint16_t open5824[2] = {1, 1};                   // 5824
    // The file image as last read (zeros for a fresh record). Bytes outside the fields
    // above are written back from here, so a loaded file is saved back unchanged.
    std::array<uint8_t, kPreferencesFileSize> keptBytes{};
};

// A fresh record: every field at its default, the data paths "Data" in the user data folder.
Preferences defaultPreferences();

// The 5872-byte file image of `prefs`.
std::vector<uint8_t> serializePreferences(const Preferences& prefs);

// Reads a file image over `prefs` field by field. Returns false, leaving `prefs` unchanged,
// unless `size` is exactly 5872.
bool parsePreferences(const uint8_t* data, size_t size, Preferences& prefs);

// "Tonegrabber.prefs" in the user data folder.
std::string preferencesFilePath();

// Sets `prefs` to the defaults, then reads the preferences file over them if it has exactly
// 5872 bytes. Any other file, or none, keeps the defaults, without a message.
void loadPreferences(Preferences& prefs);

// Writes the preferences file, replacing the old one only once the new one is complete.
// Returns false when it cannot be written (the old file is then kept); the program does not
// report that to the user.
bool savePreferences(const Preferences& prefs);

// The preferences dialog edits the live record: it takes a snapshot of all 5872 bytes before
// it opens and puts it back when it is cancelled.
using PreferencesSnapshot = std::vector<uint8_t>;
PreferencesSnapshot takePreferencesSnapshot(const Preferences& prefs);
void restorePreferencesSnapshot(Preferences& prefs, const PreferencesSnapshot& snapshot);

} // namespace tg
