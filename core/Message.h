// Messages of the core: printf-style texts written into a caller's string, and the Result
// every model operation returns.
#pragma once

#include <cstdint>
#include <string>

namespace tg {

// Formats like printf into `out`, replacing what it held. Returns 0 so that failure paths
// can end with `return setMessage(msg, ...);`.
int setMessage(std::string& out, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;

// printf-style formatting into a new string.
std::string formatText(const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;

// The outcome of a model operation: status 0 = done, 1 = refused; a refusal carries the
// message the front end shows.
struct Result {
    int32_t status = 0;
    std::string message;

    static Result done() { return {}; }
    static Result refused(std::string text) { return {1, std::move(text)}; }
    bool ok() const { return status == 0; }
};

// Copies `text` into a fixed character buffer of `size` bytes, cutting it to size - 1
// characters and always terminating it.
void copyText(char* dest, size_t size, const char* text);

template <size_t N> void copyText(char (&dest)[N], const char* text)
{
    copyText(dest, N, text);
}

} // namespace tg
