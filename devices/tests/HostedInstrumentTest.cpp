// The two hosted instruments against the real libraries: a General MIDI SoundFont through
// FluidSynth and an LV2 synth through lilv, checked for presets, controls and their faults.
// The pitch of every key, and velocity layers playing louder, are checked on whole offline
// runs (OfflineRecordingTest).
#include "devices/tests/InstrumentTestSupport.h"

#include "tests/support/TempDir.h"
#include "tests/support/ToneAnalysis.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tg {
namespace {

using test::MeasuredTake;

BounceNote shortNote(int key, int velocity = 100)
{
    BounceNote note;
    note.note = key;
    note.attackVelocity = velocity;
    note.noteLength = 1.0;
    note.releaseLength = 0.5;
    return note;
}

// Pitch of the sounding part of a take.
double measuredPitch(const MeasuredTake& take, int key)
{
    return test::pitchNearNote(take.samples, 22050 + 4410, 22050 + 4410 + 8192, 44100.0, key);
}

TEST(SoundFontInstrument, OrganHoldsWhilePianoDiesAway)
{
    std::string msg;
    auto organ = test::openInstrument(std::string(test::kGeneralMidiFont) + "?preset=19", msg);
    auto piano = test::openInstrument(test::kGeneralMidiFont, msg);
    ASSERT_NE(organ, nullptr);
    ASSERT_NE(piano, nullptr);
    BounceNote note = shortNote(60);
    note.noteLength = 2.0;
    auto change = [&](HostedInstrument& instrument) {
        MeasuredTake take;
        EXPECT_TRUE(test::bounce(instrument, note, take, msg)) << msg;
        const double early = test::rmsBetween(take.samples, 22050 + 4410, 22050 + 8820);
        const double late = test::rmsBetween(take.samples, 22050 + 79380, 22050 + 83790);
        return 20.0 * std::log10(late / early);
    };
    EXPECT_NEAR(change(*organ), 0.0, 3.0);
    EXPECT_LT(change(*piano), -6.0);
}

TEST(SoundFontInstrument, BadFilesAndPresetsAreRefusedByName)
{
    test::TempDir dir;
    const std::string junk = dir.file("junk.sf2");
    ASSERT_TRUE(test::writeFileBytes(junk, std::string(4096, 'x')));
    std::string msg;
    EXPECT_EQ(test::openInstrument(dir.file("missing.sf2"), msg), nullptr);
    EXPECT_EQ(msg, "SoundFont '" + dir.file("missing.sf2") + "' cannot be read");
    EXPECT_EQ(test::openInstrument(junk, msg), nullptr);
    EXPECT_EQ(msg.rfind("SoundFont '" + junk + "' cannot be loaded", 0), 0u) << msg;
    EXPECT_EQ(test::openInstrument(std::string(test::kGeneralMidiFont) + "?bank=5&preset=100", msg),
              nullptr);
    EXPECT_EQ(msg, std::string("SoundFont '") + test::kGeneralMidiFont +
                       "' has no preset 100 in bank 5");
}

TEST(Lv2Instrument, ControlValuesReachThePlugin)
{
    // The fine tuning control moves the pitch: from its lowest to its highest setting the
    // same note must come out clearly higher.
    std::string msg;
    auto low = test::openInstrument(std::string(test::kLv2PianoSteady) + "&fine_tuning=0", msg);
    auto high = test::openInstrument(std::string(test::kLv2PianoSteady) + "&fine_tuning=1", msg);
    ASSERT_NE(low, nullptr) << msg;
    ASSERT_NE(high, nullptr) << msg;
    MeasuredTake lowTake;
    MeasuredTake highTake;
    ASSERT_TRUE(test::bounce(*low, shortNote(69), lowTake, msg)) << msg;
    ASSERT_TRUE(test::bounce(*high, shortNote(69), highTake, msg)) << msg;
    const double lowHz = measuredPitch(lowTake, 69);
    const double highHz = measuredPitch(highTake, 69);
    EXPECT_GT(1200.0 * std::log2(highHz / lowHz), 50.0) << lowHz << " / " << highHz;
}

TEST(Lv2Instrument, UnknownControlsAndRatesAreRefusedByName)
{
    // A plug-in that is not installed is refused on the command line (RecordOfflineCli).
    std::string msg;
    EXPECT_EQ(test::openInstrument(std::string("lv2:") + test::kLv2Piano + "?wobble=1", msg),
              nullptr);
    EXPECT_EQ(msg, std::string("LV2 instrument '") + test::kLv2Piano +
                       "' has no control input 'wobble'");
    InstrumentSpec choice;
    ASSERT_EQ(parseInstrumentSpec(std::string("lv2:") + test::kLv2Piano, choice, msg), 1);
    EXPECT_EQ(openHostedInstrument(choice, 1000, msg), nullptr);
    EXPECT_EQ(msg, "Cannot host an instrument at 1000 Hz");
}

} // namespace
} // namespace tg
