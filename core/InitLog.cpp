// Writing the initialization log piece by piece.
#include "core/InitLog.h"

#include <cstdio>

namespace tg {

namespace {

void writePiece(const std::string& path, const char* mode, const std::string& text)
{
    FILE* file = std::fopen(path.c_str(), mode);
    if (!file)
        return;
    std::fwrite(text.data(), 1, text.size(), file);
    std::fclose(file);
}

} // namespace

void InitLog::begin()
{
    writePiece(path_, "wb", "(first line)\r\n\r\n");
}

void InitLog::append(const std::string& text)
{
    writePiece(path_, "ab", text);
}

} // namespace tg
