// Folders whose files live only as long as the work that made them, such as an exporter's
// staging folder before its files are zipped into the archive the user keeps. A power cut there
// loses nothing worth keeping, so AtomicFile renames without syncing: staging 200 samples would
// otherwise wait for 200 disk flushes before the archive is even started.
#pragma once

#include <string>

namespace tg {

// Registers `folder` (an absolute path) for as long as it lives; any thread.
void addScratchFolder(const std::string& folder);
void removeScratchFolder(const std::string& folder);
// True when `path` lies inside a registered folder, at any depth.
bool isInScratchFolder(const std::string& path);

} // namespace tg
