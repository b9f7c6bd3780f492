// The fixed table of recording formats the user picks from, and the format record of a name.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstdint>

namespace tg {

constexpr int kRecordFormatCount = 28;
constexpr int kRecordFormatNameSize = 28; // 27 characters and the terminator

struct RecordFormatRow {
    uint32_t code;     // capability bit (first twenty rows) or our own 24-bit code
    const char* name;  // what the Multi-Sample stores under "msl_AudioInFormat"
    uint32_t rate;     // Hz
    uint16_t channels; // 1 or 2
    uint16_t bits;     // 8, 16 or 24
};

// The 28 rows in the order the user sees them.
const RecordFormatRow* recordFormatTable();

// The row with exactly this name, or null.
const RecordFormatRow* findRecordFormat(const char* name);

// Fills `record` (PCM, channels, rate, block align, bytes per second, bits, no extra bytes)
// from the row named `name`. An unknown name leaves channels and bits 0 (and so block align
// and bytes per second 0) and returns 0.
int formatFromName(const char* name, WaveFormat& record);

} // namespace tg
