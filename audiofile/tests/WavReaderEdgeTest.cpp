// Both WAV readers on files arranged the unusual ways real files are: chunk order, odd sizes,
// extensible headers, loops without loops, truncation and lying sizes.
#include "audiofile/WavFile.h"

#include "audiofile/tests/TestAudio.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <array>

using namespace tg;
using namespace tg::test;

namespace {

struct Header {
    int ok = 0;
    WaveFormat format;
    int32_t loopStart = 0, loopEnd = 0, rootKey = 0, frames = 0;
    std::string message;
    std::array<int32_t, 4> framesLoopAndKey() const
    {
        return {frames, loopStart, loopEnd, rootKey};
    }
};

struct Full {
    int ok = 0;
    WaveFormat format;
    std::vector<uint8_t> data;
    std::string message;
};

const WaveFormat kStereo16 = makeWaveFormat(44100, 2, 16);
const std::string kUnsupported =
    "unsupported audio format (should be uncompressed PCM, 8bit/16bit/24bit, mono/stereo):\n\"";

std::string extensibleFmt(const WaveFormat& f, const uint8_t (&guid)[16])
{
    std::string s = fmtBody(f, 0xFFFE);
    RiffBuilder::appendU16(s, 22);               // cbSize
    RiffBuilder::appendU16(s, f.wBitsPerSample); // valid bits
    RiffBuilder::appendU32(s, 3);                // channel mask
    s.append(reinterpret_cast<const char*>(guid), 16);
    return s;
}

// One file per test, read by the header reader and the full reader.
class WavReaders : public testing::Test {
  protected:
    TempDir dir;
    std::string path = dir.file("test.wav");

    void write(const std::string& bytes) { ASSERT_TRUE(writeFileBytes(path, bytes)); }
    void write(const RiffBuilder& riff) { write(riff.bytes()); }
    Header header() const
    {
        Header h;
        h.ok =
            readWavHeader(path, h.format, h.loopStart, h.loopEnd, h.rootKey, h.frames, h.message);
        return h;
    }
    Full full() const
    {
        Full f;
        f.ok = readWav(path, f.format, f.data, f.message);
        return f;
    }
};

} // namespace

TEST_F(WavReaders, FindFmtAfterOtherChunksAndDataBeforeFmt)
{
    const std::string audio(40, '\x11');
    write(RiffBuilder()
              .chunk("LIST", std::string(12, 'x'))
              .chunk("data", audio)
              .chunk("smpl", smplBody(64, 1, 2, 7))
              .chunk("fmt ", fmtBody(kStereo16)));
    Header h = header();
    ASSERT_EQ(h.ok, 1) << h.message;
    EXPECT_EQ(h.format.nChannels, 2);
    EXPECT_EQ(h.framesLoopAndKey(), (std::array<int32_t, 4>{10, 2, 7, 64}));
    Full f = full();
    ASSERT_EQ(f.ok, 1) << f.message;
    EXPECT_EQ(asString(f.data), audio);
}

TEST_F(WavReaders, BothReadersHonourPadBytesOfOddChunks)
{
    write(RiffBuilder()
              .chunk("LIST", "INFO1") // padded to 6, before the format as other programs write it
              .chunk("fmt ", fmtBody(kStereo16))
              .chunk("junk", "123") // padded to 4
              .chunk("data", "abcdefgh")
              .chunk("note", "x") // padded to 2
              .chunk("smpl", smplBody(61, 1, 0, 1)));
    Header h = header();
    ASSERT_EQ(h.ok, 1) << h.message;
    EXPECT_EQ(h.format.nChannels, 2);
    EXPECT_EQ(h.framesLoopAndKey(), (std::array<int32_t, 4>{2, 0, 1, 61}));
    Full f = full();
    ASSERT_EQ(f.ok, 1) << f.message;
    EXPECT_EQ(asString(f.data), "abcdefgh");
}

TEST_F(WavReaders, OddDataChunkIsReadRoundedUpAndItsLoopIsFound)
{
    write(RiffBuilder()
              .chunk("fmt ", fmtBody(makeWaveFormat(8000, 1, 8)))
              .chunk("data", "12345", false) // no pad, as the writer does
              .chunk("smpl", smplBody(40, 1, 1, 3)));
    Header h = header();
    ASSERT_EQ(h.ok, 1) << h.message;
    EXPECT_EQ(h.framesLoopAndKey(), (std::array<int32_t, 4>{5, 1, 3, 40}));
    Full f = full();
    ASSERT_EQ(f.ok, 1) << f.message;
    EXPECT_EQ(asString(f.data), "12345s");
}

