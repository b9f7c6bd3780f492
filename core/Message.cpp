// printf-style message helpers and fixed-buffer text copies.
#include "core/Message.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace tg {

static std::string vformat(const char* format, va_list args)
{
    va_list copy;
    va_copy(copy, args);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (length <= 0)
        return {};
    std::string text(static_cast<size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, args);
    text.resize(static_cast<size_t>(length));
    return text;
}

int setMessage(std::string& out, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    out = vformat(format, args);
    va_end(args);
    return 0;
}

std::string formatText(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    std::string text = vformat(format, args);
    va_end(args);
    return text;
}

void copyText(char* dest, size_t size, const char* text)
{
    if (size == 0)
        return;
    const size_t length = text ? strnlen(text, size - 1) : 0;
    if (length)
        std::memcpy(dest, text, length);
    dest[length] = '\0';
}

} // namespace tg
