// Where a zip archive's bytes go: a libzip write source over the whole-or-nothing file writer,
// so an archive appears complete or not at all and an existing one survives a failed export.
#pragma once

#include <string>

struct zip_source;

namespace tg {

// A libzip source that writes the archive at `path` through an AtomicFile (temporary file in
// the same folder, synced and renamed over `path` when libzip commits). It reads as a missing
// file, so libzip always starts a new archive. Returns null when libzip cannot make the source.
// The source is handed to zip_open_from_source(), which then owns it.
struct zip_source* createZipFileOutput(const std::string& path);

} // namespace tg
