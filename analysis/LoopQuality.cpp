// Loop quality figures: wrap step against the median step, level step and seam error.
#include "analysis/LoopQuality.h"

#include "analysis/PcmSamples.h"
#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "core/Names.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tg {

bool isLoopClick(double step, double medianStep, double peak)
{
    return step > 0.0 && step >= kClickStepRatio * medianStep && step >= kClickPeakFraction * peak;
}

namespace {

// One channel of the rendered audio on the 16-bit scale.
struct Channel {
    const WaveFormat& format;
    const uint8_t* data;
    int channel;
    double scale;

    double operator()(int64_t frame) const
    {
        return pcm::sampleAt(format, data, frame, channel) * scale;
    }
};

double rms(const Channel& x, int64_t from, int64_t count)
{
    double sum = 0.0;
    for (int64_t i = 0; i < count; ++i)
        sum += x(from + i) * x(from + i);
    return count > 0 ? std::sqrt(sum / static_cast<double>(count)) : 0.0;
}

double medianStep(const Channel& x, int64_t loopStart, int64_t loopEnd)
{
    std::vector<double> steps;
    steps.reserve(static_cast<size_t>(loopEnd - loopStart));
    for (int64_t i = loopStart; i < loopEnd; ++i)
        steps.push_back(std::fabs(x(i + 1) - x(i)));
    if (steps.empty())
        return 0.0;
    auto middle = steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2);
    std::nth_element(steps.begin(), middle, steps.end());
    return *middle;
}

} // namespace

bool measureLoop(const WaveFormat& format, const uint8_t* data, size_t bytes, int64_t loopStart,
                 int64_t loopEnd, LoopQuality& out)
{
    out = LoopQuality{};
    if (data == nullptr || !pcm::isSupportedFormat(format))
        return false;
    const int64_t frames = static_cast<int64_t>(bytes / format.nBlockAlign);
    if (loopStart < 0 || loopEnd < loopStart || loopEnd >= frames)
        return false;
    out.length = loopEnd + 1 - loopStart;
    const double scale = format.wBitsPerSample == 8    ? 256.0
                         : format.wBitsPerSample == 24 ? 1.0 / 256.0
                                                       : 1.0;
    // The seam error looks up to 20 ms either side of the seam, the level step over up to
    // 100 ms (several periods even of low notes); neither over more than half the loop.
    const int64_t half = std::max<int64_t>(1, out.length / 2);
    const int64_t window = std::min<int64_t>(half, format.nSamplesPerSec / 50);
    const int64_t levelWindow = std::min<int64_t>(half, format.nSamplesPerSec / 10);
    const int64_t before = std::min(window, loopStart);           // frames before the loop start
    const int64_t after = std::min(window, frames - 1 - loopEnd); // frames after the loop end

    double worstRatio = -1.0;
    double differences = 0.0, energy = 0.0, levelBefore = 0.0, levelAfter = 0.0;
    for (int ch = 0; ch < format.nChannels; ++ch) {
        const Channel x{format, data, ch, scale};
        const double step = std::fabs(x(loopStart) - x(loopEnd));
        // Without a frame before the loop start the whole wrap step is the seam's.
        const double seam = loopStart > 0 ? std::fabs(x(loopStart - 1) - x(loopEnd)) : step;
        const double median = medianStep(x, loopStart, loopEnd);
        double peak = 0.0;
        for (int64_t i = loopStart; i <= loopEnd; ++i)
            peak = std::max(peak, std::fabs(x(i)));
        const bool click = isLoopClick(seam, median, peak);
        const double ratio = median > 0.0 ? seam / median : (seam > 0.0 ? INFINITY : 0.0);
        if ((click && !out.click) || (click == out.click && ratio > worstRatio)) {
            out.channel = ch;
            out.wrapStep = step;
            out.seamStep = seam;
            out.medianStep = median;
            out.peak = peak;
            out.click = click;
            worstRatio = ratio;
        }
        // Played across a wrap: x(loopEnd - j) then x(loopStart + j). Seamless means the
        // first continues into the loop start as x(loopStart - 1 - j) does, and the second
        // follows the loop end as x(loopEnd + 1 + j) does.
        for (int64_t j = 0; j < before; ++j) {
            const double played = x(loopEnd - j), held = x(loopStart - 1 - j);
            differences += (played - held) * (played - held);
            energy += played * played + held * held;
        }
        for (int64_t j = 0; j < after; ++j) {
            const double played = x(loopStart + j), held = x(loopEnd + 1 + j);
            differences += (played - held) * (played - held);
            energy += played * played + held * held;
        }
        levelBefore += rms(x, loopEnd + 1 - levelWindow, levelWindow);
        levelAfter += rms(x, loopStart, levelWindow);
    }
    out.seamError = energy > 0.0 ? differences / energy : 0.0;
    out.levelStepDb =
        levelBefore > 0.0 && levelAfter > 0.0 ? 20.0 * std::log10(levelAfter / levelBefore) : 0.0;
    return true;
}

int measureKeySampleLoop(const TGmsl_key& key, const WaveFormat& format,
                         const std::vector<uint8_t>& recording, LoopQuality& out,
                         std::string& message)
{
    out = LoopQuality{};
    if (key.loopMode == 0 || key.Loop_Out <= key.Loop_In)
        return setMessage(message, "no loop");
    RenderOptions options;
    options.includeAfterLoop = true;
    RenderedNote rendered;
    const size_t bytes = recording.size();
    if (!renderKeySample(&key, &format, recording.data(), &bytes, options, &rendered, message))
        return 0;
    if (rendered.loopEnd <= rendered.loopStart)
        return setMessage(message, "no loop");
    if (!measureLoop(format, rendered.note.data(),
                     static_cast<size_t>(rendered.frames) * format.nBlockAlign, rendered.loopStart,
                     rendered.loopEnd, out))
        return setMessage(message, "the loop cannot be measured");
    out.crossfade = key.xfadeLen;
    return 1;
}

int measureLoops(const Project& project, KeyScope scope, int msl, int note,
                 std::vector<KeyLoopQuality>& out, std::string& message)
{
    out.clear();
    for (const KeyRef& ref : keysInScope(project, scope, msl, note)) {
        const TGmsl& m = project.msl[ref.msl];
        const TGmsl_key& key = m.keys[ref.note];
        KeyLoopQuality entry;
        entry.msl = ref.msl;
        entry.note = ref.note;
        entry.looped = key.loopMode != 0 && key.Loop_Out > key.Loop_In;
        if (entry.looped) {
            WaveFormat format;
            std::vector<uint8_t> recording;
            std::string readMessage;
            if (!readWav(keySampleFileName(project, m, ref.note), format, recording, readMessage))
                return setMessage(message, "Error reading data from disk:\n%s",
                                  readMessage.c_str());
            std::string ignored;
            entry.looped =
                measureKeySampleLoop(key, format, recording, entry.quality, ignored) == 1;
        }
        out.push_back(entry);
    }
    return 1;
}

} // namespace tg
