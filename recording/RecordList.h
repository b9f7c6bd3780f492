// The record list of a recording run: which Multi-Samples and keys a record command covers,
// and the checks that refuse a run before anything is recorded.
#pragma once

#include "core/Message.h"
#include "core/Records.h"

#include <bitset>
#include <string>
#include <vector>

namespace tg {

class Model;

// The record commands of the main window's menu. The semi-automatic commands use the same
// ids; the mode is a separate choice.
enum RecordCommand : int {
    kRecordSelectedMultiSample = 1, // "Record selected Multi-Sample"
    kRecordSelectedProject = 2,     // "Record selected Project"
    kRecordAllProjects = 3,         // "Record all Projects"
};

// The menu text of a command ("" for an unknown id), the base of the run's title.
const char* recordCommandText(int command);

// One Multi-Sample taking part in a run.
struct RecordEntry {
    int projectIndex = 0;        // index in the model
    Project* project = nullptr;  // the model's record
    int mslIndex = 0;            // index in the Project
    TGmsl* msl = nullptr;        // the model's record
    std::bitset<kKeyCount> keys; // keys to record, by MIDI note
    int keyCount = 0;            // keys set in the mask
    int keysWithoutAudio = 0;    // of those, keys that have no audio yet
};

struct RecordList {
    std::vector<RecordEntry> entries;
    int totalKeys = 0;
    int keysWithoutAudio = 0;
};

// Builds the entries of `command`: the current Multi-Sample, every Multi-Sample of the current
// Project, or of every Project, in order. An unknown id is refused with "illegal menu id".
// No Multi-Sample at all gives an empty list and success.
Result buildRecordList(Model& model, int command, RecordList& list);

// The checks before a run starts, in order: every entry's data path must exist, some key must
// be selected, and a run that records the hosted instrument needs an audio output device
// (`audioOutputDevice` is the preferences' choice). A refusal carries the system's text; a
// refusal of the last check has the title "Info" in `title`.
Result checkRecordList(const RecordList& list, const std::string& audioOutputDevice,
                       std::string& title);

} // namespace tg
