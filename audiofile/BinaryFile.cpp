// FILE*-based reading and writing with explicit byte order and short-read detection.
#include "audiofile/BinaryFile.h"

namespace tg {

bool BinaryFile::openForReading(const std::string& path)
{
    close();
    file_ = std::fopen(path.c_str(), "rb");
    if (!file_)
        return false;
    size_ = 0;
    if (std::fseek(file_, 0, SEEK_END) == 0) {
        long end = std::ftell(file_);
        size_ = end > 0 ? end : 0;
    }
    std::fseek(file_, 0, SEEK_SET);
    return true;
}

bool BinaryFile::openForWriting(const std::string& path)
{
    close();
    size_ = 0;
    writer_ = std::make_unique<AtomicFile>(path);
    if (!writer_->open()) {
        writer_.reset();
        return false;
    }
    file_ = writer_->stream();
    return true;
}

void BinaryFile::close()
{
    if (writer_)
        writer_.reset(); // discards the temporary file
    else if (file_)
        std::fclose(file_);
    file_ = nullptr;
}

bool BinaryFile::finish()
{
    if (writer_) {
        file_ = nullptr;
        const bool ok = writer_->commit();
        writer_.reset();
        return ok;
    }
    if (!file_)
        return false;
    bool ok = std::fclose(file_) == 0;
    file_ = nullptr;
    return ok;
}

void BinaryFile::skipClamped(uint64_t count)
{
    int64_t here = tell();
    uint64_t left = size_ > here ? static_cast<uint64_t>(size_ - here) : 0;
    seek(here + static_cast<int64_t>(count < left ? count : left));
}

int64_t BinaryFile::tell() const
{
    return file_ ? static_cast<int64_t>(std::ftell(file_)) : 0;
}

bool BinaryFile::seek(int64_t offset)
{
    if (!file_ || offset < 0 || offset > size_)
        return false;
    return std::fseek(file_, static_cast<long>(offset), SEEK_SET) == 0;
}

bool BinaryFile::skip(int64_t count)
{
    return count >= 0 && seek(tell() + count);
}

bool BinaryFile::read(void* dest, size_t count)
{
    return file_ && std::fread(dest, 1, count, file_) == count;
}

bool BinaryFile::readU16LE(uint16_t& value)
{
    uint8_t b[2];
    if (!read(b, 2))
        return false;
    value = loadU16LE(b);
    return true;
}

bool BinaryFile::readU32LE(uint32_t& value)
{
    uint8_t b[4];
    if (!read(b, 4))
        return false;
    value = loadU32LE(b);
    return true;
}

bool BinaryFile::readU16BE(uint16_t& value)
{
    uint8_t b[2];
    if (!read(b, 2))
        return false;
    value = loadU16BE(b);
    return true;
}

bool BinaryFile::readU32BE(uint32_t& value)
{
    uint8_t b[4];
    if (!read(b, 4))
        return false;
    value = loadU32BE(b);
    return true;
}

bool BinaryFile::write(const void* source, size_t count)
{
    if (writer_)
        return writer_->write(source, count); // a failure stops the commit
    if (!file_)
        return false;
    if (count == 0)
        return true;
    return std::fwrite(source, 1, count, file_) == count;
}

bool BinaryFile::writeU16LE(uint16_t value)
{
    uint8_t b[2];
    storeU16LE(b, value);
    return write(b, 2);
}

bool BinaryFile::writeU32LE(uint32_t value)
{
    uint8_t b[4];
    storeU32LE(b, value);
    return write(b, 4);
}

bool BinaryFile::writeU16BE(uint16_t value)
{
    uint8_t b[2];
    storeU16BE(b, value);
    return write(b, 2);
}

bool BinaryFile::writeU32BE(uint32_t value)
{
    uint8_t b[4];
    storeU32BE(b, value);
    return write(b, 4);
}

bool BinaryFile::writeText(const char* text)
{
    size_t n = 0;
    while (text[n])
        ++n;
    return write(text, n);
}

} // namespace tg
