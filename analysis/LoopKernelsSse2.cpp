// SSE2 kernels (the x86-64 baseline).
#include "analysis/LoopKernels.h"

#if defined(TG_LOOPKERNEL_X86)
#include <emmintrin.h>

namespace tg::loopkernel {

namespace {

// Blocks of 8 samples a 32-bit accumulator lane may take before it is flushed: each
// block adds two values in -32768..32767 to a lane, so 16384 blocks stay below 2^31.
constexpr size_t kFlushBlocks = 16384;

inline uint64_t horizontalSum32(__m128i v)
{
    alignas(16) int32_t lanes[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(lanes), v);
    return static_cast<uint64_t>(static_cast<int64_t>(lanes[0]) + lanes[1] + lanes[2] + lanes[3]);
}

} // namespace

uint64_t sad16Sse2(const uint8_t* a, const uint8_t* b, size_t count)
{
    // |a - b| of two signed 16-bit values needs 16 unsigned bits: max - min computed modulo
    // 2^16 is exact as an unsigned value even where a signed subtraction would wrap. The
    // unsigned difference d is biased to d - 32768 so that pmaddwd can widen and pair it
    // into 32-bit lanes; the bias is added back per sample at the end.
    const __m128i bias = _mm_set1_epi16(static_cast<short>(0x8000));
    const __m128i ones = _mm_set1_epi16(1);
    const size_t blocks = count / 8;
    int64_t total = 0;
    size_t block = 0;
    while (block < blocks) {
        const size_t end = block + kFlushBlocks < blocks ? block + kFlushBlocks : blocks;
        __m128i acc0 = _mm_setzero_si128();
        __m128i acc1 = _mm_setzero_si128();
        for (; block + 1 < end; block += 2) {
            const __m128i a0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + block * 16));
            const __m128i b0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + block * 16));
            const __m128i a1 =
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + block * 16 + 16));
            const __m128i b1 =
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + block * 16 + 16));
            const __m128i d0 = _mm_sub_epi16(_mm_max_epi16(a0, b0), _mm_min_epi16(a0, b0));
            const __m128i d1 = _mm_sub_epi16(_mm_max_epi16(a1, b1), _mm_min_epi16(a1, b1));
            acc0 = _mm_add_epi32(acc0, _mm_madd_epi16(_mm_xor_si128(d0, bias), ones));
            acc1 = _mm_add_epi32(acc1, _mm_madd_epi16(_mm_xor_si128(d1, bias), ones));
        }
        for (; block < end; ++block) {
            const __m128i a0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + block * 16));
            const __m128i b0 = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + block * 16));
            const __m128i d0 = _mm_sub_epi16(_mm_max_epi16(a0, b0), _mm_min_epi16(a0, b0));
            acc0 = _mm_add_epi32(acc0, _mm_madd_epi16(_mm_xor_si128(d0, bias), ones));
        }
        total += static_cast<int64_t>(horizontalSum32(acc0)) +
                 static_cast<int64_t>(horizontalSum32(acc1));
    }
    total += static_cast<int64_t>(blocks) * 8 * 32768;
    const size_t done = blocks * 8;
    return static_cast<uint64_t>(total) + sad16Scalar(a + done * 2, b + done * 2, count - done);
}

uint64_t sad8Sse2(const uint8_t* a, const uint8_t* b, size_t count)
{
    // psadbw sums eight byte differences into a 64-bit lane: no overflow possible.
    const size_t blocks = count / 16;
    __m128i acc = _mm_setzero_si128();
    for (size_t block = 0; block < blocks; ++block) {
        const __m128i va = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + block * 16));
        const __m128i vb = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + block * 16));
        acc = _mm_add_epi64(acc, _mm_sad_epu8(va, vb));
    }
    alignas(16) uint64_t lanes[2];
    _mm_store_si128(reinterpret_cast<__m128i*>(lanes), acc);
    const size_t done = blocks * 16;
    return lanes[0] + lanes[1] + sad8Scalar(a + done, b + done, count - done);
}

} // namespace tg::loopkernel

#endif
