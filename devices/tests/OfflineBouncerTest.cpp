// The layout of an offline take: length, where Note On and Note Off land, the tail of the
// previous take rendered away, and the sample formats it is written in.
#include "devices/OfflineBouncer.h"
#include "devices/FloatFrames.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace tg {
namespace {

// Plays 0.5 on both sides while any key is down, and after the key goes up a tail that
// halves every `tailHalving` frames; records what it was sent. Stands in for a real synth
// where exact frames matter (the real ones are checked in HostedInstrumentTest).
class GateInstrument : public HostedInstrument {
  public:
    void sendMidi(uint8_t status, uint8_t data1, uint8_t data2) override
    {
        messages.push_back({status, data1, data2});
        if ((status & 0xf0) == 0x90 && data2 > 0)
            level_ = 0.5f, held_ = true;
        else if ((status & 0xf0) == 0x80)
            held_ = false;
    }
    void resetNotes() override
    {
        ++resets;
        if (!honourReset)
            return;
        level_ = 0.0f;
        held_ = false;
    }
    void render(float* left, float* right, uint32_t frames) override
    {
        for (uint32_t i = 0; i < frames; ++i) {
            if (!held_ && ++sinceRelease_ % tailHalving == 0)
                level_ *= 0.5f;
            left[i] = right[i] = level_;
        }
        rendered += frames;
    }
    int32_t sampleRate() const override { return rate; }
    std::string description() const override { return "gate"; }

    std::vector<std::vector<uint8_t>> messages;
    int resets = 0;
    bool honourReset = true;
    int64_t rendered = 0;
    uint32_t tailHalving = 100000;
    int32_t rate = 44100;

  private:
    float level_ = 0.0f;
    bool held_ = false;
    uint32_t sinceRelease_ = 0;
};

const AudioStreamConfig kStereo16{-1, -1, -1, 44100, 16, 2, -1.0f};

int16_t sampleAt(const std::vector<uint8_t>& take, int64_t frame, int channels = 2)
{
    int16_t value;
    std::memcpy(&value, take.data() + frame * 2 * channels, 2);
    return value;
}

class OfflineBouncer : public ::testing::Test {
  protected:
    BounceNote noteOf(double length, double release)
    {
        BounceNote note;
        note.noteLength = length;
        note.releaseLength = release;
        return note;
    }
    int bounce(const BounceNote& note, const AudioStreamConfig& format = kStereo16)
    {
        return bounceNote(gate, note, format, take, msg);
    }

