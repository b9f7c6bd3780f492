// `set`: preferences keys written to Tonegrabber.prefs in TONEGRABBER_HOME and read back.
#include "cli/CliApp.h"
#include "cli/tests/CommandRunner.h"
#include "core/Preferences.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

int runSet(std::vector<std::string> words)
{
    words.insert(words.begin(), "set");
    return tg::test::runCli(std::move(words)).status;
}

tg::Preferences loaded()
{
    tg::Preferences prefs;
    tg::loadPreferences(prefs);
    return prefs;
}

} // namespace

TEST(SetCommand, WritesThePreferencesFileAndASecondRunKeepsIt)
{
    EXPECT_EQ(runSet({"prefs_recordsettings_notelength1=3.5"}), tg::cli::kExitOk);
    EXPECT_EQ(loaded().recordsettings.notelength1, 3.5);

    EXPECT_EQ(runSet({"prefs_MIDIoutChannel=9", "prefs_recordsettings_xfadetype=Linear",
                      "prefs_recordsettings_latency=-40", "prefs_recordsettings_autoloop=1"}),
              tg::cli::kExitOk);
    const tg::Preferences prefs = loaded();
    EXPECT_EQ(prefs.recordsettings.notelength1, 3.5); // read back from the first run
    EXPECT_EQ(prefs.MIDIoutChannel, 9);
    EXPECT_STREQ(prefs.recordsettings.xfadetype, "Linear");
    EXPECT_EQ(prefs.recordsettings.latency, -40);
    EXPECT_EQ(prefs.recordsettings.autoloop, 1);
}

TEST(SetCommand, BadArgumentsAreBadUsageAndChangeNothing)
{
    ASSERT_EQ(runSet({"prefs_MIDIoutChannel=2"}), tg::cli::kExitOk);
    const std::string before = tg::test::readFileBytes(tg::preferencesFilePath());
    for (const char* bad : {"prefs_recordsettings_notelength1=abc",
                            "prefs_recordsettings_notelength1=", "prefs_MIDIoutChannel=70000",
                            "prefs_recordsettings_autoloop=256", "prefs_recordsettings_latency=1.5",
                            "prefs_nosuchkey=1", "msl_recordsettings_notelength1=2",
                            "notelength1=2", "Song.TGprj", "=3"}) {
        EXPECT_EQ(runSet({"prefs_MIDIoutChannel=5", bad}), tg::cli::kExitBadUsage) << bad;
    }
    EXPECT_EQ(tg::test::readFileBytes(tg::preferencesFilePath()), before);
    EXPECT_EQ(runSet({}), tg::cli::kExitBadUsage);
}
