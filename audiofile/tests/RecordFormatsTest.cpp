// The recording format table and the format record of a name.
#include "audiofile/RecordFormats.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <tuple>

namespace tg {
namespace {

TEST(RecordFormats, EveryRowFillsItsRecordFromTheCode)
{
    const RecordFormatRow* table = recordFormatTable();
    std::set<uint32_t> codes;
    for (int i = 0; i < kRecordFormatCount; ++i) {
        const RecordFormatRow& row = table[i];
        SCOPED_TRACE(row.name);
        EXPECT_LT(std::string(row.name).size(), size_t(kRecordFormatNameSize));
        codes.insert(row.code);
        WaveFormat record;
        record.nChannels = 9;
        ASSERT_EQ(formatFromName(row.name, record), 1);
        EXPECT_EQ(record.wFormatTag, 1);
        EXPECT_EQ(record.nChannels, row.channels);
        EXPECT_EQ(record.nSamplesPerSec, row.rate);
        EXPECT_EQ(record.wBitsPerSample, row.bits);
        EXPECT_EQ(record.nBlockAlign, row.bits * row.channels / 8);
        EXPECT_EQ(record.nAvgBytesPerSec, record.nBlockAlign * row.rate);
        EXPECT_EQ(record.cbSize, 0);
    }
    EXPECT_EQ(codes.size(), size_t(kRecordFormatCount));
}

TEST(RecordFormats, UnknownOrNearMissNameGivesZeroChannels)
{
    for (const char* name : {"", "44.1KHz, Stereo, 32bit", "44.1KHz, stereo, 16bit",
                             "44.1KHz, Stereo, 16bit ", "192KHz, Stereo, 16bit"}) {
        WaveFormat record = makeWaveFormat(44100, 2, 16);
        EXPECT_EQ(formatFromName(name, record), 0) << name;
        EXPECT_EQ(std::make_tuple(int(record.nChannels), int(record.wBitsPerSample),
                                  int(record.nBlockAlign), record.nAvgBytesPerSec),
                  std::make_tuple(0, 0, 0, 0u))
            << name;
    }
    WaveFormat record;
    EXPECT_EQ(formatFromName(nullptr, record), 0);
    EXPECT_EQ(record.nChannels, 0);
}

} // namespace
} // namespace tg
