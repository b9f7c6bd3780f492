// Portable kernels: the fallback on every CPU and the tail of the vector kernels.
#include "analysis/LoopKernels.h"

namespace tg::loopkernel {

uint64_t sad16Scalar(const uint8_t* a, const uint8_t* b, size_t count)
{
    uint64_t sum = 0;
    for (size_t i = 0; i < count; ++i) {
        const int32_t x =
            static_cast<int16_t>(static_cast<uint16_t>(a[2 * i] | (a[2 * i + 1] << 8)));
        const int32_t y =
            static_cast<int16_t>(static_cast<uint16_t>(b[2 * i] | (b[2 * i + 1] << 8)));
        sum += static_cast<uint32_t>(x > y ? x - y : y - x);
    }
    return sum;
}

uint64_t sad8Scalar(const uint8_t* a, const uint8_t* b, size_t count)
{
    uint64_t sum = 0;
    for (size_t i = 0; i < count; ++i)
        sum += static_cast<uint32_t>(a[i] > b[i] ? a[i] - b[i] : b[i] - a[i]);
    return sum;
}

} // namespace tg::loopkernel
