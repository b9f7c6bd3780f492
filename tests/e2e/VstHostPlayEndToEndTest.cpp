// The VST Host window's keys on the dummy JACK server: a key held down plays the chosen
// SoundFont preset on the user's audio output, and the recorder hears it there.
#include "core/IniKeys.h"
#include "devices/AudioEngine.h"
#include "devices/DeviceTables.h"
#include "shell/IniFile.h"
#include "shell/wizard/VstHostWidget.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/support/ToneAnalysis.h"

#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <gtest/gtest.h>

namespace tg::test {
namespace {

constexpr double kRate = 44100.0;

TEST(VstHostOnJack, AHeldKeyPlaysTheChosenPresetOnTheOutput)
{
    shell::openIniFile()->setValue(QString::fromLatin1(ini::kOutputAudioDeviceName), "system");
    std::string msg;
    ASSERT_EQ(buildAudioDeviceTables(deviceTables(), msg), 1) << msg;
    {
        shell::VstHostWidget host;
        host.loadSoundFont(QStringLiteral("/usr/share/sounds/sf2/FluidR3_GM.sf2"));
        auto* presets = host.findChild<QTableWidget*>("presets");
        for (int row = 0; row < presets->rowCount(); ++row)
            if (presets->item(row, 0)->text() == "0" && presets->item(row, 1)->text() == "19")
                presets->selectRow(row); // "Church Organ": held, steady
        auto* a3 = host.findChild<QPushButton*>("key57");
        ASSERT_NE(a3, nullptr);

        // The first key opens the output and the instrument; the recorder then takes the
        // output block, as it does when the hosted instrument is recorded.
        QTest::mousePress(a3, Qt::LeftButton);
        QTest::mouseRelease(a3, Qt::LeftButton);
        QTest::qWait(1500); // its release dies away
        ASSERT_TRUE(audio::outputOpen());
        ASSERT_TRUE(audio::pluginInput());
        ASSERT_TRUE(recordWithActions(2.0,
                                      {{0.5, [a3] { QTest::mousePress(a3, Qt::LeftButton); }},
                                       {1.5, [a3] { QTest::mouseRelease(a3, Qt::LeftButton); }}},
                                      msg))
            << msg;
        const RecordedTake take = audio::recordBuffer();
        ASSERT_GT(take.frames, 80000);
        const std::vector<double> left =
            firstChannel(*take.data, take.format.channels, take.frames);
        const int64_t onset = firstFrameAbove(left, 100.0);
        ASSERT_GT(onset, 22050 - 4096) << "silence before the key";
        EXPECT_LT(onset, 22050 + 8192);
        const double pitch = pitchHz(left, onset + 4410, onset + 4410 + 16384, kRate, 180.0, 300.0);
        EXPECT_NEAR(pitch, 220.0, 220.0 * 0.005);
        EXPECT_LT(peakBetween(left, 80000, take.frames),
                  peakBetween(left, onset + 4410, onset + 30000))
            << "the released key fades";
    }
    audio::closeStreams(msg);
    audio::setPluginInput(false);
    audio::terminate();
}

} // namespace
} // namespace tg::test
