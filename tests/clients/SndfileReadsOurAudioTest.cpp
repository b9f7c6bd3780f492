// libsndfile, an independent reader, opens the WAV and AIFF files we write and sees our
// frames, samples and loops.
#include "audiofile/AiffFile.h"
#include "audiofile/WavFile.h"

#include "tests/clients/SndfileView.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace tg;

namespace {

// Our byte image decoded to int at the full 32-bit scale libsndfile uses for sf_readf_int.
int32_t expectedInt(const WaveFormat& f, const std::vector<uint8_t>& bytes, size_t sample)
{
    const uint8_t* p = bytes.data() + sample * (f.wBitsPerSample / 8);
    switch (f.wBitsPerSample) {
    case 8:
        return (static_cast<int32_t>(p[0]) - 128) * (1 << 24);
    case 16:
        return static_cast<int32_t>(static_cast<uint32_t>(p[0] | (p[1] << 8)) << 16);
    default:
        return static_cast<int32_t>((static_cast<uint32_t>(p[0]) << 8) |
                                    (static_cast<uint32_t>(p[1]) << 16) |
                                    (static_cast<uint32_t>(p[2]) << 24));
    }
}

std::vector<uint8_t> noise(size_t count, uint32_t seed)
{
    std::vector<uint8_t> v(count);
    for (auto& b : v) {
        seed = seed * 1664525u + 1013904223u;
        b = static_cast<uint8_t>(seed >> 24);
    }
    return v;
}

void expectSameSamples(SNDFILE* file, const WaveFormat& f, const std::vector<uint8_t>& bytes,
                       int64_t frames)
{
    std::vector<int32_t> read(static_cast<size_t>(frames) * f.nChannels);
    ASSERT_EQ(sf_readf_int(file, read.data(), frames), frames);
    for (size_t i = 0; i < read.size(); ++i)
        ASSERT_EQ(read[i], expectedInt(f, bytes, i)) << "sample " << i;
}

} // namespace

// What differs between the two containers: how we write them and what libsndfile reports.
struct Container {
    const char* file;
    int type;
    int eightBitSubtype;
    bool keyRange; // AIFF's instrument chunk carries the key and velocity ranges
};

bool writeLooped(const Container& c, const std::string& path, const WaveFormat& format,
                 const std::vector<uint8_t>& audio, bool withLoop)
{
    std::string message;
    if (c.type == SF_FORMAT_WAV) {
        WavLoopInfo loop{40, 699, 65};
        return writeWav(path, format, audio, message, withLoop ? &loop : nullptr) == 1;
    }
    AiffKeyRecord key{65, 60, 70, 1, 127, "Flute F4"};
    return writeAiff(path, format, audio.data(), static_cast<int32_t>(audio.size()),
                     withLoop ? 40 : 0, withLoop ? 700 : 0, key, message) == 1;
}

TEST(SndfileReadsOurAudio, FramesSamplesLoopAndBaseNoteOfEveryDepthAndChannelCount)
{
    test::TempDir dir;
    for (const Container& c : {Container{"sf.wav", SF_FORMAT_WAV, SF_FORMAT_PCM_U8, false},
                               Container{"sf.aif", SF_FORMAT_AIFF, SF_FORMAT_PCM_S8, true}}) {
        for (uint16_t bits : {8, 16, 24}) {
            for (uint16_t channels : {1, 2}) {
                for (bool withLoop : {false, true}) {
                    SCOPED_TRACE(testing::Message() << c.file << ", " << bits << " bit, "
                                                    << channels << " ch, loop " << withLoop);
                    const WaveFormat format = makeWaveFormat(48000, channels, bits);
                    const int32_t frames = 1001; // odd: 8-bit mono WAV data has no pad byte
                    const auto audio =
                        noise(static_cast<size_t>(frames) * format.nBlockAlign, bits + channels);
                    const std::string path = dir.file(c.file);
                    ASSERT_TRUE(writeLooped(c, path, format, audio, withLoop));

                    const test::SndfileView o = test::viewWithSndfile(path);
                    ASSERT_TRUE(o.file) << sf_strerror(nullptr);
                    const int subtype = bits == 8    ? c.eightBitSubtype
                                        : bits == 16 ? SF_FORMAT_PCM_16
                                                     : SF_FORMAT_PCM_24;
                    EXPECT_EQ(std::make_tuple(o.info.frames, o.info.channels, o.info.samplerate,
                                              o.info.format),
                              std::make_tuple(sf_count_t(frames), int(channels), 48000,
                                              c.type | subtype));
                    expectSameSamples(o.file.get(), format, audio, frames);

                    EXPECT_EQ(o.hasInstrument, withLoop);
                    if (!o.hasInstrument)
                        continue;
                    const SF_INSTRUMENT& inst = o.instrument;
                    EXPECT_EQ(inst.basenote, 65);
                    if (c.keyRange) {
                        EXPECT_EQ(std::make_tuple(inst.key_lo, inst.key_hi, inst.velocity_lo,
                                                  inst.velocity_hi),
                                  std::make_tuple(60, 70, 1, 127));
                    }
                    ASSERT_GE(inst.loop_count, 1);
                    EXPECT_EQ(inst.loops[0].mode, SF_LOOP_FORWARD);
                    EXPECT_EQ(inst.loops[0].start, 40u);
                    // One past the last looped frame: our inclusive WAV loop end 699, and the
                    // AIFF end marker 700 that sits between frames.
                    EXPECT_EQ(inst.loops[0].end, 700u);
                }
            }
        }
    }
}
