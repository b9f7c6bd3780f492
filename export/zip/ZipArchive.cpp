// The zip layer over libzip: every entry deflated at level 9 and stamped with the time of writing.
#include "export/zip/ZipArchive.h"

#include <zip.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tg {

namespace {
const char kWriteError[] = "write error";
const char kBadZip[] = "bad zip";
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
    int error = 0;
    archive_ = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    if (!archive_) {
        message = kBadZip;
        return 0;
    }
    return 1;
}

int ZipArchive::setEntryOptions(int64_t index, std::string& message)
{
    const auto entry = static_cast<zip_uint64_t>(index);
    if (zip_set_file_compression(archive_, entry, ZIP_CM_DEFLATE, 9) != 0 ||
        zip_file_set_mtime(archive_, entry, std::time(nullptr), 0) != 0) {
        message = kWriteError;
        return 0;
    }
    return 1;
}

int ZipArchive::addBytes(const std::string& entryName, std::vector<uint8_t> bytes,
                         std::string& message)
{
    if (!archive_) {
        message = kWriteError;
        return 0;
    }
    buffers_.push_back(std::make_unique<std::vector<uint8_t>>(std::move(bytes)));
    const std::vector<uint8_t>& held = *buffers_.back();
    zip_source_t* source = zip_source_buffer(archive_, held.data(), held.size(), 0);
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
    return setEntryOptions(index, message);
}

int ZipArchive::addFile(const std::string& entryName, const std::string& path,
                        std::string& message)
{
    // Read now rather than at close(): a file that cannot be read is this entry's failure.
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        message = kWriteError;
        return 0;
    }
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (in.bad()) {
        message = kWriteError;
        return 0;
    }
    return addBytes(entryName, std::move(bytes), message);
}

int ZipArchive::close(std::string& message)
{
    if (!archive_) {
        message = kBadZip;
        return 0;
    }
    if (zip_close(archive_) != 0) {
        zip_discard(archive_);
        archive_ = nullptr;
        buffers_.clear();
        message = kBadZip;
        return 0;
    }
    archive_ = nullptr;
    buffers_.clear();
    return 1;
}

int zipFolderFiles(const std::string& folder, const std::string& zipPath,
                   const std::string& progressText, const ProgressFunction& progress,
                   const bool* abortFlag, std::string& message)
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
    for (size_t i = 0; i < files.size(); ++i) {
        if (progress)
            progress(static_cast<double>(i) / static_cast<double>(files.size()), progressText);
        if (abortFlag && *abortFlag) {
            message = "Export aborted.";
            return 0;
        }
        if (!archive.addFile(files[i].filename().string(), files[i].string(), message))
            return 0;
    }
    return archive.close(message);
}

} // namespace tg
