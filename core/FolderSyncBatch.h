// Syncing each folder once after a run of files has been put in place, instead of once per file.
// An export writes hundreds of files into a handful of folders; every folder sync is a journal
// commit of its own, so syncing after every rename doubled the disk flushes of an export.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tg {

// While a batch is open on a thread, the AtomicFile commits made on that thread still sync each
// file's bytes before renaming it into place (so no final name ever shows a partial file), but
// leave the sync of its folder to the batch: `finish()`, or the destructor, syncs every folder
// once. A batch that ends early (an export that fails or is aborted half way) still syncs the
// folders of the files that were committed, so they survive a power cut like the rest.
//
// Batches nest: an inner batch syncs its own folders when it finishes, and the outer one takes
// over again. Commits on other threads are not affected.
//
// Thread rules: create, finish and destroy on one thread; not for audio callbacks.
class FolderSyncBatch {
  public:
    FolderSyncBatch();
    ~FolderSyncBatch();
    FolderSyncBatch(const FolderSyncBatch&) = delete;
    FolderSyncBatch& operator=(const FolderSyncBatch&) = delete;

    // Syncs every folder handed to the batch so far, each once. A folder that cannot be synced
    // (removed meanwhile) is skipped, as AtomicFile skips it: the files in it were complete.
    // The batch stays open for further commits.
    void finish();

    // Folders waiting for their sync.
    size_t pendingFolders() const { return folders_.size(); }

    // For AtomicFile: hands the sync of `folder` to the batch open on this thread. False when
    // none is open: the caller syncs the folder itself.
    static bool takeFolderSync(const std::string& folder);

  private:
    FolderSyncBatch* outer_;
    std::vector<std::string> folders_;
};

} // namespace tg
