// Markers of a fresh take: the latency rule of the note end, the fallback to the whole take,
// and the loop set-up percentages.
#include "recording/TakeMarkers.h"
#include "tests/support/Pcm16.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <vector>

namespace tg::test {
namespace {

// A mono 16-bit take: silence, then a tone from `on` to `off` (frames).
std::vector<uint8_t> toneTake(int frames, int on, int off)
{
    return pcm16(size_t(frames), 1, [on, off](size_t frame, int) {
        const int f = int(frame);
        return f < on || f >= off
                   ? int16_t(0)
                   : int16_t(12000.0 * std::sin(2.0 * M_PI * 330.0 * (f - on) / 44100.0));
    });
}

TEST(TakeMarkers, LatencySettingMovesTheNoteEndEarlier)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    const std::vector<uint8_t> take = toneTake(44100 * 3, 22050, 22050 + 88200);
    RecordSettings settings;
    settings.latency = 21;
    TGmsl_key key;
    key.releaseOn = 1;
    setTakeNoteMarkers(key, format, take.data(), take.size(), settings, 0.5, 2.0);
    EXPECT_EQ(key.Silence_In, 44100 / 24);
    EXPECT_EQ(key.Silence_Out, 44100 * 2 / 15);
    EXPECT_NEAR(key.Note_In, 22050, 3);
    // floor(44100 x (2.0 - 0.021)) frames after Note_In.
    EXPECT_EQ(key.Note_Out, key.Note_In + 87273);
    EXPECT_EQ(key.Release_In, key.Note_Out);
    EXPECT_NEAR(key.Release_Out, 22050 + 88200, 6);
    EXPECT_EQ(key.releaseOn, 0);
}

TEST(TakeMarkers, NoteEndPastTheTakeStaysInside)
{
    const WaveFormat format = makeWaveFormat(44100, 1, 16);
    const std::vector<uint8_t> take = toneTake(44100, 22050, 44100);
    RecordSettings settings;
    TGmsl_key key;
    setTakeNoteMarkers(key, format, take.data(), take.size(), settings, 1.0, 5.0);
    EXPECT_EQ(key.Note_Out, 44100 - 1);
    EXPECT_EQ(key.Release_In, 44100 - 1);
}

TEST(TakeMarkers, LoopSetUpTakesThePercentagesOfTheNote)
{
    RecordSettings settings;
    settings.autoloop = 1;
    settings.loopstart = 50.0;
    settings.loopoutsearchstart = 60.0;
    settings.loopsearchlength = 1.0;
    settings.xfadelength = 25.0;
    settings.bfxfadelength = 10.0;
    TGmsl_key key;
    key.Note_In = 1000;
    key.Note_Out = 11000;
    key.xfadeCurve = 5;
    setUpTakeLoop(key, settings);
    // The crossfade lengths are percentages of Note_Out - Loop_In.
    EXPECT_EQ(std::make_tuple(int(key.loopMode), int(key.Loop_In), int(key.Loop_Out),
                              int(key.LoopSearch_In), int(key.LoopSearch_Out),
                              int(key.LoopSearch_Len), int(key.xfadeLen), int(key.bfxfadeLen),
                              int(key.xfadeCurve), int(key.bfxfadeCurve)),
              std::make_tuple(1, 6000, 11000, 7000, 11000, 100, 1250, 500, 2, 2));
}

} // namespace
} // namespace tg::test
