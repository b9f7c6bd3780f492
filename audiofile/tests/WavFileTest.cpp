// The WAV writer's byte layout and in-place conversion. Every depth and channel count of the
// writer is read back by libsndfile (SndfileReadsOurAudio in tests/clients); the readers on
// hand-built files are WavReaders' business.
#include "audiofile/WavFile.h"

#include "audiofile/BinaryFile.h"
#include "audiofile/tests/TestAudio.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

using namespace tg;
using namespace tg::test;

namespace {

const uint8_t* at(const std::string& s, size_t offset)
{
    return reinterpret_cast<const uint8_t*>(s.data()) + offset;
}

// A temporary folder and a message slot for each test.
class WavFiles : public testing::Test {
  protected:
    TempDir dir;
    std::string message;
};
using WavWriter = WavFiles;
using WavConvertFile = WavFiles;

} // namespace

// The fields themselves are read back by libsndfile (SndfileReadsOurAudio in tests/clients).
TEST_F(WavWriter, BuffersMakeOneDataChunkOfPcmAndOnlyTheSamplerChunkIsPadded)
{
    const std::string path = dir.file("three.wav");
    const auto a = noise(3, 1), b = noise(4, 50), c = noise(2, 90); // 9 bytes: odd
    ASSERT_EQ(
        writeWav(path, makeWaveFormat(44100, 1, 8), a.data(), 3, b.data(), 4, c.data(), 2, message),
        1);
    std::string file = readFileBytes(path);
    ASSERT_EQ(file.size(), 44u + 9 + 16);
    EXPECT_EQ(loadU32LE(at(file, 4)), file.size() - 8);
    EXPECT_EQ(loadU32LE(at(file, 40)), 9u);
    EXPECT_EQ(file.substr(44, 9), asString(a) + asString(b) + asString(c));
    EXPECT_EQ(file.substr(53, 4), "tngb"); // no pad byte before the program's own chunk

    const auto odd = noise(3 * 101, 9);
    WavLoopInfo loop{10, 80, 57};
    ASSERT_EQ(writeWav(path, makeWaveFormat(22050, 1, 24), odd, message, &loop), 1);
    file = readFileBytes(path);
    const size_t smpl = 44 + odd.size() + 1; // a pad byte keeps `smpl` on an even offset
    ASSERT_EQ(file.size(), smpl + 68 + 16);
    EXPECT_EQ(loadU32LE(at(file, 4)), file.size() - 8);
    EXPECT_EQ(file[smpl - 1], '\0');
    EXPECT_EQ(file.substr(smpl, 4), "smpl");
    EXPECT_EQ(file.substr(smpl + 68, 4), "tngb");

    // The tag is PCM whatever the record says; null buffers are skipped.
    WaveFormat format = makeWaveFormat(48000, 2, 16);
    format.wFormatTag = 0xFFFE;
    const auto eight = noise(8, 3);
    ASSERT_EQ(writeWav(path, format, eight.data(), 8, nullptr, 100, nullptr, 5, message), 1);
    file = readFileBytes(path);
    EXPECT_EQ(loadU16LE(at(file, 20)), 1u);
    EXPECT_EQ(loadU32LE(at(file, 40)), 8u);
    EXPECT_EQ(file.size(), 44u + 8 + 16);
}

TEST_F(WavWriter, ReportsUnopenablePath)
{
    const std::string path = dir.file("missing/sub.wav");
    EXPECT_EQ(
        writeWav(path, makeWaveFormat(44100, 2, 16), nullptr, 0, nullptr, 0, nullptr, 0, message),
        0);
    EXPECT_EQ(message, "unable to open " + path);
}

TEST_F(WavConvertFile, RewritesInTheNewFormatLeavesMatchingFilesAloneAndPassesReaderErrors)
{
    const std::string path = dir.file("c.wav");
    const WaveFormat stereo = makeWaveFormat(44100, 2, 16);
    std::vector<int32_t> values;
    for (int i = 0; i < 400; ++i) {
        values.push_back(1000 + i);
        values.push_back(-1000 - i);
    }
    ASSERT_EQ(writeWav(path, stereo, packSamples(stereo, values), message), 1);
    const std::string before = readFileBytes(path);

    ASSERT_EQ(convertWavFile(path, makeWaveFormat(44100, 2, 16), message), 1);
    EXPECT_EQ(readFileBytes(path), before);

    ASSERT_EQ(convertWavFile(path, makeWaveFormat(22050, 1, 24), message), 1) << message;
    WaveFormat read;
    int32_t loopStart, loopEnd, rootKey, frames;
    ASSERT_EQ(readWavHeader(path, read, loopStart, loopEnd, rootKey, frames, message), 1);
    EXPECT_EQ(describeFormat(read), describeFormat(makeWaveFormat(22050, 1, 24)));
    EXPECT_EQ(frames, 200);
    // Left and right cancel: the mix is silent.
    std::vector<uint8_t> data;
    ASSERT_EQ(readWav(path, read, data, message), 1);
    for (size_t i = 0; i < 600; ++i)
        ASSERT_EQ(data[i], 0) << i;

    EXPECT_EQ(convertWavFile(dir.file("none.wav"), makeWaveFormat(22050, 1, 8), message), 0);
    EXPECT_EQ(message, "unable to open " + dir.file("none.wav"));
}
