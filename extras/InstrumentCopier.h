// The instrument copier: Multi-Samples of one Project, with their Key-Samples and the files
// behind them, copied into another Project.
#pragma once

#include "core/Message.h"
#include "core/Records.h"

#include <functional>
#include <string>
#include <vector>

namespace tg {

// Asked when the name a copy gets is used by Key-Sample files in the target's data folder
// already (kOverwriteQuestion); false leaves that Multi-Sample out.
using CopyOverwriteQuestion = std::function<bool(const std::string& multiSampleName)>;

struct CopyOutcome {
    std::vector<std::string> names; // the names the copies got, in order
    int files = 0;                  // Key-Sample files copied
    int leftOut = 0;                // Multi-Samples the question kept out
};

// Appends copies of the Multi-Samples `indices` of `from` (all when empty) to `to`. A copy
// keeps its name unless `to` has a Multi-Sample of that name; then the suffix rule names it
// ("Piano" becomes "Piano-1"). Where Key-Sample files of that name lie in `to`'s data folder
// already, `askOverwrite` decides (empty: they are overwritten). Every Key-Sample file is
// copied whole or not at all. Returns 1, or 0 with `message`; copies made before a failure stay.
int copyInstruments(const Project& from, const std::vector<int>& indices, Project& to,
                    const CopyOverwriteQuestion& askOverwrite, CopyOutcome& outcome,
                    std::string& message);

// Copies the file `source` to `target` through a temporary file that replaces `target` only
// once it is complete. Returns 1, or 0 with `message`.
int copyFileWhole(const std::string& source, const std::string& target, std::string& message);

} // namespace tg
