// Threshold search and auto-note: note onsets and ends against the measured noise.
#include "analysis/ThresholdSearch.h"
#include "analysis/AutoNote.h"
#include "analysis/tests/TestSignals.h"

#include <gtest/gtest.h>

namespace tg {
namespace {

using test::makeSignal;

// Noise of +-100 with a note of +-10000 on frames noteFirst..noteLast.
std::vector<uint8_t> noteSignal(const WaveFormat& format, int64_t frames, int64_t noteFirst,
                                int64_t noteLast, int32_t noise = 100, int32_t loud = 10000)
{
    return makeSignal(format, frames, [=](int64_t f, int) {
        const int32_t level = (f >= noteFirst && f <= noteLast) ? loud : noise;
        return (f % 2) ? level : -level;
    });
}

TEST(ThresholdSearch, FindsTheFrameBeforeTheNoteForwardAndAfterItBackward)
{
    const WaveFormat format = makeWaveFormat(44100, 2, 16);
    const auto data = noteSignal(format, 30000, 5000, 19999);
    EXPECT_EQ(thresholdSearch(&format, data.data(), data.size(), 0, 1000, 1001, 1, 1.0), 4999);
    EXPECT_EQ(thresholdSearch(&format, data.data(), data.size(), 0, 1000, 30000, -1, 1.0), 20000);
}

TEST(ThresholdSearch, EightBitSamplesAreComparedAtSixteenBitScale)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 8);
    const auto data = noteSignal(format, 20000, 8000, 12000, 2, 100);
    EXPECT_EQ(thresholdReferenceLevel(format, data.data(), 20000, 0, 1000), 2 * 256);
    EXPECT_EQ(thresholdSearch(&format, data.data(), data.size(), 0, 1000, 1001, 1, 1.0), 7999);
}

TEST(ThresholdSearch, PrecisionScalesTheSignalBeforeTheComparison)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    // Note of 5000 over noise of 100: at p = 0.01 the note scales to 50 and never passes.
    const auto data = noteSignal(format, 20000, 8000, 12000, 100, 5000);
    EXPECT_EQ(thresholdSearch(&format, data.data(), data.size(), 0, 1000, 1001, 1, 0.01), 19999);
    EXPECT_EQ(thresholdSearch(&format, data.data(), data.size(), 0, 1000, 1001, 1, 0.05), 7999);
    // Precisions below 0.01 count as 0.01.
    EXPECT_EQ(thresholdSearch(&format, data.data(), data.size(), 0, 1000, 1001, 1, 0.0), 19999);
}

TEST(ThresholdSearch, ReferenceWindowIsAtLeastFiftyMilliseconds)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    // Silence markers 10 frames apart still measure 2205 frames: a burst 2000 frames in
    // counts, one beyond frame 1000 + 2205 + 4 does not.
    const auto inside =
        makeSignal(format, 10000, [](int64_t f, int) { return f >= 3000 && f < 3005 ? 5000 : 0; });
    EXPECT_EQ(thresholdReferenceLevel(format, inside.data(), 10000, 1000, 1010), 5000);
    const auto edge =
        makeSignal(format, 10000, [](int64_t f, int) { return f == 3209 ? 5000 : 0; });
    EXPECT_EQ(thresholdReferenceLevel(format, edge.data(), 10000, 1000, 1010), 1000);
    const auto outside =
        makeSignal(format, 10000, [](int64_t f, int) { return f == 3210 ? 5000 : 0; });
    EXPECT_EQ(thresholdReferenceLevel(format, outside.data(), 10000, 1000, 1010), 0);
}

TEST(ThresholdSearch, DegenerateInputGivesZero)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    const std::vector<uint8_t> one(2, 0x7f);
    EXPECT_EQ(thresholdSearch(&format, one.data(), one.size(), 0, 0, 0, 1, 1.0), 0);
    EXPECT_EQ(thresholdSearch(nullptr, one.data(), one.size(), 0, 0, 0, 1, 1.0), 0);
    EXPECT_EQ(thresholdSearch(&format, nullptr, 100, 0, 0, 0, 1, 1.0), 0);
    // Three frames: too short for the five-frame test, the search runs off at once.
    const auto three = makeSignal(format, 3, [](int64_t, int) { return 30000; });
    EXPECT_EQ(thresholdSearch(&format, three.data(), three.size(), 0, 0, 0, 1, 1.0), 2);
    EXPECT_EQ(thresholdSearch(&format, three.data(), three.size(), 0, 0, 3, -1, 1.0), 0);
}

RecordSettings settingsWithoutZeroCrossing()
{
    RecordSettings settings;
    settings.zerocrossing = 0;
    settings.thresPrecisionIn = 1.0;
    settings.thresPrecisionOut = 1.0;
    return settings;
}