TEST_F(WavReaders, ExtensibleHeaderPassesOnGuidBytesTwoToFive)
{
    const WaveFormat f24 = makeWaveFormat(96000, 2, 24);
    const uint8_t pcm[16] = {1, 0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
    const uint8_t ieee[16] = {3, 0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
    const uint8_t odd[16] = {1, 0, 2, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
    const std::string audio(12, '\x22');
    for (const auto* guid : {&pcm, &ieee}) {
        write(RiffBuilder().chunk("fmt ", extensibleFmt(f24, *guid)).chunk("data", audio));
        Header h = header();
        ASSERT_EQ(h.ok, 1) << h.message;
        EXPECT_EQ(describeFormat(h.format), describeFormat(f24));
        EXPECT_EQ(h.frames, 2);
        Full f = full();
        ASSERT_EQ(f.ok, 1) << f.message;
        EXPECT_EQ(describeFormat(f.format), describeFormat(f24));
        EXPECT_EQ(asString(f.data), audio);
    }
    write(RiffBuilder().chunk("fmt ", extensibleFmt(f24, odd)).chunk("data", audio));
    Header h = header();
    EXPECT_EQ(h.ok, 0);
    EXPECT_EQ(h.message, kUnsupported + path + "\"");
}

TEST_F(WavReaders, RejectsCompressedAndOddPcmFormats)
{
    for (const std::string& body : {fmtBody(kStereo16, 3), fmtBody(makeWaveFormat(44100, 2, 32)),
                                    fmtBody(makeWaveFormat(44100, 4, 16))}) {
        write(RiffBuilder().chunk("fmt ", body).chunk("data", std::string(8, 0)));
        EXPECT_EQ(header().message, kUnsupported + path + "\"");
        EXPECT_EQ(full().message, kUnsupported + path + "\"");
    }
}

TEST_F(WavReaders, SamplerChunkWithoutLoopsGivesRootKeyOnly)
{
    write(RiffBuilder()
              .chunk("fmt ", fmtBody(kStereo16))
              .chunk("data", std::string(16, 0))
              .chunk("smpl", smplBody(72, 0)));
    Header h = header();
    ASSERT_EQ(h.ok, 1) << h.message;
    EXPECT_EQ(h.framesLoopAndKey(), (std::array<int32_t, 4>{4, -1, -1, 72}));
}

TEST_F(WavReaders, TruncatedFilesFailCleanlyAtEveryHeaderByte)
{
    const std::string whole =
        RiffBuilder().chunk("fmt ", fmtBody(kStereo16)).chunk("data", std::string(8, 5)).bytes();
    for (size_t length = 0; length < whole.size(); ++length) {
        SCOPED_TRACE(length);
        write(whole.substr(0, length));
        Header h = header();
        Full f = full();
        EXPECT_EQ(f.ok, 0);
        EXPECT_EQ(f.message.rfind("read error (", 0), 0u) << f.message;
        EXPECT_TRUE(f.data.empty());
        if (length >= 44) {
            EXPECT_EQ(h.ok, 1); // the header is complete; only audio bytes are missing
            EXPECT_EQ(h.frames, 2);
        } else {
            EXPECT_EQ(h.ok, 0);
            EXPECT_EQ(h.message.rfind("read error (", 0), 0u) << h.message;
            EXPECT_EQ(h.loopStart, -1);
            EXPECT_EQ(h.rootKey, -1);
        }
    }
    write(whole.substr(0, 30));
    EXPECT_EQ(header().message, "read error (nAvgBytesPerSec): \"" + path + "\"");
}

TEST_F(WavReaders, WrongMagicAndMissingFileAreReported)
{
    std::string bytes = RiffBuilder().chunk("fmt ", fmtBody(kStereo16)).bytes();
    write("RIFX" + bytes.substr(4));
    EXPECT_EQ(header().message, "wrong format: \"" + path + "\"");
    write(bytes.substr(0, 8) + "AVI " + bytes.substr(12));
    EXPECT_EQ(full().message, "wrong format: \"" + path + "\"");
    path = dir.file("nothing.wav");
    EXPECT_EQ(header().message, "unable to open " + path);
    EXPECT_EQ(full().message, "unable to open " + path);
}

TEST_F(WavReaders, LyingSizesNeitherAllocateNorCrash)
{
    std::string bytes =
        RiffBuilder().chunk("fmt ", fmtBody(kStereo16)).chunk("data", std::string(8, 1)).bytes();
    // Data size claims 2 GB, then almost 4 GB.
    bytes.replace(40, 4, "\xFE\xFF\xFF\x7F");
    write(bytes);
    EXPECT_EQ(full().message, "read error (audio data): \"" + path + "\"");
    bytes[43] = '\xFF';
    write(bytes);
    EXPECT_EQ(full().message, "unable to allocate memory for audio data: \"" + path + "\"");

    // A block align of zero must not divide anything.
    WaveFormat broken = kStereo16;
    broken.nBlockAlign = 0;
    write(RiffBuilder().chunk("fmt ", fmtBody(broken)).chunk("data", std::string(8, 1)));
    Header h = header();
    EXPECT_EQ(h.ok, 1);
    EXPECT_EQ(h.frames, 0);
}
