// `record --offline --instrument SPEC` as a user types it: an LV2 instrument bounced into a
// new plug-in Project, the instrument kept for the next run, and the refusals with their
// exit status.
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <string>

namespace tg::test {
namespace {

class RecordOfflineCli : public ::testing::Test {
  protected:
    int cli(const std::string& arguments, std::string& output)
    {
        return runCliProcess(arguments, &output, dir.file("home"));
    }

    void SetUp() override
    {
        std::filesystem::create_directories(dir.file("home"));
        std::filesystem::create_directories(dir.file("data"));
        std::string output;
        ASSERT_EQ(
            cli("new '" + project() + "' --data-path '" + dir.file("data") +
                    "' --audio-in -Vst\\ Plugin- --midi-out -Vst\\ Plugin- --plugin --keys 37 "
                    "--step 18 --note-length 0.8 --release-length 0.3 --format "
                    "'44.1KHz, Mono, 16bit'",
                output),
            0)
            << output;
    }

    std::string project() const { return dir.file("Keys.TGprj"); }

    TempDir dir;
};

TEST_F(RecordOfflineCli, Lv2InstrumentIsBouncedAndKeptForTheNextRun)
{
    std::string output;
    const std::string choice = "lv2:http://drobilla.net/plugins/mda/EPiano?random_tuning=0";
    ASSERT_EQ(
        cli("record '" + project() + "' --offline --quiet --instrument '" + choice + "'", output),
        0)
        << output;
    // One take for each of the three keys (their names are the naming's tests', what the
    // instrument plays into them the offline recording's).
    const auto takes = std::filesystem::directory_iterator(dir.file("data"));
    EXPECT_EQ(std::distance(begin(takes), end(takes)), 3);

    // The choice was kept: the next offline run needs no --instrument.
    EXPECT_NE(readFileBytes(dir.file("home/Tonegrabber.ini")).find(choice), std::string::npos);
    EXPECT_EQ(cli("record '" + project() + "' --offline --quiet", output), 0) << output;
}

TEST_F(RecordOfflineCli, MissingAndBadInstrumentsAreRefused)
{
    struct Refusal {
        const char* options;
        int status;
        const char* message;
    };
    for (const Refusal& r : {Refusal{"", 2, "Bad argument --offline: no instrument was chosen yet"},
                             Refusal{"--instrument 'a.sf2?preset=300'", 2,
                                     "SoundFont preset 300 is not a whole number from 0 to 127"},
                             Refusal{"--instrument lv2:urn:nobody:nothing", 1,
                                     "LV2 instrument 'urn:nobody:nothing' is not installed"}}) {
        SCOPED_TRACE(r.options);
        std::string output;
        EXPECT_EQ(cli("record '" + project() + "' --offline " + r.options, output), r.status);
        EXPECT_NE(output.find(r.message), std::string::npos) << output;
    }
}

} // namespace
} // namespace tg::test