TEST(AutoNote, RecordingThatNeverRisesGivesTheWholeRecording)
{
    const WaveFormat format = makeWaveFormat(44100, 2, 16);
    const auto data = noteSignal(format, 12000, 0, -1);
    TGmsl_key key;
    key.Silence_In = 0;
    key.Silence_Out = 2000;
    autoNote(key, format, data.data(), data.size(), settingsWithoutZeroCrossing());
    EXPECT_EQ(key.Note_In, 0);
    EXPECT_EQ(key.Note_Out, 11999);
}

TEST(AutoNote, SetsNoteMarkersAndSnapsTheEndToAZeroCrossing)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    // Everything stays positive except a run of zeros at 16000..16009 inside the note.
    const auto data = makeSignal(format, 30000, [](int64_t f, int) {
        if (f >= 16000 && f < 16010)
            return 0;
        return f >= 6000 && f < 20000 ? 8000 + static_cast<int32_t>(f % 7) : 1;
    });
    TGmsl_key key;
    key.Silence_In = 0;
    key.Silence_Out = 3000;
    RecordSettings settings = settingsWithoutZeroCrossing();
    autoNote(key, format, data.data(), data.size(), settings);
    EXPECT_EQ(key.Note_In, 5999);
    EXPECT_EQ(key.Note_Out, 20000);
    settings.zerocrossing = 1;
    TGmsl_key snapped = key;
    snapped.Note_In = snapped.Note_Out = 0;
    autoNote(snapped, format, data.data(), data.size(), settings);
    // Backward from 20000 the first zero met is the last frame of the run.
    EXPECT_EQ(snapped.Note_Out, 16009);
}

TEST(AutoNote, NoteEndSnapsToAChannelThatTouchesZero)
{
    const WaveFormat format = makeWaveFormat(44100, 2, 16);
    // Both channels stay positive; the left one touches 0 at frame 18000 only.
    const auto data = makeSignal(format, 30000, [](int64_t f, int ch) {
        if (ch == 0 && f == 18000)
            return 0;
        return f >= 6000 && f < 20000 ? 9000 : 1;
    });
    TGmsl_key key;
    key.Silence_Out = 3000;
    RecordSettings settings = settingsWithoutZeroCrossing();
    settings.zerocrossing = 1;
    autoNote(key, format, data.data(), data.size(), settings);
    EXPECT_EQ(key.Note_In, 5999);
    EXPECT_EQ(key.Note_Out, 18000);
}

TEST(AutoNote, BatchOptionsKeepMarkersCopySilenceAndEqualiseLength)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    const auto data = noteSignal(format, 40000, 5000, 25000);
    const RecordSettings settings = settingsWithoutZeroCrossing();

    TGmsl_key kept;
    kept.Note_In = 10;
    kept.Note_Out = 20;
    AutoNoteOptions keep;
    keep.keepExistingNote = true;
    autoNote(kept, format, data.data(), data.size(), settings, keep);
    EXPECT_EQ(kept.Note_In, 10);
    EXPECT_EQ(kept.Note_Out, 20);

    TGmsl_key reference;
    reference.Silence_In = 100;
    reference.Silence_Out = 1500;
    reference.Note_In = 0;
    reference.Note_Out = 22050; // half a second at 44.1 kHz
    AutoNoteOptions batch;
    batch.silenceReference = &reference;
    batch.lengthReference = &reference;
    batch.lengthReferenceRate = 44100;
    TGmsl_key key;
    autoNote(key, format, data.data(), data.size(), settings, batch);
    EXPECT_EQ(key.Silence_In, 100);
    EXPECT_EQ(key.Silence_Out, 1500);
    EXPECT_EQ(key.Note_In, 4999);
    EXPECT_EQ(key.Note_Out, 4999 + 22050);

    // The same duration at another rate; cut at the end of the recording.
    const WaveFormat slow = makeWaveFormat(22050, 1, 16);
    const auto short_ = noteSignal(slow, 12000, 3000, 11000);
    TGmsl_key other;
    autoNote(other, slow, short_.data(), short_.size(), settings, batch);
    EXPECT_EQ(other.Note_In, 2999);
    EXPECT_EQ(other.Note_Out, 11999);
}

TEST(NoteLengthCheck, ZeroLengthNoteStopsTheExport)
{
    TGmsl msl;
    std::snprintf(msl.name, sizeof msl.name, "%s", "Strings");
    msl.keys[60].hasAudio = 1;
    msl.keys[60].Note_In = 100;
    msl.keys[60].Note_Out = 500;
    std::string message;
    EXPECT_EQ(checkNoteLengths(msl, message), 1);
    EXPECT_EQ(checkSomethingToExport(&msl, 1, message), 1);
    msl.keys[61].hasAudio = 1;
    msl.keys[61].Note_In = 100;
    msl.keys[61].Note_Out = 99;
    EXPECT_EQ(checkNoteLengths(msl, message), 0);
    EXPECT_EQ(message, "The Note Length of the selected Key \"61\" in the Multi-Sample \"Strings\" "
                       "is equal Zero.");
    TGmsl empty;
    EXPECT_EQ(checkSomethingToExport(&empty, 1, message), 0);
    EXPECT_EQ(message, "There is nothing to export.");
}

} // namespace
} // namespace tg
