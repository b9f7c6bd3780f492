// The libzip source protocol over AtomicFile: libzip asks whether the file exists (it does not,
// as far as it knows), then begins, writes, seeks back to patch headers, and commits or rolls
// back. An archive left without entries is removed, which here means never written.
#include "export/zip/ZipFileOutput.h"

#include "core/AtomicFile.h"

#include <zip.h>

#include <cerrno>
#include <cstdio>
#include <memory>

namespace tg {

namespace {

struct ZipFileOutput {
    std::string path;
    std::unique_ptr<AtomicFile> file;
    zip_error_t error;
};

zip_int64_t failWith(ZipFileOutput& output, int zipError, int systemError)
{
    zip_error_set(&output.error, zipError, systemError);
    return -1;
}

zip_int64_t beginWrite(ZipFileOutput& output)
{
    output.file = std::make_unique<AtomicFile>(output.path);
    if (!output.file->open()) {
        const int error = output.file->errorNumber();
        output.file.reset();
        return failWith(output, ZIP_ER_TMPOPEN, error);
    }
    return 0;
}

zip_int64_t write(ZipFileOutput& output, const void* data, zip_uint64_t length)
{
    if (!output.file || !output.file->write(data, size_t(length)))
        return failWith(output, ZIP_ER_WRITE, output.file ? output.file->errorNumber() : EBADF);
    return zip_int64_t(length);
}

zip_int64_t seekWrite(ZipFileOutput& output, void* data, zip_uint64_t length)
{
    auto* seek = ZIP_SOURCE_GET_ARGS(zip_source_args_seek_t, data, length, &output.error);
    if (seek == nullptr)
        return -1;
    if (!output.file || fseeko(output.file->stream(), off_t(seek->offset), seek->whence) != 0)
        return failWith(output, ZIP_ER_SEEK, errno);
    return 0;
}

zip_int64_t tellWrite(ZipFileOutput& output)
{
    const off_t position = output.file ? ftello(output.file->stream()) : -1;
    if (position < 0)
        return failWith(output, ZIP_ER_TELL, errno);
    return zip_int64_t(position);
}

zip_int64_t commitWrite(ZipFileOutput& output)
{
    const bool committed = output.file && output.file->commit();
    const int error = output.file ? output.file->errorNumber() : EBADF;
    output.file.reset();
    return committed ? 0 : failWith(output, ZIP_ER_WRITE, error);
}

zip_int64_t callback(void* state, void* data, zip_uint64_t length, zip_source_cmd_t command)
{
    auto& output = *static_cast<ZipFileOutput*>(state);
    switch (command) {
    case ZIP_SOURCE_SUPPORTS:
        return ZIP_SOURCE_SUPPORTS_WRITABLE;
    case ZIP_SOURCE_STAT:
        // A new archive every time: whatever is at the path is replaced on commit.
        return failWith(output, ZIP_ER_READ, ENOENT);
    case ZIP_SOURCE_OPEN:
    case ZIP_SOURCE_READ:
    case ZIP_SOURCE_SEEK:
    case ZIP_SOURCE_TELL:
        return failWith(output, ZIP_ER_OPNOTSUPP, 0);
    case ZIP_SOURCE_CLOSE:
        return 0;
    case ZIP_SOURCE_BEGIN_WRITE:
        return beginWrite(output);
    case ZIP_SOURCE_WRITE:
        return write(output, data, length);
    case ZIP_SOURCE_SEEK_WRITE:
        return seekWrite(output, data, length);
    case ZIP_SOURCE_TELL_WRITE:
        return tellWrite(output);
    case ZIP_SOURCE_COMMIT_WRITE:
        return commitWrite(output);
    case ZIP_SOURCE_ROLLBACK_WRITE:
    case ZIP_SOURCE_REMOVE:
        output.file.reset(); // discards the temporary file; the path keeps what it had
        return 0;
    case ZIP_SOURCE_ERROR:
        return zip_error_to_data(&output.error, data, length);
    case ZIP_SOURCE_FREE:
        zip_error_fini(&output.error);
        delete &output;
        return 0;
    default:
        return failWith(output, ZIP_ER_OPNOTSUPP, 0);
    }
}

} // namespace

struct zip_source* createZipFileOutput(const std::string& path)
{
    auto* output = new ZipFileOutput{path, nullptr, {}};
    zip_error_init(&output->error);
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* source = zip_source_function_create(callback, output, &error);
    zip_error_fini(&error);
    if (source == nullptr) {
        zip_error_fini(&output->error);
        delete output;
    }
    return source;
}

} // namespace tg
