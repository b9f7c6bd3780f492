// Checks the main window and the CLI run before a template export starts.
#pragma once

#include "core/Message.h"
#include "core/Records.h"

#include <vector>

namespace tg {

// The formats that have one loop option for all samples.
enum class SingleLoopFormat { Deluge, ProphetX, Quantum };

// Prophet-X playback rules for the selected layers (Multi-Sample indices): velocity ranges
// that overlap or leave gaps, then keys missing from a layer or with different key ranges.
// Refused with the message to show (title "Error"); the export does not start.
Result checkProphetXLayers(const Project& project, const std::vector<int>& selection);

// True when the Project holds both looped and unlooped Key-Samples (present and recorded).
bool hasMixedLoopTypes(const Project& project);

// Refused with the notice to show (title "Info") before the settings dialog when the Project
// mixes looped and unlooped Key-Samples; the "Loop all Samples" choice then decides.
Result checkLoopTypes(const Project& project, SingleLoopFormat format);

} // namespace tg
