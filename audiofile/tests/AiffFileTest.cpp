// The AIFF writer's layout, its round trip through the reader, and the reader on AIFF-C,
// unknown chunks and broken files.
#include "audiofile/AiffFile.h"

#include "audiofile/BinaryFile.h"
#include "audiofile/Extended80.h"
#include "audiofile/WavFile.h"
#include "audiofile/tests/TestAudio.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace tg;
using namespace tg::test;

namespace {

std::string be16(uint16_t v)
{
    return {static_cast<char>(v >> 8), static_cast<char>(v)};
}
std::string be32(uint32_t v)
{
    return be16(static_cast<uint16_t>(v >> 16)) + be16(static_cast<uint16_t>(v));
}

std::string chunk(const std::string& id, const std::string& body)
{
    return id + be32(static_cast<uint32_t>(body.size())) + body +
           std::string(body.size() & 1, '\0');
}

std::string form(const std::string& type, const std::string& chunks)
{
    return "FORM" + be32(static_cast<uint32_t>(4 + chunks.size())) + type + chunks;
}

std::string commBody(int16_t channels, uint32_t frames, int16_t bits, double rate,
                     const std::string& compression = "")
{
    uint8_t r[10];
    doubleToExtended80(rate, r);
    std::string s = be16(static_cast<uint16_t>(channels)) + be32(frames) +
                    be16(static_cast<uint16_t>(bits)) + std::string(reinterpret_cast<char*>(r), 10);
    if (!compression.empty())
        s += compression + std::string(1, '\x04') + "name" + std::string(1, '\0');
    return s;
}

std::string ssndBody(const std::string& samples, uint32_t offset = 0)
{
    return be32(offset) + be32(0) + std::string(offset, '\x7F') + samples;
}

// Chunk ids in file order.
std::vector<std::string> chunkIds(const std::string& file)
{
    std::vector<std::string> ids;
    size_t p = 12;
    while (p + 8 <= file.size()) {
        ids.push_back(file.substr(p, 4));
        const uint32_t size = loadU32BE(reinterpret_cast<const uint8_t*>(file.data()) + p + 4);
        p += 8 + size + (size & 1);
    }
    return ids;
}

// A temporary folder and a message slot for each test.
class AiffFiles : public testing::Test {
  protected:
    TempDir dir;
    std::string message;
};
using AiffWriter = AiffFiles;
using AiffRoundTrip = AiffFiles;
using AiffReader = AiffFiles;

} // namespace

// Samples, markers and the instrument chunk's values are read back by libsndfile
// (SndfileReadsOurAudio in tests/clients); here: which chunks, in which order.
TEST_F(AiffWriter, ChunksInOrderAndMarkersAndInstrumentOnlyWithALoop)
{
    const std::string path = dir.file("a.aif");
    const auto audio = noise(3 * 11, 5); // 24-bit mono, 33 bytes: odd
    const WaveFormat f = makeWaveFormat(22050, 1, 24);
    ASSERT_EQ(writeAiff(path, f, audio.data(), 33, 0, 1, {64, 60, 67, 1, 127, "Piano C4"}, message),
              1)
        << message;
    std::string file = readFileBytes(path);
    EXPECT_EQ(loadU32BE(reinterpret_cast<const uint8_t*>(file.data()) + 4), file.size() - 8);
    EXPECT_EQ(chunkIds(file), (std::vector<std::string>{"COMM", "MARK", "INST", "NAME", "SSND"}));
    EXPECT_EQ(file.size() % 2, 0u); // the odd sound data is padded

    ASSERT_EQ(writeAiff(path, f, audio.data(), 33, 0, 0, {}, message), 1);
    file = readFileBytes(path);
    EXPECT_EQ(chunkIds(file), (std::vector<std::string>{"COMM", "NAME", "SSND"}));
}

TEST_F(AiffWriter, RefusesOddBitDepthsAndUnopenablePaths)
{
    WaveFormat twelve = makeWaveFormat(44100, 1, 12);
    EXPECT_EQ(writeAiff(dir.file("a.aif"), twelve, nullptr, 0, 0, 0, {}, message), 0);
    EXPECT_EQ(message, "Bit depth not supported.");
    const std::string bad = dir.file("no/such/dir.aif");
    EXPECT_EQ(writeAiff(bad, makeWaveFormat(44100, 1, 16), nullptr, 0, 0, 0, {}, message), 0);
    EXPECT_EQ(message, "Unable to open \"" + bad + "\"");
}

TEST_F(AiffRoundTrip, EveryDepthAndChannelCountWithAndWithoutLoop)
{
    for (uint16_t bits : {8, 16, 24}) {
        for (uint16_t channels : {1, 2}) {
            for (bool looped : {false, true}) {
                SCOPED_TRACE(testing::Message() << bits << "/" << channels << "/" << looped);
                const WaveFormat f = makeWaveFormat(96000, channels, bits);
                const auto audio = noise(f.nBlockAlign * 777u, bits * channels);
                const std::string path = dir.file("rt.aif");
                AiffKeyRecord key{50, 48, 52, 1, 127, "odd"};
                std::string message;
                ASSERT_EQ(writeAiff(path, f, audio.data(), static_cast<int32_t>(audio.size()),
                                    looped ? 100 : 0, looped ? 700 : 0, key, message),
                          1);
                AiffContents c;
                ASSERT_EQ(readAiff(path, c, message), 1) << message;
                EXPECT_EQ(message, "");
                EXPECT_EQ(describeFormat(c.format), describeFormat(f));
                EXPECT_EQ(c.data, audio);
                EXPECT_EQ(std::tie(c.loopStart, c.loopEnd, c.rootKey, c.name),
                          looped ? std::make_tuple(100, 700, 50, "odd")
                                 : std::make_tuple(-1, -1, -1, "odd"));
            }
        }
    }
}