    GateInstrument gate;
    std::vector<uint8_t> take;
    std::string msg;
};

TEST_F(OfflineBouncer, TakeIsLeadInNoteAndReleaseWithMessagesOnTheirFrames)
{
    BounceNote note = noteOf(2.0, 1.0);
    note.note = 64;
    note.attackVelocity = 90;
    note.releaseVelocity = 33;
    note.channel = 2;
    ASSERT_EQ(bounce(note), 1) << msg;

    EXPECT_EQ(take.size(), size_t(154350) * 4); // 3.5 s
    EXPECT_EQ(bounceNoteOnFrame(note, 44100), 22050);
    EXPECT_EQ(bounceNoteOffFrame(note, 44100), 22050 + 88200);
    EXPECT_EQ(sampleAt(take, 22049), 0);
    EXPECT_EQ(sampleAt(take, 22050), 16384); // 0.5 of full scale, rounded
    EXPECT_EQ(sampleAt(take, 22050 + 88199), 16384);
    ASSERT_EQ(gate.messages.size(), 2u);
    EXPECT_EQ(gate.messages[0], (std::vector<uint8_t>{0x92, 64, 90}));
    EXPECT_EQ(gate.messages[1], (std::vector<uint8_t>{0x82, 64, 33})); // a real Note Off
}

TEST_F(OfflineBouncer, NoteOffIsSentEvenWhenTheTakeEndsFirst)
{
    ASSERT_EQ(bounce(noteOf(0.25, 0.0)), 1) << msg;
    EXPECT_EQ(take.size(), size_t(33075) * 4);
    ASSERT_EQ(gate.messages.size(), 2u);
    EXPECT_EQ(gate.messages[1][0], 0x80);
}

TEST_F(OfflineBouncer, TailOfThePreviousTakeIsRenderedAwayBeforeTheLeadIn)
{
    // An instrument that ignores the reset and rings on: its tail is played out (not kept in
    // the next take) until it falls below the quiet level.
    gate.honourReset = false;
    gate.tailHalving = 2000;
    ASSERT_EQ(bounce(noteOf(0.5, 0.0)), 1) << msg;
    const int64_t firstRendered = gate.rendered;
    ASSERT_EQ(bounce(noteOf(0.5, 0.0)), 1) << msg;
    EXPECT_EQ(gate.resets, 2);
    EXPECT_GT(gate.rendered - firstRendered, int64_t(take.size() / 4)); // the tail went first
    for (int64_t frame = 0; frame < 22050; frame += 1000)
        EXPECT_LE(std::abs(sampleAt(take, frame)), 4) << frame;
}

// 24-bit mono takes at 48 kHz are bounced from a real instrument in OfflineRecordingTest.
TEST_F(OfflineBouncer, WritesEightBitStereoAtTheInstrumentsRateOnly)
{
    BounceNote note = noteOf(0.1, 0.0);
    note.leadIn = 0.1;
    gate.rate = 48000;
    const AudioStreamConfig lowRate{-1, -1, -1, 11025, 8, 2, -1.0f};
    ASSERT_EQ(bounce(note, lowRate), 0);
    EXPECT_EQ(msg, "The instrument runs at 48000 Hz, the take is 11025 Hz");
    gate.rate = 11025;
    ASSERT_EQ(bounce(note, lowRate), 1) << msg;
    ASSERT_EQ(take.size(), size_t(2205) * 2);
    EXPECT_EQ(take[0], 128);            // 8-bit silence is the centre
    EXPECT_EQ(take[1200 * 2 + 1], 192); // 0.5 x 127 rounded, above the centre
}

TEST_F(OfflineBouncer, BadNotesAndFormatsAreRefused)
{
    BounceNote note;
    note.note = 128;
    EXPECT_EQ(bounce(note), 0);
    EXPECT_EQ(msg, "Cannot bounce note 128 on channel 1 with velocities 127/0");
    EXPECT_EQ(bounce(noteOf(-1.0, 0.0)), 0);
    EXPECT_EQ(msg, "Cannot bounce a note of -1 s with 0 s release");
    EXPECT_EQ(bounce(BounceNote(), AudioStreamConfig{-1, -1, -1, 44100, 12, 2, -1.0f}), 0);
    EXPECT_EQ(msg, "Cannot bounce into 44100 Hz, 2 channel(s), 12 bits");
    EXPECT_TRUE(gate.messages.empty());
}

TEST(FloatFrames, RoundsClipsAndCentresEachFormat)
{
    const float left[] = {1.5f, -1.5f, 0.0f, 0.25f};
    const float right[] = {-1.0f, 1.0f, 0.0f, 0.75f};
    uint8_t out[4 * 2 * 4] = {};

    encodeFloatFrames(left, right, 4, 2, 16, out);
    const int16_t expected16[] = {32767, -32767, -32768, 32767, 0, 0, 8192, 24575};
    for (int i = 0; i < 8; ++i) {
        int16_t value;
        std::memcpy(&value, out + 2 * i, 2);
        EXPECT_EQ(value, expected16[i]) << i;
    }

    encodeFloatFrames(left, right, 4, 1, 8, out);
    EXPECT_EQ(out[0], 128 + 32); // mean of 1.5 and -1.0 = 0.25
    EXPECT_EQ(out[2], 128);      // silence is the 8-bit centre
    EXPECT_EQ(out[3], 128 + 64);

    const float loud[] = {-2.0f};
    encodeFloatFrames(loud, loud, 1, 1, 24, out);
    EXPECT_EQ(out[0] | out[1] << 8 | out[2] << 16, 0x800000); // clipped to -2^23

    const float odd[] = {std::numeric_limits<float>::quiet_NaN()};
    encodeFloatFrames(odd, odd, 1, 1, 32, out);
    EXPECT_EQ(out[0] | out[1] | out[2] | out[3], 0);
}

} // namespace
} // namespace tg
