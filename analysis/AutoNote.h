// Auto-note: setting a Key-Sample's note markers from its recording, and the note-length
// check before an export.
#pragma once

#include "audiofile/WaveFormat.h"
#include "core/Records.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace tg {

// Options of the batch dialog; the defaults are a plain auto-note after a take.
struct AutoNoteOptions {
    // Keep Note_In/Note_Out when they already describe a note (Note_In < Note_Out).
    bool keepExistingNote = false;
    // "Make all Note Lengths equal the loaded Key-Sample's Note Length": the reference
    // Key-Sample and the sample rate of its recording (Hz).
    const TGmsl_key* lengthReference = nullptr;
    uint32_t lengthReferenceRate = 0;
    // "Set all Silence Markers equal the loaded Key-Sample's Silence Markers".
    const TGmsl_key* silenceReference = nullptr;
};

// Sets Note_In and Note_Out of `key` from its recording (`data`, `bytes` in `format`) with
// the threshold precisions and the zero-crossing flag of `settings`. A key that is its own
// reference is left at its own length. Degenerate audio leaves the whole recording as note.
void autoNote(TGmsl_key& key, const WaveFormat& format, const uint8_t* data, size_t bytes,
              const RecordSettings& settings, const AutoNoteOptions& options = {});

// The note-length check before an export: 1 when every Key-Sample with audio in `msl` has a
// note; otherwise 0 with "The Note Length of the selected Key \"%d\" in the Multi-Sample
// \"%s\" is equal Zero." in `message`.
int checkNoteLengths(const TGmsl& msl, std::string& message);

// 1 when at least one Key-Sample of `msls` (count `count`) has audio; otherwise 0 with
// "There is nothing to export." in `message`.
int checkSomethingToExport(const TGmsl* msls, int count, std::string& message);

} // namespace tg
