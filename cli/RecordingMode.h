// The recording mode chosen when a Project was made with `new`: a terminal session has no
// wizard that opens the record dialog at once in that mode, so the choice is kept in the
// user's Tonegrabber.ini, by project file, for the `record` runs that follow.
#pragma once

#include <string>

namespace tg::cli {

// Keeps (or forgets) that `projectFile` is recorded semi-automatically. Returns 1, or 0 with
// a message when the settings file cannot be written.
int rememberSemiAutomatic(const std::string& projectFile, bool semi, std::string& message);

// True when `projectFile` was made for semi-automatic recording.
bool madeForSemiAutomatic(const std::string& projectFile);

} // namespace tg::cli
