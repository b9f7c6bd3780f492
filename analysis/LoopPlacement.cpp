// Auto-loop marker placement around the loop search.
#include "analysis/LoopPlacement.h"

#include "analysis/CentredCrossings.h"
#include "analysis/FadeCurves.h"
#include "analysis/PcmSamples.h"
#include "audiofile/ZeroCrossing.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace tg {

LoopPercentages loopPercentagesFromSettings(const RecordSettings& settings)
{
    LoopPercentages p;
    p.loopstart = settings.loopstart;
    p.loopoutsearchstart = settings.loopoutsearchstart;
    p.loopsearchlength = settings.loopsearchlength;
    p.xfadelength = settings.xfadelength;
    p.bfxfadelength = settings.bfxfadelength;
    p.xfadetype = settings.xfadetype;
    p.bfxfadetype = settings.bfxfadetype;
    return p;
}

bool loopPercentagesFromKey(const TGmsl_key& loaded, LoopPercentages& out)
{
    // Inclusive lengths here although placement divides by Note_Out - Note_In: the
    // off-by-one between the two is how the percentages have always been carried over.
    const double noteLength = static_cast<double>(int64_t{loaded.Note_Out} + 1 - loaded.Note_In);
    if (noteLength <= 0.0)
        return false;
    const double loopLength = static_cast<double>(int64_t{loaded.Loop_Out} + 1 - loaded.Loop_In);
    out.loopsearchlength = std::clamp(loaded.LoopSearch_Len * 100.0 / noteLength, 0.1, 10.0);
    out.loopstart = (int64_t{loaded.Loop_In} - loaded.Note_In) * 100.0 / noteLength;
    out.loopoutsearchstart = (int64_t{loaded.LoopSearch_In} - loaded.Note_In) * 100.0 / noteLength;
    out.searchEnd = (int64_t{loaded.LoopSearch_Out} - loaded.Note_In) * 100.0 / noteLength;
    out.xfadelength = loopLength > 0.0 ? loaded.xfadeLen * 100.0 / loopLength : 0.0;
    out.bfxfadelength = loopLength > 0.0 ? loaded.bfxfadeLen * 100.0 / loopLength : 0.0;
    out.xfadetype = fadeCurveName(loaded.xfadeCurve);
    out.bfxfadetype = fadeCurveName(loaded.bfxfadeCurve);
    return true;
}

int placeLoop(TGmsl_key& key, const WaveFormat& format, const uint8_t* data, size_t bytes,
              const LoopPercentages& percentages, bool zeroCrossing,
              const LoopSearchProgress& progress, const LoopScanOptions& options)
{
    if (data == nullptr || !pcm::isSupportedFormat(format) || key.Note_Out <= key.Note_In)
        return 0;
    const int64_t frames = static_cast<int64_t>(bytes / format.nBlockAlign);
    if (frames < 1)
        return 0;
    auto at = [&](double percent, int64_t length) {
        return static_cast<int64_t>(percent * static_cast<double>(length) / 100.0);
    };

    const TGmsl_key saved = key;
    const int64_t noteIn = key.Note_In;
    const int64_t length = int64_t{key.Note_Out} - key.Note_In;
    key.Loop_In = static_cast<int32_t>(noteIn + at(percentages.loopstart, length));
    key.Loop_Out = key.Note_Out;
    key.LoopSearch_In = static_cast<int32_t>(noteIn + at(percentages.loopoutsearchstart, length));
    key.LoopSearch_Out = percentages.searchEnd < 0.0
                             ? key.Note_Out
                             : static_cast<int32_t>(noteIn + at(percentages.searchEnd, length));
    key.LoopSearch_Len = static_cast<int32_t>(at(percentages.loopsearchlength, length));
    key.xfadeCurve = key.bfxfadeCurve = kDefaultFadeCurve;
    key.xfadeCurve = static_cast<uint8_t>(fadeCurveIndex(percentages.xfadetype.c_str()));
    key.bfxfadeCurve = static_cast<uint8_t>(fadeCurveIndex(percentages.bfxfadetype.c_str()));

    if (zeroCrossing) {
        const CentredCrossings crossings(format, data, bytes);
        const int64_t wanted = key.Loop_In;
        const int64_t both = crossings.find(wanted, -1, kZeroCrossingBothChannels);
        // A crossing of both channels can lie far back; more than ten per cent off the
        // wanted start (or none at all) is too far, and a crossing of either channel is
        // taken instead.
        const double achieved = (both - noteIn) * 100.0 / static_cast<double>(length);
        const double loopstart = percentages.loopstart;
        const bool tooFar =
            both < 0 ||
            (loopstart != 0.0 ? std::fabs(loopstart - achieved) * 100.0 / loopstart > 10.0
                              : achieved != 0.0);
        key.Loop_In = static_cast<int32_t>(
            tooFar ? crossings.snap(wanted, -1, kZeroCrossingEitherChannel) : both);
        key.Loop_Out =
            static_cast<int32_t>(crossings.snap(key.Loop_Out, -1, kZeroCrossingEitherChannel));
        if (key.loopMode == 2) {
            // Backward-forward loops turn in the middle of the search region; no search.
            const int32_t middle = key.LoopSearch_In + key.LoopSearch_Len / 2;
            const int64_t snapped = crossings.snap(middle, 0, kZeroCrossingEitherChannel);
            key.Loop_Out = static_cast<int32_t>(snapped > key.Loop_In ? snapped : middle);
        }
    } else if (key.loopMode == 2) {
        key.Loop_Out = key.LoopSearch_In + key.LoopSearch_Len / 2;
    }

    if (key.loopMode != 2) {
        const int32_t end = loopSearch(&format, data, bytes, key.Loop_In, key.LoopSearch_In,
                                       key.LoopSearch_Out, key.LoopSearch_Len, key.loopResults,
                                       kLoopResultCount, zeroCrossing, true, progress, options);
        if (end == -1) {
            key = saved;
            return -1;
        }
        key.Loop_Out = end;
    }

    const int64_t loopLength = int64_t{key.Loop_Out} - key.Loop_In;
    key.xfadeLen =
        static_cast<int32_t>(percentages.xfadelength * static_cast<double>(loopLength) / 100.0);
    key.bfxfadeLen =
        static_cast<int32_t>(percentages.bfxfadelength * static_cast<double>(loopLength) / 100.0);
    return 1;
}

} // namespace tg
