// The 80-bit IEEE extended number AIFF stores its sample rate in.
#pragma once

#include <cstdint>

namespace tg {

// Big-endian 80-bit extended: sign and 15-bit exponent (bias 16383), then a 64-bit mantissa
// with an explicit integer bit.
void doubleToExtended80(double value, uint8_t (&out)[10]);

// The value as a double; infinities and NaNs come back as such.
double extended80ToDouble(const uint8_t (&in)[10]);

} // namespace tg
