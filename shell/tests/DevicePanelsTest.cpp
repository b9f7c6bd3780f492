// The device panels: the input level meter and the Input/Output panel.
#include "core/Model.h"
#include "core/SettingsAccessor.h"
#include "devices/InputPeakTap.h"
#include "shell/MainWindow.h"
#include "shell/ProjectFileFlow.h"
#include "shell/panels/InputOutputWidget.h"
#include "shell/panels/PeakLevelWidget.h"
#include "shell/tests/WidgetTestSupport.h"
#include "tests/support/TempDir.h"

#include <QComboBox>
#include <QSpinBox>
#include <QTest>
#include <gtest/gtest.h>

namespace tg::shell {
namespace {

TEST(PeakLevelWidget, ShowsTheTapsPeaksHoldsThemAndLightsTheClipLampAtFullScale)
{
    PeakLevelWidget meter;
    meter.resize(300, 80);
    // What the audio thread does with the peaks of two input blocks before the timer fires:
    // the higher one of each channel is shown.
    PeakLevelWidget::tap().onInputPeak(0.5f, 0.1f);
    PeakLevelWidget::tap().onInputPeak(0.2f, 0.25f);
    meter.onUpdateTimer();
    EXPECT_FLOAT_EQ(meter.level(0), 0.5f);
    EXPECT_FLOAT_EQ(meter.level(1), 0.25f);
    EXPECT_FALSE(meter.clipped(0));
    EXPECT_FALSE(meter.clipped(1));

    // A quieter block: the bar falls but not below the new peak, the hold line stays.
    QTest::qWait(60);
    PeakLevelWidget::tap().onInputPeak(0.1f, 1.0f);
    meter.onUpdateTimer();
    EXPECT_LT(meter.level(0), 0.5f);
    EXPECT_GE(meter.level(0), 0.1f);
    EXPECT_FLOAT_EQ(meter.heldPeak(0), 0.5f);
    EXPECT_FALSE(meter.clipped(0));
    EXPECT_TRUE(meter.clipped(1));

    // The lamp stays lit through silence until it is clicked.
    meter.onUpdateTimer();
    EXPECT_TRUE(meter.clipped(1));
    QTest::mouseClick(&meter, Qt::LeftButton, {}, meter.clipLampRect(1).center());
    EXPECT_FALSE(meter.clipped(1));
}

// Picks `text` in `box` the way a user does from the keyboard: the row above, then Down.
void pickWithKeyboard(QComboBox* box, const QString& text)
{
    const int row = box->findText(text);
    ASSERT_GT(row, 0);
    box->setCurrentIndex(row - 1);
    QTest::keyClick(box, Qt::Key_Down);
}

TEST(InputOutputWidget, ShowsVariousWhereMultiSamplesDifferAndSetsAChoiceForAllOfThem)
{
    test::TempDir dir;
    Model model;
    MainWindow window(model);
    const std::string path = test::writeProjectFile(dir.file("p"), "Piano", {"Soft", "Loud"});
    window.projectFiles().openFiles({QString::fromStdString(path)});
    auto* panel = window.findChild<InputOutputWidget*>();
    ASSERT_NE(panel, nullptr);
    const Project& project = *model.currentProject();
    ASSERT_STREQ(project.msl[0].AudioInFormat, project.msl[1].AudioInFormat);
    EXPECT_EQ(panel->audioFormat()->currentText(), QString(project.msl[0].AudioInFormat));

    // The second Multi-Sample gets another format and channel elsewhere in the program.
    model.selectMultiSample(1);
    bool ok = false;
    setSettingText(model, "msl_AudioInFormat", "48KHz, Stereo, 24bit", ok);
    setSettingShort(model, "msl_MIDIoutChannel", 4, ok);
    EXPECT_EQ(panel->audioFormat()->currentText(), "-Various-");
    EXPECT_EQ(panel->midiOutChannel()->text(), "-Various-");
    EXPECT_EQ(panel->audioInDevice()->currentText(), QString(project.msl[0].AudioInDevice));

    const QString mono16 = QStringLiteral("44.1KHz, Mono, 16bit");
    {
        test::MessageBoxAnswerer declining(QMessageBox::No);
        pickWithKeyboard(panel->audioFormat(), mono16);
        ASSERT_EQ(declining.seen().size(), 1u);
        EXPECT_EQ(declining.seen()[0].title, "Confirmation");
        EXPECT_EQ(declining.seen()[0].text,
                  "This operation will overwrite the audio input format for all Multi-Samples "
                  "in this project. Do you want to proceed?");
    }
    EXPECT_STREQ(project.msl[1].AudioInFormat, "48KHz, Stereo, 24bit");
    EXPECT_EQ(panel->audioFormat()->currentText(), "-Various-");

    test::MessageBoxAnswerer agreeing(QMessageBox::Yes);
    pickWithKeyboard(panel->audioFormat(), mono16);
    EXPECT_STREQ(project.msl[0].AudioInFormat, "44.1KHz, Mono, 16bit");
    EXPECT_STREQ(project.msl[1].AudioInFormat, "44.1KHz, Mono, 16bit");
    EXPECT_EQ(panel->audioFormat()->currentText(), mono16);
    EXPECT_EQ(panel->audioFormat()->findText("-Various-"), -1);

    // Channel 3 as shown is stored 0-based in both Multi-Samples.
    panel->midiOutChannel()->setValue(3);
    EXPECT_EQ(project.msl[0].MIDIoutChannel, 2);
    EXPECT_EQ(project.msl[1].MIDIoutChannel, 2);
    EXPECT_EQ(panel->midiOutChannel()->text(), "3");
    EXPECT_EQ(project.modified, 1);
}

} // namespace
} // namespace tg::shell
