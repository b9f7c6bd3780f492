// Writing a take to its Key-Sample file through a temporary file.
#include "recording/TakeFile.h"

#include "audiofile/WavFile.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include <unistd.h>

namespace tg {

size_t takeByteCount(const WaveFormat& format, int64_t frames, size_t bufferBytes)
{
    if (frames < 0)
        frames = 0;
    const uint64_t wanted =
        uint64_t(format.wBitsPerSample / 8) * uint64_t(frames + 1) * uint64_t(format.nChannels);
    return size_t(std::min<uint64_t>(wanted, bufferBytes));
}

int writeTakeFile(const std::string& path, const WaveFormat& format, const uint8_t* data,
                  size_t bytes, std::string& message)
{
    // The WAV writer counts bytes in 32 bits; a take that long is refused as the writer would.
    if (bytes > size_t(std::numeric_limits<int32_t>::max()) - 64) {
        message = "error writing " + path;
        return 0;
    }
    const std::string temporary = path + ".part";
    if (!writeWav(temporary, format, data, int32_t(bytes), nullptr, 0, nullptr, 0, message)) {
        std::remove(temporary.c_str());
        // The user knows the file by its own name, not by the temporary one.
        for (size_t at = message.find(temporary); at != std::string::npos;
             at = message.find(temporary, at + path.size()))
            message.replace(at, temporary.size(), path);
        return 0;
    }
    if (std::rename(temporary.c_str(), path.c_str()) != 0) {
        std::remove(temporary.c_str());
        message = "error writing " + path;
        return 0;
    }
    return 1;
}

} // namespace tg
