// The Volca Sample transfer stream decoded by a demodulator written from the transfer
// library's description: every slot's header and sample data come back, every block's CRC
// holds, and the stream is exactly as long as the library's size formula says.
#include "export/volca/VolcaExport.h"

#include "audiofile/tests/TestAudio.h"
#include "export/tests/FurtherFormatsFixture.h"
#include "export/tests/SyntheticProject.h"
#include "tests/support/Pcm16.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

namespace tg {
namespace {

// CRC-16, CCITT polynomial, initial value 0xFFFF, most significant bit first.
uint16_t crcCcitt(const std::vector<uint8_t>& bytes)
{
    uint16_t crc = 0xFFFF;
    for (uint8_t byte : bytes)
        for (int bit = 7; bit >= 0; --bit) {
            const bool top = ((crc >> 15) ^ (byte >> bit)) & 1;
            crc = uint16_t(crc << 1) ^ (top ? 0x1021 : 0);
        }
    return crc;
}

// One eight-frame cycle of one channel as a symbol: the phase (quarter cycles) whose sine
// correlates best, and whether the level is the high one; symbol = phase << 1 | high.
int symbolAt(const std::vector<int16_t>& stereo, size_t cycle, int channel)
{
    double best = -1e300;
    int phase = 0;
    for (int p = 0; p < 4; ++p) {
        double dot = 0;
        for (int i = 0; i < 8; ++i)
            dot += stereo[(cycle * 8 + size_t(i)) * 2 + size_t(channel)] *
                   std::sin(2 * M_PI * (2 * p + i) / 8.0);
        if (dot > best) {
            best = dot;
            phase = p;
        }
    }
    // Full level is 16/24 and the low one 4/24 of full scale; four frames' worth of sine
    // energy lies between them.
    return phase << 1 | (best > 2.0 * 32767 * 10 / 24 ? 1 : 0);
}

struct DecodedSample {
    std::vector<uint8_t> header;
    std::vector<uint8_t> data;
};

class StreamDecoder {
  public:
    explicit StreamDecoder(const std::vector<int16_t>& stereo) : stereo_(stereo) {}

    // Skips the gap before the next block and reads the block's `size` bytes (with the 24-bit
    // code after full 256-byte blocks) and checks its CRC.
    bool block(size_t size, std::vector<uint8_t>& bytes)
    {
        while (cycle_ < cycles() && symbolAt(stereo_, cycle_, 0) == 1 &&
               symbolAt(stereo_, cycle_, 1) == 1)
            ++cycle_;
        if (cycle_ + 2 >= cycles() || symbolAt(stereo_, cycle_, 0) != 5 ||
            symbolAt(stereo_, cycle_, 1) != 5)
            return fail("no start mark");
        if (symbolAt(stereo_, cycle_ + 1, 0) != 0 || symbolAt(stereo_, cycle_ + 1, 1) != 1)
            return fail("no channel information");
        cycle_ += 2;
        const size_t bits = 8 + 8 * size + (size == 256 ? 24 : 0) + 16;
        std::vector<bool> stream;
        for (size_t n = 0; n < bits / 6 + 1; ++n, ++cycle_)
            for (int channel = 0; channel < 2; ++channel) {
                const int symbol = symbolAt(stereo_, cycle_, channel);
                for (int bit = 0; bit < 3; ++bit)
                    stream.push_back((symbol >> bit) & 1);
            }
        auto field = [&stream](size_t at, int width) {
            uint32_t value = 0;
            for (int bit = 0; bit < width; ++bit)
                value |= uint32_t(stream[at + size_t(bit)]) << bit;
            return value;
        };
        if (field(0, 8) != 0xA9)
            return fail("no block start code");
        bytes.clear();
        for (size_t i = 0; i < size; ++i)
            bytes.push_back(uint8_t(field(8 + 8 * i, 8)));
        const uint32_t crc = field(bits - 16, 16);
        if (crc != crcCcitt(bytes))
            return fail("CRC mismatch");
        return true;
    }

    std::string error;

  private:
    size_t cycles() const { return stereo_.size() / 16; }
    bool fail(const char* what)
    {
        error = std::string(what) + " at cycle " + std::to_string(cycle_);
        return false;
    }

