// Writing a take to its Key-Sample file, whole or not at all.
#include "recording/TakeFile.h"

#include "audiofile/WavFile.h"

#include <algorithm>
#include <limits>

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
    // The writer puts the file in place only once complete, so an earlier take stays whole.
    return writeWav(path, format, data, int32_t(bytes), nullptr, 0, nullptr, 0, message);
}

} // namespace tg
