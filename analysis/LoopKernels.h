// Sum-of-absolute-differences kernels behind the loop search, one per instruction set.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tg::loopkernel {

// Each kernel returns the exact sum of |a[i] - b[i]| over `count` samples. The 16-bit
// kernels read little-endian signed 16-bit samples from byte pointers of any alignment;
// the 8-bit kernels read unsigned bytes. Exact for every input, full scale included, and
// for any count (partial sums are widened to 64 bits before they could overflow).
uint64_t sad16Scalar(const uint8_t* a, const uint8_t* b, size_t count);
uint64_t sad8Scalar(const uint8_t* a, const uint8_t* b, size_t count);

#if defined(__x86_64__) || defined(__i386__)
#define TG_LOOPKERNEL_X86 1
uint64_t sad16Sse2(const uint8_t* a, const uint8_t* b, size_t count);
uint64_t sad8Sse2(const uint8_t* a, const uint8_t* b, size_t count);
// Only to be called when the CPU reports AVX2 (built with AVX2 code generation).
uint64_t sad16Avx2(const uint8_t* a, const uint8_t* b, size_t count);
uint64_t sad8Avx2(const uint8_t* a, const uint8_t* b, size_t count);
#endif

} // namespace tg::loopkernel
