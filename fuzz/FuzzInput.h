// Hands a fuzzer's bytes to readers that take a path: an in-memory file reachable by name.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace tg::fuzz {

// One anonymous memory file per process, rewritten for every input; its /proc path opens
// like any file, so the readers run their real open/seek/read code without touching disk.
inline std::string pathWithBytes(const uint8_t* data, size_t size)
{
    static const int fd = memfd_create("tg-fuzz-input", 0);
    if (fd < 0)
        std::abort();
    if (ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size))
        std::abort();
    return "/proc/self/fd/" + std::to_string(fd);
}

} // namespace tg::fuzz
