// `record --offline --instrument SPEC` as a user types it: an LV2 instrument bounced into a
// new plug-in Project, the instrument kept for the next run, and the refusals.
#include "audiofile/WavFile.h"
#include "tests/e2e/ToneAnalysis.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>

namespace tg::test {
namespace {

class RecordOfflineCli : public ::testing::Test {
  protected:
    int cli(const std::string& arguments, std::string& output)
    {
        output.clear();
        return runCommand("TONEGRABBER_HOME='" + dir.file("home") + "' '" + TG_CLI_PATH + "' " +
                              arguments,
                          &output);
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
    EXPECT_EQ(cli("record '" + project() + "' --offline", output), 2) << output;
    EXPECT_NE(output.find("Bad argument --offline: no instrument was chosen yet"),
              std::string::npos)
        << output;

    const std::string choice = "lv2:http://drobilla.net/plugins/mda/EPiano?random_tuning=0";
    ASSERT_EQ(
        cli("record '" + project() + "' --offline --quiet --instrument '" + choice + "'", output),
        0)
        << output;
    for (int note : {48, 66, 84}) {
        const std::string file =
            dir.file("data/Keys - Velocity 127 - 0" + std::to_string(note) + " - ");
        std::string found;
        for (const auto& entry : std::filesystem::directory_iterator(dir.file("data")))
            if (entry.path().string().rfind(file, 0) == 0)
                found = entry.path().string();
        ASSERT_FALSE(found.empty()) << "no take of note " << note;
        WaveFormat format;
        std::vector<uint8_t> data;
        std::string msg;
        ASSERT_EQ(readWav(found, format, data, msg), 1) << msg;
        const std::vector<double> samples = firstChannel(data, 1, int64_t(data.size() / 2));
        EXPECT_LT(peakBetween(samples, 0, 22000), 2.0) << note;
        EXPECT_GT(rmsBetween(samples, 22050, 33075), 300.0) << note;
        const double expected = 440.0 * std::pow(2.0, (note - 69) / 12.0);
        const double hz =
            pitchHz(samples, 24255, 24255 + 8192, 44100.0, expected / 1.4, expected * 1.4);
        EXPECT_NEAR(hz / expected, 1.0, 0.01) << note << ": " << hz << " Hz";
    }

    // The choice was kept: the next offline run needs no --instrument.
    EXPECT_NE(readFileBytes(dir.file("home/Tonegrabber.ini")).find(choice), std::string::npos);
    EXPECT_EQ(cli("record '" + project() + "' --offline --quiet", output), 0) << output;
}

TEST_F(RecordOfflineCli, BadInstrumentsAreRefused)
{
    std::string output;
    EXPECT_EQ(cli("record '" + project() + "' --offline --instrument 'a.sf2?preset=300'", output),
              2);
    EXPECT_NE(output.find("SoundFont preset 300 is not a whole number from 0 to 127"),
              std::string::npos)
        << output;
    EXPECT_EQ(
        cli("record '" + project() + "' --offline --instrument lv2:urn:nobody:nothing", output), 1);
    EXPECT_NE(output.find("LV2 instrument 'urn:nobody:nothing' is not installed"),
              std::string::npos)
        << output;
}

} // namespace
} // namespace tg::test