    const std::vector<int16_t>& stereo_;
    size_t cycle_ = 0;
};

uint32_t le(const std::vector<uint8_t>& b, size_t at, int bytes)
{
    uint32_t value = 0;
    for (int i = bytes - 1; i >= 0; --i)
        value = value << 8 | b[at + size_t(i)];
    return value;
}

TEST(VolcaSampleExport, EverySlotDecodesBackFromTheStream)
{
    test::RecordedProject recorded;
    std::string message;
    // Rate and depth as recorded, mono mix, no resampling or level change, tail removed.
    ASSERT_EQ(TGexport_VolcaSample(recorded.out, "Strings", 3, recorded.project.get(), {0, 1},
                                   0x91040101, false, message, recorded.services),
              1)
        << message;

    const test::WavImage wav = test::readWavImage(recorded.out + "/Strings.wav");
    ASSERT_TRUE(wav.ok);
    EXPECT_EQ(test::describeFormat(wav.format), test::describeFormat(makeWaveFormat(44100, 2, 16)));
    std::vector<int16_t> stereo(wav.data.size() / 2);
    for (size_t i = 0; i < stereo.size(); ++i)
        stereo[i] = test::pcm16At(wav.data, i);

    StreamDecoder decoder(stereo);
    std::map<int, DecodedSample> slots;
    uint64_t formulaCycles = 3000;
    for (bool more = true; more;) {
        DecodedSample sample;
        ASSERT_TRUE(decoder.block(32, sample.header)) << decoder.error;
        ASSERT_EQ(std::string(sample.header.begin(), sample.header.begin() + 16),
                  "KORG SYSTEM FILE");
        EXPECT_EQ(le(sample.header, 16, 4), 0xFF0033B8u);
        EXPECT_EQ(sample.header[20] & 0xFE, 0x10);
        more = (sample.header[20] & 1) != 0;
        const uint32_t size = le(sample.header, 24, 4);
        EXPECT_EQ(le(sample.header, 30, 2), 44100u * 0x4000 / 31250);
        const uint32_t blocks = (size + 255) / 256;
        for (uint32_t b = 0; b < blocks; ++b) {
            std::vector<uint8_t> bytes;
            ASSERT_TRUE(decoder.block(256, bytes)) << decoder.error;
            sample.data.insert(sample.data.end(), bytes.begin(), bytes.end());
        }
        sample.data.resize(size);
        formulaCycles += 10000 + 49 + (35 + 352) * blocks + (1000 - 35) * ((size + 4093) / 4094);
        slots[sample.header[21]] = sample;
    }
    EXPECT_EQ(stereo.size() / 2, formulaCycles * 8);

    // Slots from 3 up in selection and key order: Soft 60, Soft 67, Loud 60, Loud 67.
    ASSERT_EQ(slots.size(), 4u);
    const std::pair<int, int> keyOfSlot[] = {{0, 60}, {0, 67}, {1, 60}, {1, 67}};
    for (int slot = 3; slot < 7; ++slot) {
        SCOPED_TRACE(slot);
        ASSERT_EQ(slots.count(slot), 1u);
        const RenderedKey& rendered = recorded.rendered.at(keyOfSlot[slot - 3]);
        const int channels = keyOfSlot[slot - 3].first + 1;
        EXPECT_EQ(slots[slot].data.size(), rendered.note.size() / size_t(channels));
        if (channels == 1) { // mono already: the slot holds the rendered audio itself
            EXPECT_TRUE(slots[slot].data == rendered.note);
        }
    }

    const std::string map = test::readFileBytes(recorded.out + "/Strings.txt");
    EXPECT_NE(map.find("\n3\tSoft\t60\tC4\t"), std::string::npos) << map;
    EXPECT_NE(map.find("\n6\tLoud\t67\tG4\t"), std::string::npos) << map;
}

TEST(VolcaSampleExport, RefusesStereoAndFullSlots)
{
    test::RecordedProject recorded;
    std::string message;
    EXPECT_EQ(TGexport_VolcaSample(recorded.out, "S", 0, recorded.project.get(), {1}, 0x91010101,
                                   false, message, recorded.services),
              0);
    EXPECT_EQ(message, "TGexport_VolcaSample():\n\nthe Volca Sample takes mono samples; Key 60 "
                       "of \"Loud\" has 2 channels");
    EXPECT_EQ(TGexport_VolcaSample(recorded.out, "S", 98, recorded.project.get(), {0, 1},
                                   0x91040101, false, message, recorded.services),
              0);
    EXPECT_EQ(message, "TGexport_VolcaSample():\n\nthe Volca Sample has 100 sample slots; Key 60 "
                       "of \"Loud\" finds none left");
}

} // namespace
} // namespace tg
