// Writing zip archives (deflate level 9, DOS time of writing) for the zipped export formats.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct zip;

namespace tg {

// One archive being written. Entries are held until close(), which writes the local
// headers, the central directory and the end record in one go.
class ZipArchive {
public:
    ZipArchive();
    ~ZipArchive(); // an archive that was never closed is discarded, leaving no file
    ZipArchive(const ZipArchive&) = delete;
    ZipArchive& operator=(const ZipArchive&) = delete;

    // Creates (or truncates) the archive at `path`. Returns 1, or 0 with "bad zip".
    int create(const std::string& path, std::string& message);
    // Adds `bytes` under `entryName`. Returns 1, or 0 with "write error".
    int addBytes(const std::string& entryName, std::vector<uint8_t> bytes, std::string& message);
    // Adds the file at `path` under `entryName`. Returns 1, or 0 with "write error".
    int addFile(const std::string& entryName, const std::string& path, std::string& message);
    // Writes the archive. Returns 1, or 0 with "bad zip".
    int close(std::string& message);

private:
    int setEntryOptions(int64_t index, std::string& message);

    struct zip* archive_ = nullptr;
    // Buffers handed to the archive must live until close().
    std::vector<std::unique_ptr<std::vector<uint8_t>>> buffers_;
};

// Progress report of long work: fraction 0.0-1.0 and a text for the progress dialog.
using ProgressFunction = std::function<void(double fraction, const std::string& text)>;

// Zips every regular file directly inside `folder` into a new archive at `zipPath`, each
// under its bare file name, in name order. Before each file `progress` (if set) gets
// `progressText` and i / number of files; a set `*abortFlag` stops the work (returns 0 with
// "Export aborted."). Returns 1, or 0 with the zip layer's message.
int zipFolderFiles(const std::string& folder, const std::string& zipPath,
                   const std::string& progressText, const ProgressFunction& progress,
                   const bool* abortFlag, std::string& message);

} // namespace tg
