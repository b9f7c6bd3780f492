// Both WAV readers on files arranged the unusual ways real files are: chunk order, odd sizes,
// extensible headers, loops without loops, truncation and lying sizes.
#include "audiofile/WavFile.h"

#include "audiofile/tests/TestAudio.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

using namespace tg;
using namespace tg::test;

namespace {

struct Header {
    int ok = 0;
    WaveFormat format;
    int32_t loopStart = 0, loopEnd = 0, rootKey = 0, frames = 0;
    std::string message;
};

Header header(const std::string& path)
{
    Header h;
    h.ok = readWavHeader(path, h.format, h.loopStart, h.loopEnd, h.rootKey, h.frames, h.message);
    return h;
}

struct Full {
    int ok = 0;
    WaveFormat format;
    std::vector<uint8_t> data;
    std::string message;
};

Full full(const std::string& path)
{
    Full f;
    f.ok = readWav(path, f.format, f.data, f.message);
    return f;
}

const WaveFormat kStereo16 = makeWaveFormat(44100, 2, 16);

std::string extensibleFmt(const WaveFormat& f, const uint8_t (&guid)[16])
{
    std::string s = fmtBody(f, 0xFFFE);
    RiffBuilder::appendU16(s, 22);               // cbSize
    RiffBuilder::appendU16(s, f.wBitsPerSample); // valid bits
    RiffBuilder::appendU32(s, 3);                // channel mask
    s.append(reinterpret_cast<const char*>(guid), 16);
    return s;
}

} // namespace

TEST(WavReaders, FindFmtAfterOtherChunksAndDataBeforeFmt)
{
    TempDir dir;
    const std::string audio(40, '\x11');
    const std::string path = dir.file("order.wav");
    writeFileBytes(path, RiffBuilder()
                             .chunk("LIST", std::string(12, 'x'))
                             .chunk("data", audio)
                             .chunk("smpl", smplBody(64, 1, 2, 7))
                             .chunk("fmt ", fmtBody(kStereo16))
                             .bytes());
    Header h = header(path);
    ASSERT_EQ(h.ok, 1) << h.message;
    EXPECT_EQ(h.format.nChannels, 2);
    EXPECT_EQ(h.frames, 10);
    EXPECT_EQ(h.loopStart, 2);
    EXPECT_EQ(h.loopEnd, 7);
    EXPECT_EQ(h.rootKey, 64);
    Full f = full(path);
    ASSERT_EQ(f.ok, 1) << f.message;
    EXPECT_EQ(asString(f.data), audio);
}

TEST(WavReaders, FullReaderHonoursPadBytesOfOddChunks)
{
    TempDir dir;
    const std::string path = dir.file("odd.wav");
    const std::string audio = "abcdefgh";
    writeFileBytes(path, RiffBuilder()
                             .chunk("fmt ", fmtBody(kStereo16))
                             .chunk("junk", "123") // padded to 4
                             .chunk("data", audio)
                             .bytes());
    Full f = full(path);
    ASSERT_EQ(f.ok, 1) << f.message;
    EXPECT_EQ(asString(f.data), audio);
}

TEST(WavReaders, OddDataChunkIsReadRoundedUpAndItsLoopIsFound)
{
    TempDir dir;
    const std::string path = dir.file("odddata.wav");
    const WaveFormat mono8 = makeWaveFormat(8000, 1, 8);
    writeFileBytes(path, RiffBuilder()
                             .chunk("fmt ", fmtBody(mono8))
                             .chunk("data", "12345", false) // no pad, as the writer does
                             .chunk("smpl", smplBody(40, 1, 1, 3))
                             .bytes());
    Header h = header(path);
    ASSERT_EQ(h.ok, 1) << h.message;
    EXPECT_EQ(h.frames, 5);
    EXPECT_EQ(h.loopStart, 1);
    EXPECT_EQ(h.loopEnd, 3);
    EXPECT_EQ(h.rootKey, 40);
    Full f = full(path);
    ASSERT_EQ(f.ok, 1) << f.message;
    EXPECT_EQ(asString(f.data), "12345s");
}