TEST_F(AiffReader, SowtAifcGivesTheSameBytesAsTheEquivalentWav)
{
    const WaveFormat f = makeWaveFormat(48000, 2, 24);
    const auto audio = noise(6 * 50, 77);
    const std::string sowt = form("AIFC", chunk("FVER", be32(0xA2805140)) +
                                              chunk("COMM", commBody(2, 50, 24, 48000, "sowt")) +
                                              chunk("SSND", ssndBody(asString(audio))));
    writeFileBytes(dir.file("s.aifc"), sowt);
    ASSERT_EQ(writeWav(dir.file("s.wav"), f, audio, message), 1);

    AiffContents c;
    ASSERT_EQ(readAiff(dir.file("s.aifc"), c, message), 1) << message;
    WaveFormat wf;
    std::vector<uint8_t> wav;
    ASSERT_EQ(readWav(dir.file("s.wav"), wf, wav, message), 1);
    EXPECT_EQ(c.data, wav);
    EXPECT_EQ(describeFormat(c.format), describeFormat(wf));

    // "NONE" is big-endian, like plain AIFF.
    std::string bigEndian;
    for (size_t i = 0; i < audio.size(); i += 3)
        bigEndian += std::string{static_cast<char>(audio[i + 2]), static_cast<char>(audio[i + 1]),
                                 static_cast<char>(audio[i])};
    writeFileBytes(dir.file("n.aifc"),
                   form("AIFC", chunk("COMM", commBody(2, 50, 24, 48000, "NONE")) +
                                    chunk("SSND", ssndBody(bigEndian, 6))));
    AiffContents n;
    ASSERT_EQ(readAiff(dir.file("n.aifc"), n, message), 1) << message;
    EXPECT_EQ(n.data, wav);
}

TEST_F(AiffReader, UnknownChunksAreNotedAndSkipped)
{
    const std::string path = dir.file("u.aif");
    writeFileBytes(path, form("AIFF", chunk("COMM", commBody(1, 2, 16, 44100)) +
                                          chunk("ABCD", "xyz") + chunk("APPL", "stoc....") +
                                          chunk("SSND", ssndBody("\x01\x02\x03\x04"))));
    AiffContents c;
    ASSERT_EQ(readAiff(path, c, message), 1) << message;
    EXPECT_EQ(message, "Unrecognized Chunk: ABCD\n");
    EXPECT_EQ(asString(c.data), "\x02\x01\x04\x03");
}

// One file per refusal; arbitrary and truncated bytes are the AIFF fuzz target's.
TEST_F(AiffReader, ReportsEachKindOfBrokenFile)
{
    const std::string path = dir.file("b.aif");
    const auto expectMessage = [&](const std::string& bytes, const std::string& expected) {
        writeFileBytes(path, bytes);
        AiffContents c;
        std::string message;
        EXPECT_EQ(readAiff(path, c, message), 0);
        EXPECT_EQ(message, expected);
        EXPECT_TRUE(c.data.empty());
    };
    const std::string q = "\"" + path + "\"";
    const std::string comm = chunk("COMM", commBody(1, 2, 16, 44100));
    const std::string ssnd = chunk("SSND", ssndBody("abcd"));
    expectMessage("FORM\0\0", "Error reading Header Chunk from " + q + ".");
    expectMessage("RIFF" + be32(4) + "AIFF", "Format not supported (no \"FORM\" Chunk found).");
    expectMessage(form("WAVE", comm),
                  "Format not supported (no \"AIFF\" or \"AIFC\" Chunk found).");
    expectMessage(form("AIFF", comm), "At least one required Chunk was not read in successfully.");
    expectMessage(form("AIFF", ssnd), "At least one required Chunk was not read in successfully.");
    expectMessage(form("AIFC", chunk("COMM", commBody(1, 2, 16, 44100, "fl32")) + ssnd),
                  "Compression type not supported (\"fl32\")");
    expectMessage(form("AIFF", chunk("COMM", "short") + ssnd),
                  "Error reading Common Chunk from " + q + ".");
    expectMessage(form("AIFF", comm + chunk("INST", "tiny") + ssnd),
                  "Error reading Instrument Chunk from " + q + ".");
    expectMessage(form("AIFF", comm + chunk("MARK", be16(3) + be16(1)) + ssnd),
                  "Error reading Marker Chunk from " + q + ".");
    expectMessage(form("AIFF", comm + chunk("SSND", "1234")),
                  "Error reading Sound Data Chunk from " + q + ".");
    expectMessage(form("AIFF", chunk("COMM", commBody(1, 3, 16, 44100)) + ssnd),
                  "Error reading in sound data.");
    expectMessage(form("AIFF", chunk("COMM", commBody(1, 1, 32, 44100)) + ssnd),
                  "Bit depth not supported.");
    expectMessage(form("AIFF", chunk("COMM", commBody(1, 1, 0, 44100)) + ssnd),
                  "Error reading Bit Depth.");
    expectMessage(form("AIFF", comm + chunk("SSND", ssndBody("abcd").replace(3, 1, "\x09"))),
                  "Could not seek to sound data.");
    // A NAME claiming more bytes than the file has.
    expectMessage(form("AIFF", comm + ssnd + "NAME" + be32(1000) + "abc"),
                  "Error reading Name Chunk from " + q + ".");
}
