// The 80-bit extended sample rate: the bytes real files carry, and exact round trips.
#include "audiofile/Extended80.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace tg;

TEST(Extended80, CommonRatesHaveTheirKnownBytes)
{
    const struct {
        double rate;
        std::vector<uint8_t> bytes;
    } cases[] = {
        {44100, {0x40, 0x0E, 0xAC, 0x44, 0, 0, 0, 0, 0, 0}},
        {48000, {0x40, 0x0E, 0xBB, 0x80, 0, 0, 0, 0, 0, 0}},
        {8000, {0x40, 0x0B, 0xFA, 0x00, 0, 0, 0, 0, 0, 0}},
        {1, {0x3F, 0xFF, 0x80, 0, 0, 0, 0, 0, 0, 0}},
        {0, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
    };
    for (const auto& c : cases) {
        uint8_t out[10];
        doubleToExtended80(c.rate, out);
        EXPECT_EQ(std::vector<uint8_t>(out, out + 10), c.bytes) << c.rate;
        uint8_t in[10];
        std::copy(c.bytes.begin(), c.bytes.end(), in);
        EXPECT_EQ(extended80ToDouble(in), c.rate);
    }
}

TEST(Extended80, RoundTripsFractionsNegativesAndSpecials)
{
    for (double v : {0.5, 22050.5, 192000.0, -3.25, 1e-300, 1e300, 11025.0 / 3}) {
        uint8_t b[10];
        doubleToExtended80(v, b);
        EXPECT_EQ(extended80ToDouble(b), v);
    }
    uint8_t b[10];
    doubleToExtended80(INFINITY, b);
    EXPECT_TRUE(std::isinf(extended80ToDouble(b)));
    doubleToExtended80(NAN, b);
    EXPECT_TRUE(std::isnan(extended80ToDouble(b)));
}
