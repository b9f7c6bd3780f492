// The zip layer over libzip: entries stored or deflated at level 9, stamped with the time of
// writing, and the archive written whole or not at all.
#include "export/zip/ZipArchive.h"

#include "export/zip/ZipFileOutput.h"

#include <zip.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <ctime>
#include <filesystem>

namespace tg {

namespace {
const char kWriteError[] = "write error";
const char kBadZip[] = "bad zip";
const char kAborted[] = "Export aborted.";

// Audio is stored rather than deflated at level 9: deflate gains a few percent on sample data
// at many times the cost of writing it, and a sampler can play a stored member straight from the
// archive instead of unpacking it first. The description text still shrinks well and is deflated.
ZipMethod methodForFile(const std::filesystem::path& file)
{
    std::string extension = file.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return extension == ".wav" ? ZipMethod::Store : ZipMethod::Deflate;
}
} // namespace

ZipArchive::ZipArchive() = default;

ZipArchive::~ZipArchive()
{
    if (archive_)
        zip_discard(archive_);
}

int ZipArchive::create(const std::string& path, std::string& message)
{
    if (archive_) {
        message = kBadZip;
        return 0;
    }
    zip_source_t* output = createZipFileOutput(path);
    if (!output) {
        message = kBadZip;
        return 0;
    }
    zip_error_t error;
    zip_error_init(&error);
    archive_ = zip_open_from_source(output, ZIP_CREATE | ZIP_TRUNCATE, &error);
    zip_error_fini(&error);
    if (!archive_) {
        zip_source_free(output);
        message = kBadZip;
        return 0;
    }
    return 1;
}

int ZipArchive::addSource(const std::string& entryName, zip_source_t* source, ZipMethod method,
                          std::string& message)
{
    if (!source) {
        message = kWriteError;
        return 0;
    }
    const zip_int64_t index =
        zip_file_add(archive_, entryName.c_str(), source, ZIP_FL_OVERWRITE | ZIP_FL_ENC_GUESS);
    if (index < 0) {
        zip_source_free(source);
        message = kWriteError;
        return 0;
    }
    const auto entry = static_cast<zip_uint64_t>(index);
    const bool stored = method == ZipMethod::Store;
    if (zip_set_file_compression(archive_, entry, stored ? ZIP_CM_STORE : ZIP_CM_DEFLATE,
                                 stored ? 0 : 9) != 0 ||
        zip_file_set_mtime(archive_, entry, std::time(nullptr), 0) != 0) {
        message = kWriteError;
        return 0;
    }
    return 1;
}

int ZipArchive::addBytes(const std::string& entryName, std::vector<uint8_t> bytes,
                         std::string& message, ZipMethod method)
{
    if (!archive_) {
        message = kWriteError;
        return 0;
    }
    buffers_.push_back(std::make_unique<std::vector<uint8_t>>(std::move(bytes)));
    const std::vector<uint8_t>& held = *buffers_.back();
    return addSource(entryName, zip_source_buffer(archive_, held.data(), held.size(), 0), method,
                     message);
}

int ZipArchive::addFile(const std::string& entryName, const std::string& path, std::string& message,
                        ZipMethod method)
{
    if (!archive_) {
        message = kWriteError;
        return 0;
    }
    // Checked now rather than at close(): a file that cannot be read is this entry's failure.
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) {
        message = kWriteError;
        return 0;
    }
    std::fclose(file);
    return addSource(entryName, zip_source_file(archive_, path.c_str(), 0, -1), method, message);
}

int ZipArchive::close(std::string& message)
{
    if (!archive_) {
        message = kBadZip;
        return 0;
    }
    if (abortFlag_)
        zip_register_cancel_callback_with_state(
            archive_,
            [](zip_t*, void* flag) { return *static_cast<const std::atomic<bool>*>(flag) ? 1 : 0; },
            nullptr, const_cast<std::atomic<bool>*>(abortFlag_));
    if (zip_close(archive_) != 0) {
        zip_discard(archive_);
        archive_ = nullptr;
        buffers_.clear();
        message = abortFlag_ && *abortFlag_ ? kAborted : kBadZip;
        return 0;
    }
    archive_ = nullptr;
    buffers_.clear();
    return 1;
}

int zipFolderFiles(const std::string& folder, const std::string& zipPath,
                   const std::string& progressText, const ProgressFunction& progress,
                   const std::atomic<bool>* abortFlag, std::string& message)
{
    namespace fs = std::filesystem;
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
        if (it->is_regular_file())
            files.push_back(it->path());
    if (error) {
        message = kBadZip;
        return 0;
    }
    std::sort(files.begin(), files.end());

    ZipArchive archive;
    if (!archive.create(zipPath, message))
        return 0;
    archive.watchAbortFlag(abortFlag);
    for (size_t i = 0; i < files.size(); ++i) {
        if (progress)
            progress(static_cast<double>(i) / static_cast<double>(files.size()), progressText);
        if (abortFlag && *abortFlag) {
            message = kAborted;
            return 0;
        }
        if (!archive.addFile(files[i].filename().string(), files[i].string(), message,
                             methodForFile(files[i])))
            return 0;
    }
    return archive.close(message);
}

} // namespace tg
