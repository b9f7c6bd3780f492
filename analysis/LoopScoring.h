// The scoring scan of the loop search: how well the audio after each candidate loop end
// matches the audio after the loop start, vectorised and spread over the CPU cores.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace tg {

// Largest score; also the value of every frame that was not scored.
constexpr int16_t kLoopScoreCap = 32000;
// Candidates scored between two progress/cancel checkpoints.
constexpr size_t kLoopCheckpointInterval = 513;

enum class LoopKernel { Automatic, Scalar, Sse2, Avx2 };

// Instruction set and thread count of the scan. Neither changes any score.
struct LoopScanOptions {
    LoopKernel kernel = LoopKernel::Automatic; // Automatic: AVX2 when the CPU has it, else SSE2
    int threads = 0;                           // 0: one per available core
};

bool loopKernelAvailable(LoopKernel kernel);
const char* loopKernelName(LoopKernel kernel);
// The kernel Automatic stands for on this CPU.
LoopKernel bestLoopKernel();

// Scores windows of one recording. Samples enter at 16-bit scale: 16-bit as they are,
// 24-bit by their upper two bytes, 8-bit as the unsigned difference times 128.
class LoopScorer {
  public:
    // `format` must be a supported PCM format (8, 16 or 24 bits, mono or stereo).
    LoopScorer(const WaveFormat& format, const uint8_t* data, int64_t frames,
               LoopKernel kernel = LoopKernel::Automatic);

    // min(32000, D / W) where D sums |x(s + i) - x(c + i)| over i = 0..W-1 and every
    // channel; both windows must lie inside the data.
    int16_t score(int64_t s, int64_t c, int64_t window) const;

  private:
    const uint8_t* samples_ = nullptr; // 16-bit little-endian or unsigned 8-bit elements
    std::vector<uint8_t> converted_;   // the 24-bit data reduced to its upper two bytes
    size_t elementsPerFrame_ = 0;
    size_t elementBytes_ = 0;
    uint64_t (*sad_)(const uint8_t*, const uint8_t*, size_t) = nullptr;
    uint64_t scale_ = 1; // 128 for 8-bit data
};

// Scores `candidates` (frame positions) against the window at `loopStart`, writing
// scores[i] for candidates[i]. Work is handed out in blocks of kLoopCheckpointInterval
// candidates; after each block it scores itself, the calling thread calls `checkpoint`
// with the number of candidates scored so far, and a false answer cancels the scan.
// Returns false when cancelled. The scores never depend on the thread count.
bool scoreLoopCandidates(const LoopScorer& scorer, int64_t loopStart, int64_t window,
                         const std::vector<int32_t>& candidates, int16_t* scores, int threads,
                         const std::function<bool(size_t scored)>& checkpoint);

} // namespace tg
