// The one-line instrument description: its two forms and its faults. Keeping it per user for
// the next run is checked on the command line (RecordOfflineCli).
#include "devices/InstrumentSpec.h"

#include <gtest/gtest.h>

namespace tg {
namespace {

// Each form is read into the record, shown here by the record's own text form: a path alone
// takes the first preset of the first bank, an LV2 URI keeps its '#' and colons. The text
// form reads back to the same record.
TEST(InstrumentSpec, EachFormIsReadIntoTheRecordAndItsTextFormReadsBack)
{
    const std::pair<const char*, const char*> cases[] = {
        {"/usr/share/sounds/sf2/FluidR3_GM.sf2",
         "sf2:/usr/share/sounds/sf2/FluidR3_GM.sf2?bank=0&preset=0&gain=0.5"},
        {"sf2:/a/b:c.sf2?bank=128&preset=19&gain=0.8",
         "sf2:/a/b:c.sf2?bank=128&preset=19&gain=0.8"},
        {"lv2:http://example.org/organ#synth?cutoff=0.25&channel=3",
         "lv2:http://example.org/organ#synth?cutoff=0.25&channel=3"},
        {"lv2:urn:x", "lv2:urn:x"},
    };
    for (const auto& [text, record] : cases) {
        SCOPED_TRACE(text);
        InstrumentSpec choice;
        std::string msg;
        ASSERT_EQ(parseInstrumentSpec(text, choice, msg), 1) << msg;
        EXPECT_EQ(instrumentSpecText(choice), record);
        InstrumentSpec again;
        ASSERT_EQ(parseInstrumentSpec(instrumentSpecText(choice), again, msg), 1) << msg;
        EXPECT_EQ(instrumentSpecText(again), record);
    }
}

TEST(InstrumentSpec, FaultsAreNamed)
{
    struct Case {
        const char* text;
        const char* message;
    };
    const Case cases[] = {
        {"", "No instrument given: a SoundFont path or lv2:URI is needed"},
        {"lv2:", "Instrument \"lv2:\" names no LV2 plug-in URI"},
        {"a.sf2?preset=128", "SoundFont preset 128 is not a whole number from 0 to 127"},
        {"a.sf2?bank=-1", "SoundFont bank -1 is not a whole number from 0 to 16383"},
        {"a.sf2?preset=1.5", "SoundFont preset 1.5 is not a whole number from 0 to 127"},
        {"a.sf2?gain=11", "SoundFont gain 11 is not between 0 and 10"},
        {"a.sf2?preset=x", "Instrument option \"preset\" needs a number, not \"x\""},
        {"a.sf2?volume=3", "SoundFont instruments have no option \"volume\" (bank, preset, gain)"},
        {"a.sf2?preset", "Instrument option \"preset\" is not NAME=VALUE"},
        {"a.sf2?", "Instrument option \"\" is not NAME=VALUE"},
        {"lv2:urn:x?cutoff=nan", "LV2 control \"cutoff\" needs a number, not \"nan\""},
        {"lv2:urn:x?=1", "Instrument option \"=1\" is not NAME=VALUE"},
        {"lv2:urn:x?g=5e56", "LV2 control \"g\" value 5e56 is out of range"},
    };
    for (const Case& c : cases) {
        InstrumentSpec choice;
        std::string msg;
        EXPECT_EQ(parseInstrumentSpec(c.text, choice, msg), 0) << c.text;
        EXPECT_EQ(msg, c.message) << c.text;
    }
}

} // namespace
} // namespace tg