TEST(WavReaders, ExtensibleHeaderPassesOnGuidBytesTwoToFive)
{
    TempDir dir;
    const WaveFormat f24 = makeWaveFormat(96000, 2, 24);
    const uint8_t pcm[16] = {1, 0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
    const uint8_t ieee[16] = {3, 0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
    const uint8_t odd[16] = {1, 0, 2, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
    const std::string audio(12, '\x22');
    for (const auto* guid : {&pcm, &ieee}) {
        const std::string path = dir.file("ext.wav");
        writeFileBytes(
            path,
            RiffBuilder().chunk("fmt ", extensibleFmt(f24, *guid)).chunk("data", audio).bytes());
        Header h = header(path);
        ASSERT_EQ(h.ok, 1) << h.message;
        EXPECT_EQ(h.format.wFormatTag, 1);
        EXPECT_EQ(h.format.wBitsPerSample, 24);
        EXPECT_EQ(h.frames, 2);
        Full f = full(path);
        ASSERT_EQ(f.ok, 1) << f.message;
        EXPECT_EQ(f.format.wFormatTag, 1);
        EXPECT_EQ(asString(f.data), audio);
    }
    const std::string path = dir.file("bad.wav");
    writeFileBytes(
        path, RiffBuilder().chunk("fmt ", extensibleFmt(f24, odd)).chunk("data", audio).bytes());
    Header h = header(path);
    EXPECT_EQ(h.ok, 0);
    EXPECT_EQ(h.message, "unsupported audio format (should be uncompressed PCM, "
                         "8bit/16bit/24bit, mono/stereo):\n\"" +
                             path + "\"");
}

TEST(WavReaders, RejectsCompressedAndOddPcmFormats)
{
    TempDir dir;
    WaveFormat f32 = makeWaveFormat(44100, 2, 32);
    WaveFormat quad = makeWaveFormat(44100, 4, 16);
    const std::string expected = "unsupported audio format (should be uncompressed PCM, "
                                 "8bit/16bit/24bit, mono/stereo):\n\"";
    int n = 0;
    for (const std::string& body : {fmtBody(kStereo16, 3), fmtBody(f32), fmtBody(quad)}) {
        const std::string path = dir.file("f" + std::to_string(n++) + ".wav");
        writeFileBytes(path,
                       RiffBuilder().chunk("fmt ", body).chunk("data", std::string(8, 0)).bytes());
        EXPECT_EQ(header(path).message, expected + path + "\"");
        EXPECT_EQ(full(path).message, expected + path + "\"");
    }
}

TEST(WavReaders, SamplerChunkWithoutLoopsGivesRootKeyOnly)
{
    TempDir dir;
    const std::string path = dir.file("noloop.wav");
    writeFileBytes(path, RiffBuilder()
                             .chunk("fmt ", fmtBody(kStereo16))
                             .chunk("data", std::string(16, 0))
                             .chunk("smpl", smplBody(72, 0))
                             .bytes());
    Header h = header(path);
    ASSERT_EQ(h.ok, 1) << h.message;
    EXPECT_EQ(h.rootKey, 72);
    EXPECT_EQ(h.loopStart, -1);
    EXPECT_EQ(h.loopEnd, -1);
}

TEST(WavReaders, TruncatedFilesFailCleanlyAtEveryHeaderByte)
{
    TempDir dir;
    const std::string whole = RiffBuilder()
                                  .chunk("fmt ", fmtBody(kStereo16))
                                  .chunk("data", std::string(8, '\x05'))
                                  .bytes();
    const std::string path = dir.file("cut.wav");
    for (size_t length = 0; length < whole.size(); ++length) {
        SCOPED_TRACE(length);
        writeFileBytes(path, whole.substr(0, length));
        Header h = header(path);
        Full f = full(path);
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
    writeFileBytes(path, whole.substr(0, 30));
    EXPECT_EQ(header(path).message, "read error (nAvgBytesPerSec): \"" + path + "\"");
}

TEST(WavReaders, WrongMagicAndMissingFileAreReported)
{
    TempDir dir;
    const std::string path = dir.file("wrong.wav");
    std::string bytes = RiffBuilder().chunk("fmt ", fmtBody(kStereo16)).bytes();
    writeFileBytes(path, "RIFX" + bytes.substr(4));
    EXPECT_EQ(header(path).message, "wrong format: \"" + path + "\"");
    writeFileBytes(path, bytes.substr(0, 8) + "AVI " + bytes.substr(12));
    EXPECT_EQ(full(path).message, "wrong format: \"" + path + "\"");
    const std::string missing = dir.file("nothing.wav");
    EXPECT_EQ(header(missing).message, "unable to open " + missing);
    EXPECT_EQ(full(missing).message, "unable to open " + missing);
}

TEST(WavReaders, LyingSizesNeitherAllocateNorCrash)
{
    TempDir dir;
    const std::string path = dir.file("lie.wav");
    std::string bytes =
        RiffBuilder().chunk("fmt ", fmtBody(kStereo16)).chunk("data", std::string(8, 1)).bytes();
    // Data size claims 2 GB, then almost 4 GB.
    bytes[40] = '\xFE';
    bytes[41] = bytes[42] = '\xFF';
    bytes[43] = '\x7F';
    writeFileBytes(path, bytes);
    EXPECT_EQ(full(path).message, "read error (audio data): \"" + path + "\"");
    bytes[43] = '\xFF';
    writeFileBytes(path, bytes);
    EXPECT_EQ(full(path).message, "unable to allocate memory for audio data: \"" + path + "\"");

    // A block align of zero must not divide anything.
    WaveFormat broken = kStereo16;
    broken.nBlockAlign = 0;
    writeFileBytes(
        path,
        RiffBuilder().chunk("fmt ", fmtBody(broken)).chunk("data", std::string(8, 1)).bytes());
    Header h = header(path);
    EXPECT_EQ(h.ok, 1);
    EXPECT_EQ(h.frames, 0);
}
