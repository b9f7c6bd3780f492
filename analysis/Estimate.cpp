// The time and size estimate of a recording run.
#include "analysis/Estimate.h"

#include "core/Message.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace tg {

bool parseRecordingFormat(const char* name, uint32_t& rate, uint16_t& channels, uint16_t& bits)
{
    if (name == nullptr)
        return false;
    char* end = nullptr;
    const double kHz = std::strtod(name, &end);
    if (end == name || std::strncmp(end, "KHz, ", 5) != 0 || kHz <= 0.0)
        return false;
    const char* rest = end + 5;
    if (std::strncmp(rest, "Stereo, ", 8) == 0) {
        channels = 2;
        rest += 8;
    } else if (std::strncmp(rest, "Mono, ", 6) == 0) {
        channels = 1;
        rest += 6;
    } else {
        return false;
    }
    const long b = std::strtol(rest, &end, 10);
    if (end == rest || std::strcmp(end, "bit") != 0 || (b != 8 && b != 16 && b != 24))
        return false;
    rate = static_cast<uint32_t>(std::lround(kHz * 1000.0));
    bits = static_cast<uint16_t>(b);
    return true;
}

void addMultiSampleEstimate(const TGmsl& msl, const EstimateOptions& options,
                            const LoopSpeedTable& speeds, RecordingEstimate& estimate)
{
    uint32_t rate = 44100;
    uint16_t channels = 2;
    uint16_t bits = 16;
    parseRecordingFormat(msl.AudioInFormat, rate, channels, bits);
    const WaveFormat format = makeWaveFormat(rate, channels, bits);
    double speed = 0.0;
    for (int i = 0; i < kLoopSpeedFormatCount; ++i) {
        uint32_t r;
        uint16_t c, b;
        if (parseRecordingFormat(kLoopSpeedFormatNames[i], r, c, b) && c == channels && b == bits)
            speed = speeds[static_cast<size_t>(i)];
    }

    const RecordSettings& s = msl.recordsettings;
    const double n = s.notelength1;
    const double r = s.releaselength1;
    for (const TGmsl_key& key : msl.keys) {
        if (!key.keyState || n + r <= 0.0)
            continue;
        if (key.hasAudio && options.onlyEmpty)
            continue;
        if (key.hasAudio && key.locked && options.keepLocked)
            continue;
        estimate.seconds += n + r + 0.5 + s.recpause;
        if (s.autoloop == 1) {
            const int64_t frames = static_cast<int64_t>(n * rate);
            const int64_t search = static_cast<int64_t>(frames * s.loopsearchlength / 100.0);
            const int64_t start = static_cast<int64_t>(frames * s.loopoutsearchstart / 100.0);
            const double work = static_cast<double>(frames - search - start) * search / 1e7;
            if (speed > 0.0)
                estimate.seconds += work * speed;
        }
        estimate.bytes += static_cast<uint64_t>(rate * (n + r + 0.5) * format.nBlockAlign) + 64;
    }
}

std::string formatEstimateTime(double seconds)
{
    const int64_t total = seconds > 0.0 ? static_cast<int64_t>(seconds) : 0;
    return formatText("%lld h %lld min %lld sec", static_cast<long long>(total / 3600),
                      static_cast<long long>(total / 60 % 60), static_cast<long long>(total % 60));
}

std::string formatEstimateSize(uint64_t bytes)
{
    return formatText("%llu MB", static_cast<unsigned long long>(bytes / 1048576));
}

} // namespace tg
