// Estimate of the export's size against the free space of the destination drive.
#include "export/FreeSpace.h"

#include "export/ExportSettings.h"
#include "export/KeySampleFile.h"

#include <sys/statvfs.h>

#include <algorithm>
#include <filesystem>
#include <limits>

namespace tg {

namespace {
constexpr uint64_t kGraceBytes = 5242880; // 5 MiB
}

int64_t estimatedFrames(const TGmsl_key& key)
{
    const int64_t loopLength = int64_t(key.Loop_Out) - key.Loop_In;
    const bool loopUsable = key.loopMode != 0 && key.Loop_In >= key.Note_In &&
                            key.Loop_Out <= key.Note_Out && loopLength >= 6;
    if (!loopUsable)
        return int64_t(key.Note_Out) + 1 - key.Note_In;
    if (key.loopMode == 2)
        return 2 * loopLength + 1 - key.bfxfadeLen;
    return loopLength + 1;
}

uint64_t estimateExportBytes(const Project& project, uint32_t word, const WaveFormatProbe& probe)
{
    constexpr uint64_t kUnreadable = std::numeric_limits<uint64_t>::max();
    const uint32_t rate = targetRate(word, 44100);
    const uint16_t bits = targetBits(word, 16);
    const uint16_t channels = targetChannels(word, 2);
    uint64_t total = 0;
    const int count = std::clamp(project.mslCount, 0, kMaxMultiSamples);
    for (int m = 0; m < count; ++m) {
        const TGmsl& msl = project.msl[m];
        for (int note = 0; note < kKeyCount; ++note) {
            const TGmsl_key& key = msl.keys[note];
            if (!isExportable(key))
                continue;
            WaveFormat format;
            if (!probe || !probe(keySampleFilePath(project, msl, note), format) ||
                format.nSamplesPerSec == 0)
                return kUnreadable;
            const int64_t frames = std::max<int64_t>(0, estimatedFrames(key));
            const uint64_t converted =
                static_cast<uint64_t>(double(frames) * rate / format.nSamplesPerSec);
            total += converted * channels * (bits / 8);
        }
    }
    return total;
}

bool enoughSpace(uint64_t freeBytes, uint64_t estimate)
{
    const uint64_t available = freeBytes > std::numeric_limits<uint64_t>::max() - kGraceBytes
                                   ? std::numeric_limits<uint64_t>::max()
                                   : freeBytes + kGraceBytes;
    return available >= estimate;
}

bool freeBytesAt(const std::string& folder, uint64_t& freeBytes)
{
    // A destination not created yet lies on the drive of its nearest existing parent.
    std::filesystem::path path = std::filesystem::absolute(folder.empty() ? "." : folder);
    struct statvfs info {};
    while (statvfs(path.c_str(), &info) != 0) {
        if (!path.has_relative_path())
            return false;
        path = path.parent_path();
    }
    freeBytes = uint64_t(info.f_bavail) * info.f_frsize;
    return true;
}

bool checkFreeSpace(const Project& project, uint32_t word, const std::string& destination,
                    const WaveFormatProbe& probe, std::string& message)
{
    uint64_t freeBytes = 0;
    if (!freeBytesAt(destination, freeBytes))
        freeBytes = 0;
    if (enoughSpace(freeBytes, estimateExportBytes(project, word, probe)))
        return true;
    message = kNotEnoughSpaceText;
    return false;
}

} // namespace tg
