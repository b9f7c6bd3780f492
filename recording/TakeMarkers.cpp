// Markers of a fresh take.
#include "recording/TakeMarkers.h"

#include "analysis/LoopPlacement.h"
#include "analysis/ThresholdSearch.h"

#include <algorithm>
#include <cmath>

namespace tg {

namespace {

int32_t percentOf(double percent, int64_t length)
{
    return int32_t(percent * double(length) / 100.0);
}

} // namespace

void setTakeNoteMarkers(TGmsl_key& key, const WaveFormat& format, const uint8_t* data, size_t bytes,
                        const RecordSettings& settings, double releaseLength, double noteSeconds)
{
    const uint32_t rate = format.nSamplesPerSec;
    const int64_t frames = format.nBlockAlign ? int64_t(bytes / format.nBlockAlign) : 0;
    const int32_t lastFrame = int32_t(std::max<int64_t>(0, frames - 1));
    // The note is looked for after the first part of the take, which is silence: the note
    // starts half a second in.
    key.Silence_In = int32_t(rate / 24);
    key.Silence_Out = int32_t(uint64_t(rate) * 2 / 15);
    key.Note_In = thresholdSearch(&format, data, bytes, key.Silence_In, key.Silence_Out,
                                  key.Silence_Out + 1, 1, settings.thresPrecisionIn);
    const int32_t end = thresholdSearch(&format, data, bytes, key.Silence_In, key.Silence_Out,
                                        int32_t(frames), -1, settings.thresPrecisionOut);
    if (releaseLength > 0.0) {
        // The latency setting deliberately moves the end of the note earlier: what the synth
        // sends back lags the Note Off by the chain's latency, and the release must start
        // with the Note Off as it was heard at the Note On.
        const double seconds = noteSeconds - settings.latency * 0.001;
        const int64_t noteOut = int64_t(std::floor(double(rate) * seconds)) + key.Note_In;
        key.Note_Out = int32_t(std::clamp<int64_t>(noteOut, 0, lastFrame));
        key.Release_In = key.Note_Out;
        key.Release_Out = end;
        key.releaseOn = 0;
    } else {
        key.Note_Out = end;
        key.Release_In = lastFrame;
        key.Release_Out = lastFrame;
    }
    if (key.Note_In >= key.Note_Out) {
        key.Note_In = 0;
        key.Note_Out = lastFrame;
    }
}

void setUpTakeLoop(TGmsl_key& key, const RecordSettings& settings)
{
    const int64_t length = int64_t(key.Note_Out) - key.Note_In;
    key.loopMode = settings.autoloop;
    key.Loop_In = key.Note_In + percentOf(settings.loopstart, length);
    key.Loop_Out = key.Note_Out;
    key.LoopSearch_In = key.Note_In + percentOf(settings.loopoutsearchstart, length);
    key.LoopSearch_Out = key.Note_Out;
    key.LoopSearch_Len = percentOf(settings.loopsearchlength, length);
    const int64_t loopLength = int64_t(key.Note_Out) - key.Loop_In;
    key.xfadeLen = percentOf(settings.xfadelength, loopLength);
    key.bfxfadeLen = percentOf(settings.bfxfadelength, loopLength);
    key.xfadeCurve = 2;
    key.bfxfadeCurve = 2;
}

void searchTakeLoop(TGmsl_key& key, const WaveFormat& format, const uint8_t* data, size_t bytes,
                    const RecordSettings& settings)
{
    LoopPercentages percentages = loopPercentagesFromSettings(settings);
    // A Multi-Sample without a curve name searches with the plain linear fade.
    if (percentages.xfadetype.empty())
        percentages.xfadetype = "Linear";
    if (percentages.bfxfadetype.empty())
        percentages.bfxfadetype = "Linear";
    placeLoop(key, format, data, bytes, percentages, settings.zerocrossing != 0);
}

} // namespace tg
