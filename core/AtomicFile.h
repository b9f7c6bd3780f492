// Writing a file so that it appears whole or not at all: every file the program writes goes
// through here, so a crash, a full disk or a failed write never leaves a half-written file
// or destroys the one that was there before.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace tg {

// Writes into a temporary file in the target's own folder (so the final rename never crosses
// file systems); `commit()` flushes it, syncs it to disk, gives it the mode of the file it
// replaces (or the usual 0666 less the umask for a new one), renames it over the target and
// syncs the folder so that the rename itself survives a power cut (at once, or once for many
// files when a FolderSyncBatch is open on this thread). Until `commit()` succeeds the old target
// is untouched; destruction without a commit removes the temporary file. Files in a scratch
// folder (ScratchFolders.h) are renamed into place without the syncs.
//
// Thread rules: one object per writer, any thread; not for audio callbacks.
class AtomicFile {
  public:
    explicit AtomicFile(std::string target);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    // Creates the temporary file. False (with `errorNumber()` set) when the folder is not
    // writable or does not exist.
    bool open();
    // The buffered stream onto the temporary file (1 MiB buffer, for large sequential writes);
    // null before `open()` or after `commit()`/`discard()`.
    std::FILE* stream() const { return stream_; }
    // Writes all `size` bytes; false on a short write. Failures are remembered: `commit()` then
    // refuses to replace the target.
    bool write(const void* data, size_t size);
    // Marks the contents as bad (a writer that fails half way calls this or simply never commits).
    void fail() { failed_ = true; }
    // Finishes the file and puts it in place. False when anything failed on the way; the
    // target is then exactly as it was.
    bool commit();
    // Throws the temporary file away; the target stays as it was.
    void discard();

    const std::string& target() const { return target_; }
    const std::string& temporaryPath() const { return temporary_; }
    // errno of the first failure, 0 when none.
    int errorNumber() const { return error_; }

  private:
    void remember(int error);

    std::string target_;
    std::string temporary_;
    std::FILE* stream_ = nullptr;
    char* buffer_ = nullptr;
    bool failed_ = false;
    int error_ = 0;
};

// Replaces `target` by `size` bytes at once, through an AtomicFile. False on any failure,
// with the target untouched.
bool replaceFileContents(const std::string& target, const void* data, size_t size);

// Syncs `folder` so that a rename or a new file in it is on disk.
bool syncFolder(const std::string& folder);
// Syncs the folder holding `path`.
bool syncParentFolder(const std::string& path);

} // namespace tg
