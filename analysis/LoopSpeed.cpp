// Measuring the loop search on a synthetic sine in six formats, cached per run.
#include "analysis/LoopSpeed.h"

#include "analysis/LoopSearch.h"
#include "analysis/PcmSamples.h"

#include <chrono>
#include <cmath>
#include <mutex>
#include <vector>

namespace tg {

const char* const kLoopSpeedFormatNames[kLoopSpeedFormatCount] = {
    "44.1KHz, Stereo, 16bit", "44.1KHz, Mono, 16bit",   "44.1KHz, Stereo, 8bit",
    "44.1KHz, Mono, 8bit",    "44.1KHz, Stereo, 24bit", "44.1KHz, Mono, 24bit"};

namespace {

struct SpeedFormat {
    uint16_t channels;
    uint16_t bits;
};
constexpr SpeedFormat kFormats[kLoopSpeedFormatCount] = {{2, 16}, {1, 16}, {2, 8},
                                                         {1, 8},  {2, 24}, {1, 24}};

std::mutex gMutex;        // guards gTable
std::mutex gMeasureMutex; // one measurement at a time (the search itself reads gTable)
LoopSpeedTable gTable = {-1.0, -1.0, -1.0, -1.0, -1.0, -1.0};

int tableRow(const WaveFormat& format)
{
    for (int i = 0; i < kLoopSpeedFormatCount; ++i) {
        if (kFormats[i].channels == format.nChannels && kFormats[i].bits == format.wBitsPerSample)
            return i;
    }
    return -1;
}

// 120000 frames of a sine of amplitude 16000 (16-bit scale) advancing one radian a frame.
std::vector<uint8_t> testSignal(const WaveFormat& format)
{
    constexpr int kFrames = 120000;
    const int width = pcm::bytesPerSample(format);
    std::vector<uint8_t> data(static_cast<size_t>(kFrames) * format.nBlockAlign);
    for (int i = 0; i < kFrames; ++i) {
        const double v = 16000.0 * std::sin(static_cast<double>(i));
        const int32_t value = width == 1   ? static_cast<int32_t>(v / 256.0)
                              : width == 2 ? static_cast<int32_t>(v)
                                           : static_cast<int32_t>(v * 256.0);
        for (int ch = 0; ch < format.nChannels; ++ch)
            pcm::writeSample(data.data() + static_cast<size_t>(i) * format.nBlockAlign + ch * width,
                             width, value);
    }
    return data;
}

} // namespace

double loopSearchSpeed(const WaveFormat& format)
{
    const int row = tableRow(format);
    std::lock_guard<std::mutex> lock(gMutex);
    return row < 0 ? -1.0 : gTable[static_cast<size_t>(row)];
}

LoopSpeedTable cachedLoopSearchSpeeds()
{
    std::lock_guard<std::mutex> lock(gMutex);
    return gTable;
}

void forgetLoopSearchSpeeds()
{
    std::lock_guard<std::mutex> lock(gMutex);
    gTable.fill(-1.0);
}

LoopSpeedTable measureLoopSearchSpeeds()
{
    std::lock_guard<std::mutex> measuring(gMeasureMutex);
    LoopSpeedTable table = cachedLoopSearchSpeeds();
    bool complete = true;
    for (double seconds : table)
        complete = complete && seconds >= 0.0;
    if (complete)
        return table;

    for (int i = 0; i < kLoopSpeedFormatCount; ++i) {
        const WaveFormat format = makeWaveFormat(44100, kFormats[i].channels, kFormats[i].bits);
        const std::vector<uint8_t> signal = testSignal(format);
        int32_t results[5];
        const auto begin = std::chrono::steady_clock::now();
        // Loop start at frame 100, candidates from frame 1000 on, a window of 10000 frames
        // and candidates up to frame 110000: the standard workload the estimates scale.
        loopSearch(&format, signal.data(), signal.size(), 100, 1000, 110000, 10000, results, 5,
                   false, true);
        table[static_cast<size_t>(i)] =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    }
    std::lock_guard<std::mutex> lock(gMutex);
    gTable = table;
    return table;
}

} // namespace tg
