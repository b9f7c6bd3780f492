// The batch auto-note/auto-loop job over the Key-Samples of a Multi-Sample or Project.
#pragma once

#include "analysis/KeySampleFile.h"
#include "analysis/LevelOperations.h"
#include "analysis/LoopScoring.h"
#include "core/Records.h"

#include <functional>
#include <string>

namespace tg {

enum class LoopSource { Settings, LoadedKey };

struct BatchAutoOptions {
    bool autoNote = true;  // "Auto-Note (using the Multi-Sample Record Settings)"
    bool autoLoop = false; // "Auto-Loop"
    LoopSource loopSource = LoopSource::Settings;
    bool equalNoteLength =
        false; // "Make all Note Lengths equal the loaded Key-Sample's Note Length"
    bool equalSilence =
        false; // "Set all Silence Markers equal the loaded Key-Sample's Silence Markers"
    bool releaseOff = false; // "Turn Release off"
    int loadedMsl = -1;      // the loaded Key-Sample (reference of the options above)
    int loadedNote = -1;
    LoopScanOptions scan; // instruction set and threads of the loop search
    // Told of each Key-Sample whose markers are final, on the job's thread; a job run on a
    // copy of the Project hands exactly these keys back.
    std::function<void(const KeyRef&)> keyDone;
};

// Runs auto-note and/or auto-loop on every Key-Sample with audio of the scope (`scope` is
// MultiSample for Multi-Sample `msl`, or Project) and stores the markers in the key records.
// Progress text "Multi-Sample: %1  Working on Key: %2". A file that cannot be read stops the
// job with "Error reading data from disk:\n%1". Returns 1, 0, or kJobCancelled (the key being
// searched keeps its markers; keys done before keep their new ones).
int batchAutoNoteLoop(Project& project, KeyScope scope, int msl, const BatchAutoOptions& options,
                      const JobProgress& progress, std::string& message);

} // namespace tg
