#include "export/BufferGain.h"

#include <gtest/gtest.h>

TEST(BufferGain, SixteenBitTruncatesAndClips)
{
    const tg::WaveFormat format = tg::makeWaveFormat(44100, 1, 16);
    // 1000, -1000, 30000, -30000
    std::vector<uint8_t> data = {0xE8, 0x03, 0x18, 0xFC, 0x30, 0x75, 0xD0, 0x8A};
    tg::applyBufferGain(format, data, 1.5);
    auto at = [&](int i) { return int16_t(data[2 * i] | data[2 * i + 1] << 8); };
    EXPECT_EQ(at(0), 1500);
    EXPECT_EQ(at(1), -1500);
    EXPECT_EQ(at(2), 32767);
    EXPECT_EQ(at(3), -32768);
    std::vector<uint8_t> odd = {0x03, 0x00}; // 3 * 0.5 = 1.5 truncates to 1
    tg::applyBufferGain(format, odd, 0.5);
    EXPECT_EQ(odd[0], 1);
}

TEST(BufferGain, EightAndTwentyFourBitKeepTheirEncoding)
{
    std::vector<uint8_t> eight = {128, 138, 118};
    tg::applyBufferGain(tg::makeWaveFormat(44100, 1, 8), eight, 2.0);
    EXPECT_EQ(eight, (std::vector<uint8_t>{128, 148, 108}));
    // -2 in 24 bits, doubled to -4
    std::vector<uint8_t> wide = {0xFE, 0xFF, 0xFF};
    tg::applyBufferGain(tg::makeWaveFormat(44100, 1, 24), wide, 2.0);
    EXPECT_EQ(wide, (std::vector<uint8_t>{0xFC, 0xFF, 0xFF}));
}
