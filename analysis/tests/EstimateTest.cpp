// The recording estimate: per-key time and size, options, loop-search time and texts.
#include "analysis/Estimate.h"

#include <gtest/gtest.h>

namespace tg {
namespace {

LoopSpeedTable speeds(double seconds)
{
    LoopSpeedTable table;
    table.fill(seconds);
    return table;
}

TGmsl oneKeyMultiSample()
{
    TGmsl msl;
    std::snprintf(msl.AudioInFormat, sizeof msl.AudioInFormat, "%s", "44.1KHz, Stereo, 16bit");
    msl.recordsettings.notelength1 = 2.0;
    msl.recordsettings.releaselength1 = 1.0;
    msl.recordsettings.recpause = 3.5;
    msl.recordsettings.autoloop = 0;
    msl.keys[60].keyState = 1;
    return msl;
}

TEST(Estimate, NinetySecondsReadAsOneMinuteThirty)
{
    EXPECT_EQ(formatEstimateTime(90.0), "0 h 1 min 30 sec");
    EXPECT_EQ(formatEstimateTime(3725.9), "1 h 2 min 5 sec");
    EXPECT_EQ(formatEstimateSize(3 * 1048576 + 1048575), "3 MB");
}

TEST(Estimate, KeyAddsNoteReleaseLeadInPauseAndWavSize)
{
    TGmsl msl = oneKeyMultiSample();
    RecordingEstimate estimate;
    addMultiSampleEstimate(msl, {}, speeds(1.0), estimate);
    EXPECT_DOUBLE_EQ(estimate.seconds, 2.0 + 1.0 + 0.5 + 3.5);
    EXPECT_EQ(estimate.bytes, static_cast<uint64_t>(44100 * 3.5 * 4) + 64);
}

TEST(Estimate, SizeAndLoopSpeedFollowTheMultiSamplesRecordingFormat)
{
    TGmsl msl = oneKeyMultiSample();
    msl.recordsettings.autoloop = 1;
    msl.recordsettings.loopsearchlength = 1.0;
    msl.recordsettings.loopoutsearchstart = 50.0;
    LoopSpeedTable table = speeds(0.0);
    table[4] = 3.0; // "44.1KHz, Stereo, 24bit"
    const struct {
        const char* format;
        uint64_t bytes;
        double searchSeconds; // per frame of note: a 2 s note searched at the format's rate
    } kCases[] = {
        {"48KHz, Mono, 8bit", uint64_t(48000 * 3.5 * 1) + 64, 0.0},
        {"96KHz, Stereo, 24bit", uint64_t(96000 * 3.5 * 6) + 64,
         (192000.0 - 1920 - 96000) * 1920 / 1e7 * 3.0},
        {"no such format", uint64_t(44100 * 3.5 * 4) + 64, 0.0}, // read as 44.1KHz, Stereo, 16bit
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.format);
        std::snprintf(msl.AudioInFormat, sizeof msl.AudioInFormat, "%s", c.format);
        RecordingEstimate estimate;
        addMultiSampleEstimate(msl, {}, table, estimate);
        EXPECT_EQ(estimate.bytes, c.bytes);
        EXPECT_DOUBLE_EQ(estimate.seconds, 7.0 + c.searchSeconds);
    }
}

// Keys the options leave out (locked, or holding audio) are checked on the dialog
// (EstimationDialogTest.OptionsLeaveOutKeysWithAudio).
TEST(Estimate, KeyWithoutNoteOrReleaseAddsNothing)
{
    TGmsl msl = oneKeyMultiSample();
    msl.recordsettings.notelength1 = 0.0;
    msl.recordsettings.releaselength1 = 0.0;
    RecordingEstimate estimate;
    addMultiSampleEstimate(msl, {}, speeds(1.0), estimate);
    EXPECT_EQ(estimate.seconds, 0.0);
    EXPECT_EQ(estimate.bytes, 0u);
}

TEST(Estimate, AutoLoopAddsTheSearchScaledByTheMeasuredSpeed)
{
    TGmsl msl = oneKeyMultiSample();
    msl.recordsettings.autoloop = 1;
    msl.recordsettings.loopsearchlength = 1.0;
    msl.recordsettings.loopoutsearchstart = 50.0;
    RecordingEstimate estimate;
    LoopSpeedTable table = speeds(0.0);
    table[0] = 2.0; // "44.1KHz, Stereo, 16bit"
    addMultiSampleEstimate(msl, {}, table, estimate);
    // frames 88200, search 882, start 44100: (88200 - 882 - 44100) * 882 / 1e7 * 2.0.
    const double work = (88200.0 - 882 - 44100) * 882 / 1e7;
    EXPECT_DOUBLE_EQ(estimate.seconds, 7.0 + work * 2.0);
    msl.recordsettings.autoloop = 0;
    RecordingEstimate without;
    addMultiSampleEstimate(msl, {}, table, without);
    EXPECT_DOUBLE_EQ(without.seconds, 7.0);
}

TEST(LoopSpeed, MeasuredOncePerRunAndCached)
{
    forgetLoopSearchSpeeds();
    const WaveFormat format = makeWaveFormat(44100, 2, 16);
    EXPECT_LT(loopSearchSpeed(format), 0.0);
    const LoopSpeedTable first = measureLoopSearchSpeeds();
    for (double seconds : first)
        EXPECT_GT(seconds, 0.0);
    EXPECT_EQ(loopSearchSpeed(format), first[0]);
    EXPECT_EQ(loopSearchSpeed(makeWaveFormat(44100, 1, 24)), first[5]);
    EXPECT_EQ(measureLoopSearchSpeeds(), first); // cached: not measured again
    EXPECT_LT(loopSearchSpeed(makeWaveFormat(44100, 2, 32)), 0.0);
}

} // namespace
} // namespace tg
