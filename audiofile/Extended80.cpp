// Conversion between double and the 80-bit extended format, exact for every double.
#include "audiofile/Extended80.h"

#include <cmath>
#include <limits>

namespace tg {

void doubleToExtended80(double value, uint8_t (&out)[10])
{
    for (uint8_t& b : out)
        b = 0;
    uint16_t sign = 0;
    if (std::signbit(value)) {
        sign = 0x8000;
        value = -value;
    }
    uint16_t exponent = 0;
    uint64_t mantissa = 0;
    if (std::isnan(value)) {
        exponent = 0x7FFF;
        mantissa = 0xC000000000000000ull;
    } else if (std::isinf(value)) {
        exponent = 0x7FFF;
        mantissa = 0x8000000000000000ull;
    } else if (value != 0.0) {
        int e = 0;
        const double fraction = std::frexp(value, &e); // value = fraction * 2^e, 0.5 <= f < 1
        // The integer bit sits at bit 63: mantissa = fraction * 2^64, exponent = e - 1 + bias.
        exponent = static_cast<uint16_t>(e - 1 + 16383);
        mantissa = static_cast<uint64_t>(std::ldexp(fraction, 64));
    }
    const uint16_t head = static_cast<uint16_t>(sign | exponent);
    out[0] = static_cast<uint8_t>(head >> 8);
    out[1] = static_cast<uint8_t>(head);
    for (int i = 0; i < 8; ++i)
        out[2 + i] = static_cast<uint8_t>(mantissa >> (56 - 8 * i));
}

double extended80ToDouble(const uint8_t (&in)[10])
{
    const bool negative = (in[0] & 0x80) != 0;
    const int exponent = ((in[0] & 0x7F) << 8) | in[1];
    uint64_t mantissa = 0;
    for (int i = 0; i < 8; ++i)
        mantissa = (mantissa << 8) | in[2 + i];
    double value;
    if (exponent == 0x7FFF) {
        value = (mantissa << 1) == 0 ? std::numeric_limits<double>::infinity()
                                     : std::numeric_limits<double>::quiet_NaN();
    } else {
        value = std::ldexp(static_cast<double>(mantissa), exponent - 16383 - 63);
    }
    return negative ? -value : value;
}

} // namespace tg
