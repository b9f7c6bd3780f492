// The time and size estimate of a recording run.
#include "analysis/Estimate.h"

#include "audiofile/RecordFormats.h"
#include "core/Message.h"

#include <cmath>

namespace tg {

void addMultiSampleEstimate(const TGmsl& msl, const EstimateOptions& options,
                            const LoopSpeedTable& speeds, RecordingEstimate& estimate)
{
    // A name outside the format table (a hand-edited file) estimates as CD quality.
    const RecordFormatRow* row = findRecordFormat(msl.AudioInFormat);
    const WaveFormat format = row != nullptr ? makeWaveFormat(row->rate, row->channels, row->bits)
                                             : makeWaveFormat(44100, 2, 16);
    double speed = 0.0;
    for (int i = 0; i < kLoopSpeedFormatCount; ++i) {
        const RecordFormatRow* measured = findRecordFormat(kLoopSpeedFormatNames[i]);
        if (measured != nullptr && measured->channels == format.nChannels &&
            measured->bits == format.wBitsPerSample)
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
            const int64_t frames = static_cast<int64_t>(n * format.nSamplesPerSec);
            const int64_t search = static_cast<int64_t>(frames * s.loopsearchlength / 100.0);
            const int64_t start = static_cast<int64_t>(frames * s.loopoutsearchstart / 100.0);
            const double work = static_cast<double>(frames - search - start) * search / 1e7;
            if (speed > 0.0)
                estimate.seconds += work * speed;
        }
        estimate.bytes +=
            static_cast<uint64_t>(format.nSamplesPerSec * (n + r + 0.5) * format.nBlockAlign) + 64;
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
