// Loop search: candidate list, parallel scoring, then K serial selection passes.
#include "analysis/LoopSearch.h"

#include "analysis/CentredCrossings.h"
#include "analysis/LoopSpeed.h"
#include "analysis/PcmSamples.h"
#include "audiofile/ZeroCrossing.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace tg {

int32_t loopSearch(const WaveFormat* format, const uint8_t* data, size_t bytes, int32_t loopStart,
                   int32_t searchStart, int32_t searchEnd, int32_t window, int32_t* results,
                   int resultCount, bool snapToZeroCrossing, bool zeroCrossingStepping,
                   const LoopSearchProgress& progress, const LoopScanOptions& options)
{
    if (results == nullptr)
        resultCount = 0;
    for (int k = 0; k < resultCount; ++k)
        results[k] = -1;
    if (format == nullptr || data == nullptr || !pcm::isSupportedFormat(*format) || window < 1 ||
        loopStart < 0)
        return 0;
    const int64_t frames = static_cast<int64_t>(bytes / format->nBlockAlign);
    if (frames < 1)
        return 0;
    // Crossings are measured around the local mean, so that a DC offset cannot hide them;
    // the centred copy is only made when crossings are asked for.
    std::unique_ptr<CentredCrossings> crossings;
    if (snapToZeroCrossing || zeroCrossingStepping)
        crossings = std::make_unique<CentredCrossings>(*format, data, bytes);
    auto zeroCrossing = [&](int64_t position, int direction) -> int64_t {
        return crossings->find(position, direction, kZeroCrossingEitherChannel);
    };

    const bool startOnCrossing = zeroCrossingStepping && zeroCrossing(loopStart, 0) == loopStart;

    const int64_t c0 = std::max<int64_t>(searchStart, int64_t{loopStart} + window);
    const int64_t c1 = std::min<int64_t>(searchEnd, frames - window);

    // The candidates in scan order. Building the list first keeps the zero-crossing walk
    // serial, so that the scoring can be split over threads without changing which
    // positions are tried.
    std::vector<int32_t> candidates;
    if (c0 < c1) {
        if (!startOnCrossing)
            candidates.reserve(static_cast<size_t>(c1 - c0));
        for (int64_t c = c0; c < c1;) {
            candidates.push_back(static_cast<int32_t>(c));
            const int64_t next = startOnCrossing ? zeroCrossing(c + 1, 1) : c + 1;
            if (next <= c)
                break; // no crossing is left
            c = next;
        }
    }

    // One score per frame of c0..c1-1; frames that are not tried keep the cap.
    const int64_t span = std::max<int64_t>(0, c1 - c0);
    std::vector<int16_t> scores(static_cast<size_t>(span), kLoopScoreCap);
    if (!candidates.empty()) {
        std::vector<int16_t> candidateScores(candidates.size());
        const double speed = loopSearchSpeed(*format);
        const double work = static_cast<double>(int64_t{searchEnd} - searchStart) * window / 1e7;
        const double factor = startOnCrossing ? speed / 15.0 : speed;
        const size_t total = candidates.size();
        auto checkpoint = [&](size_t scored) {
            if (!progress)
                return true;
            const double f = static_cast<double>(scored) / static_cast<double>(total);
            return progress(f, speed < 0.0 ? -1.0 : (1.0 - f) * work * factor);
        };
        const LoopScorer scorer(*format, data, frames, options.kernel);
        if (!scoreLoopCandidates(scorer, loopStart, window, candidates, candidateScores.data(),
                                 options.threads, checkpoint))
            return -1;
        for (size_t i = 0; i < candidates.size(); ++i)
            scores[static_cast<size_t>(candidates[i] - c0)] = candidateScores[i];
    }

    // Selection: the lowest score wins, the later position on a tie; each pass then blanks
    // the neighbourhood of its pick so that the next result lies at least r frames away.
    const int64_t radius = std::min<int64_t>(window, format->nSamplesPerSec / 10);
    const int passes = std::max(1, resultCount);
    int32_t best = 0;
    for (int k = 0; k < passes; ++k) {
        int16_t lowest = kLoopScoreCap;
        int64_t position = c1;
        for (int64_t c = c0; c < c1; ++c) {
            if (scores[static_cast<size_t>(c - c0)] <= lowest) {
                lowest = scores[static_cast<size_t>(c - c0)];
                position = c;
            }
        }
        // A window longer than the recording leaves no loop end before the first frame.
        position = std::max<int64_t>(position, 0);
        // A snap that finds no crossing, or only one at or before the loop start, keeps
        // the position: snapping never shortens a loop to nothing.
        if (snapToZeroCrossing) {
            const int64_t snapped = zeroCrossing(position, 0);
            if (snapped > loopStart)
                position = snapped;
        }
        if (k < resultCount)
            results[k] = static_cast<int32_t>(position);
        if (k == 0)
            best = static_cast<int32_t>(position);
        for (int64_t c = std::max(c0, position - radius); c < std::min(c1, position + radius); ++c)
            scores[static_cast<size_t>(c - c0)] = kLoopScoreCap;
    }
    return best;
}

} // namespace tg
