// One folder sync per folder at the end of a run of atomic file commits.
#include "core/FolderSyncBatch.h"

#include "core/AtomicFile.h"

#include <algorithm>

namespace tg {

namespace {
thread_local FolderSyncBatch* tCurrentBatch = nullptr;
} // namespace

FolderSyncBatch::FolderSyncBatch() : outer_(tCurrentBatch)
{
    tCurrentBatch = this;
}

FolderSyncBatch::~FolderSyncBatch()
{
    finish();
    tCurrentBatch = outer_;
}

void FolderSyncBatch::finish()
{
    for (const std::string& folder : folders_)
        syncFolder(folder);
    folders_.clear();
}

bool FolderSyncBatch::takeFolderSync(const std::string& folder)
{
    FolderSyncBatch* batch = tCurrentBatch;
    if (batch == nullptr)
        return false;
    // An export writes into one or a few folders: a linear search beats any set here.
    if (std::find(batch->folders_.begin(), batch->folders_.end(), folder) == batch->folders_.end())
        batch->folders_.push_back(folder);
    return true;
}

} // namespace tg
