// AVX2 kernels; this file is compiled with AVX2 code generation and only called after a
// run-time check of the CPU.
#include "analysis/LoopKernels.h"

#if defined(TG_LOOPKERNEL_X86)
#include <immintrin.h>

namespace tg::loopkernel {

namespace {

// Blocks of 16 samples per flush: two values in -32768..32767 per lane and block.
constexpr size_t kFlushBlocks = 16384;

inline int64_t horizontalSum32(__m256i v)
{
    alignas(32) int32_t lanes[8];
    _mm256_store_si256(reinterpret_cast<__m256i*>(lanes), v);
    int64_t sum = 0;
    for (int32_t lane : lanes)
        sum += lane;
    return sum;
}

} // namespace

uint64_t sad16Avx2(const uint8_t* a, const uint8_t* b, size_t count)
{
    // Same exact scheme as the SSE2 kernel: unsigned max - min, biased, paired by pmaddwd.
    const __m256i bias = _mm256_set1_epi16(static_cast<short>(0x8000));
    const __m256i ones = _mm256_set1_epi16(1);
    const size_t blocks = count / 16;
    int64_t total = 0;
    size_t block = 0;
    while (block < blocks) {
        const size_t end = block + kFlushBlocks < blocks ? block + kFlushBlocks : blocks;
        __m256i acc0 = _mm256_setzero_si256();
        __m256i acc1 = _mm256_setzero_si256();
        for (; block + 1 < end; block += 2) {
            const __m256i a0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + block * 32));
            const __m256i b0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + block * 32));
            const __m256i a1 =
                _mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + block * 32 + 32));
            const __m256i b1 =
                _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + block * 32 + 32));
            const __m256i d0 = _mm256_sub_epi16(_mm256_max_epi16(a0, b0), _mm256_min_epi16(a0, b0));
            const __m256i d1 = _mm256_sub_epi16(_mm256_max_epi16(a1, b1), _mm256_min_epi16(a1, b1));
            acc0 = _mm256_add_epi32(acc0, _mm256_madd_epi16(_mm256_xor_si256(d0, bias), ones));
            acc1 = _mm256_add_epi32(acc1, _mm256_madd_epi16(_mm256_xor_si256(d1, bias), ones));
        }
        for (; block < end; ++block) {
            const __m256i a0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + block * 32));
            const __m256i b0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + block * 32));
            const __m256i d0 = _mm256_sub_epi16(_mm256_max_epi16(a0, b0), _mm256_min_epi16(a0, b0));
            acc0 = _mm256_add_epi32(acc0, _mm256_madd_epi16(_mm256_xor_si256(d0, bias), ones));
        }
        total += horizontalSum32(acc0) + horizontalSum32(acc1);
    }
    total += static_cast<int64_t>(blocks) * 16 * 32768;
    const size_t done = blocks * 16;
    return static_cast<uint64_t>(total) + sad16Sse2(a + done * 2, b + done * 2, count - done);
}

uint64_t sad8Avx2(const uint8_t* a, const uint8_t* b, size_t count)
{
    const size_t blocks = count / 32;
    __m256i acc = _mm256_setzero_si256();
    for (size_t block = 0; block < blocks; ++block) {
        const __m256i va = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + block * 32));
        const __m256i vb = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + block * 32));
        acc = _mm256_add_epi64(acc, _mm256_sad_epu8(va, vb));
    }
    alignas(32) uint64_t lanes[4];
    _mm256_store_si256(reinterpret_cast<__m256i*>(lanes), acc);
    const size_t done = blocks * 32;
    return lanes[0] + lanes[1] + lanes[2] + lanes[3] + sad8Sse2(a + done, b + done, count - done);
}

} // namespace tg::loopkernel

#endif
