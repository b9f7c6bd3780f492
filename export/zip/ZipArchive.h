// Writing zip archives (stored or deflated at level 9, DOS time of writing) for the zipped
// export formats.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct zip;
struct zip_source;

namespace tg {

// How an entry's bytes are kept in the archive.
enum class ZipMethod {
    Deflate, // deflated at level 9: for text, which shrinks to a fraction
    Store,   // as they are: for audio, which deflate hardly shrinks and players stream from
};

// One archive being written. Entries are held until close(), which writes the local
// headers, the central directory and the end record in one go, through a temporary file that
// replaces the one at the path only when the whole archive is written.
class ZipArchive {
  public:
    ZipArchive();
    ~ZipArchive(); // an archive that was never closed is discarded, leaving no file
    ZipArchive(const ZipArchive&) = delete;
    ZipArchive& operator=(const ZipArchive&) = delete;

    // Starts a new archive for `path` (written at close()). Returns 1, or 0 with "bad zip".
    int create(const std::string& path, std::string& message);
    // Adds `bytes` under `entryName`. Returns 1, or 0 with "write error".
    int addBytes(const std::string& entryName, std::vector<uint8_t> bytes, std::string& message,
                 ZipMethod method = ZipMethod::Deflate);
    // Adds the file at `path` under `entryName`; its bytes are read at close(), in pieces.
    // Returns 1, or 0 with "write error" (also when the file cannot be read now).
    int addFile(const std::string& entryName, const std::string& path, std::string& message,
                ZipMethod method = ZipMethod::Deflate);
    // Writes the archive. Returns 1, or 0 with "bad zip" ("Export aborted." when the abort
    // flag given to watchAbortFlag() was set while writing).
    int close(std::string& message);
    // A set `*abortFlag` stops close() between pieces of the archive; nothing is left behind.
    void watchAbortFlag(const std::atomic<bool>* abortFlag) { abortFlag_ = abortFlag; }

  private:
    int addSource(const std::string& entryName, struct zip_source* source, ZipMethod method,
                  std::string& message);

    struct zip* archive_ = nullptr;
    const std::atomic<bool>* abortFlag_ = nullptr;
    // Buffers handed to the archive must live until close().
    std::vector<std::unique_ptr<std::vector<uint8_t>>> buffers_;
};

// Progress report of long work: fraction 0.0-1.0 and a text for the progress dialog.
using ProgressFunction = std::function<void(double fraction, const std::string& text)>;

// Zips every regular file directly inside `folder` into a new archive at `zipPath`, each
// under its bare file name, in name order; WAV files are stored, everything else deflated. Before
// each file `progress` (if set) gets `progressText` and i / number of files; a set `*abortFlag`
// stops the work (returns 0 with "Export aborted."). Returns 1, or 0 with the zip layer's message.
int zipFolderFiles(const std::string& folder, const std::string& zipPath,
                   const std::string& progressText, const ProgressFunction& progress,
                   const std::atomic<bool>* abortFlag, std::string& message);

} // namespace tg
