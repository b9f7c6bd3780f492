// Whole-or-nothing file writing: temporary file, sync, rename, sync of the folder.
#include "core/AtomicFile.h"

#include "core/FolderSyncBatch.h"
#include "core/ScratchFolders.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tg {

namespace {

constexpr size_t kStreamBufferBytes = size_t(1) << 20;

// The mode a new file gets from open(2) with 0666: mkstemp's 0600 would hide every file we
// write from the user's other programs and from other users sharing the folder.
mode_t defaultFileMode()
{
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// A symbolic link is written through, so that the link stays a link and the file it names is
// the one replaced.
std::string resolvedTarget(const std::string& target)
{
    std::error_code error;
    if (std::filesystem::is_symlink(target, error)) {
        const auto real = std::filesystem::canonical(target, error);
        if (!error)
            return real.string();
    }
    return target;
}

std::string parentFolder(const std::string& path)
{
    const std::filesystem::path parent = std::filesystem::path(path).parent_path();
    return parent.empty() ? std::string(".") : parent.string();
}

} // namespace

bool syncFolder(const std::string& folder)
{
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool ok = fsync(descriptor) == 0;
    ::close(descriptor);
    return ok;
}

bool syncParentFolder(const std::string& path)
{
    return syncFolder(parentFolder(path));
}

AtomicFile::AtomicFile(std::string target) : target_(resolvedTarget(target)) {}

AtomicFile::~AtomicFile()
{
    discard();
}

void AtomicFile::remember(int error)
{
    failed_ = true;
    if (error_ == 0)
        error_ = error != 0 ? error : EIO;
}

bool AtomicFile::open()
{
    discard();
    failed_ = false;
    error_ = 0;
    const std::filesystem::path target(target_);
    temporary_ = (std::filesystem::path(parentFolder(target_)) /
                  ("." + target.filename().string() + ".tg-XXXXXX"))
                     .string();
    const int descriptor = mkostemp(temporary_.data(), O_CLOEXEC);
    if (descriptor < 0) {
        remember(errno);
        temporary_.clear();
        return false;
    }
    struct stat existing {};
    if (::stat(target_.c_str(), &existing) == 0 && S_ISREG(existing.st_mode)) {
        fchmod(descriptor, existing.st_mode & 07777);
        // Keeps a shared file's owner where we may (as root); a user's own file keeps theirs.
        const int ownerKept = fchown(descriptor, existing.st_uid, existing.st_gid);
        (void)ownerKept;
    } else {
        fchmod(descriptor, defaultFileMode());
    }
    stream_ = fdopen(descriptor, "wb");
    if (!stream_) {
        remember(errno);
        ::close(descriptor);
        ::unlink(temporary_.c_str());
        temporary_.clear();
        return false;
    }
    buffer_ = static_cast<char*>(std::malloc(kStreamBufferBytes));
    if (buffer_)
        std::setvbuf(stream_, buffer_, _IOFBF, kStreamBufferBytes);
    return true;
}

bool AtomicFile::write(const void* data, size_t size)
{
    if (!stream_) {
        remember(EBADF);
        return false;
    }
    if (size == 0)
        return true;
    if (std::fwrite(data, 1, size, stream_) != size) {
        remember(errno);
        return false;
    }
    return true;
}

bool AtomicFile::commit()
{
    if (!stream_) {
        remember(EBADF);
        return false;
    }
    if (std::fflush(stream_) != 0 || std::ferror(stream_))
        remember(errno);
    const bool durable = !isInScratchFolder(target_);
    if (!failed_ && durable && fsync(fileno(stream_)) != 0)
        remember(errno);
    const int closed = std::fclose(stream_);
    stream_ = nullptr;
    std::free(buffer_);
    buffer_ = nullptr;
    if (closed != 0)
        remember(errno);
    if (!failed_ && std::rename(temporary_.c_str(), target_.c_str()) != 0)
        remember(errno);
    if (failed_) {
        ::unlink(temporary_.c_str());
        temporary_.clear();
        return false;
    }
    temporary_.clear();
    // The new file is complete either way; a folder that cannot be synced only weakens the
    // guarantee after a power cut, so it is not reported as a failed write.
    if (durable) {
        const std::string folder = parentFolder(target_);
        if (!FolderSyncBatch::takeFolderSync(folder))
            syncFolder(folder);
    }
    return true;
}

void AtomicFile::discard()
{
    if (stream_) {
        std::fclose(stream_);
        stream_ = nullptr;
    }
    std::free(buffer_);
    buffer_ = nullptr;
    if (!temporary_.empty()) {
        ::unlink(temporary_.c_str());
        temporary_.clear();
    }
}

bool replaceFileContents(const std::string& target, const void* data, size_t size)
{
    AtomicFile file(target);
    return file.open() && file.write(data, size) && file.commit();
}

} // namespace tg
