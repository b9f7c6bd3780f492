// The device panels: the input level meter and the Input/Output panel.
#include "core/Model.h"
#include "core/SettingsAccessor.h"
#include "devices/DeviceTables.h"
#include "devices/InputChannelChoice.h"
#include "devices/InputPeakTap.h"
#include "devices/MidiManager.h"
#include "shell/ActionTable.h"
#include "shell/MainWindow.h"
#include "shell/ProjectFileFlow.h"
#include "shell/dialogs/MidiMonitorWidget.h"
#include "shell/panels/ControllerTableWidget.h"
#include "shell/panels/InputOutputWidget.h"
#include "shell/panels/PeakLevelWidget.h"
#include "shell/tests/WidgetTestSupport.h"
#include "tests/support/PlainProject.h"
#include "tests/support/TempDir.h"

#include <QAction>
#include <QComboBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QTest>
#include <gtest/gtest.h>

#include <memory>

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

// The panel of a main window that opened a Project of two Multi-Samples.
class InputOutputWidgetTest : public ::testing::Test {
  protected:
    // After the device tables are as the test wants them: the panel lists them when made.
    void openProject()
    {
        window = std::make_unique<MainWindow>(model);
        const std::string path = test::writeProjectFile(dir.file("p"), "Piano", {"Soft", "Loud"});
        window->projectFiles().openFiles({QString::fromStdString(path)});
        panel = window->findChild<InputOutputWidget*>();
        ASSERT_NE(panel, nullptr);
    }

    test::TempDir dir;
    Model model;
    std::unique_ptr<MainWindow> window;
    InputOutputWidget* panel = nullptr;
};

TEST_F(InputOutputWidgetTest, ShowsVariousWhereMultiSamplesDifferAndSetsAChoiceForAllOfThem)
{
    ASSERT_NO_FATAL_FAILURE(openProject());
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
        EXPECT_EQ(declining.boxes(), QStringList{"Confirmation: This operation will overwrite the "
                                                 "audio input format for all Multi-Samples "
                                                 "in this project. Do you want to proceed?"});
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

    // The controller editors write the current Multi-Sample (controller 39: LSB of 7).
    auto* controllers = panel->findChild<MidiControllerWidget*>();
    ASSERT_NE(controllers, nullptr);
    const int row = controllers->rowOf(39);
    auto* value = static_cast<QSpinBox*>(controllers->table()->cellWidget(row, 2));
    value->setValue(90);
    controllers->table()->item(row, 1)->setCheckState(Qt::Checked);
    EXPECT_EQ(project.msl[1].controllerTable[7][2], 1);
    EXPECT_EQ(project.msl[1].controllerTable[7][3], 90);
    EXPECT_EQ(project.msl[0].controllerTable[7][2], 0);
    model.selectMultiSample(0); // the editor follows the current Multi-Sample
    EXPECT_EQ(controllers->table()->item(row, 1)->checkState(), Qt::Unchecked);
    EXPECT_EQ(value->value(), 0);
}

// Remembers the setting keys the model reports.
struct SettingKeys : TonegrabberModelListener {
    void settingChanged(const std::string& key) override { keys.push_back(key); }
    std::vector<std::string> keys;
};

TEST_F(InputOutputWidgetTest, ChannelBoxesOfferTheDevicesChannelsAndStoreTheChoiceInTheModel)
{
    const DeviceTables started = deviceTables();
    deviceTables().audioIn = {{"mono in", {"Default"}},
                              {"stereo in", {"Default"}},
                              {"interface", {"in 1", "in 2", "in 3", "in 4", "Default"}},
                              {kVstPluginEntry, {}},
                              {kNoAudioInEntry, {}}};
    ASSERT_NO_FATAL_FAILURE(openProject());
    const Project& project = *model.currentProject();
    SettingKeys heard;
    model.addListener(&heard);
    test::MessageBoxAnswerer agreeing(QMessageBox::Yes);

    pickWithKeyboard(panel->audioInDevice(), "stereo in");
    EXPECT_FALSE(panel->leftChannel()->isVisibleTo(panel)); // nothing to choose
    pickWithKeyboard(panel->audioInDevice(), "interface");
    ASSERT_TRUE(panel->leftChannel()->isVisibleTo(panel));
    EXPECT_EQ(panel->leftChannel()->count(), 5);
    EXPECT_EQ(panel->leftChannel()->currentText(), "Default");

    pickWithKeyboard(panel->leftChannel(), "in 3");
    pickWithKeyboard(panel->rightChannel(), "in 4");
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(storedInputChannel(deviceTables(), project.msl[i], ChannelSide::Left), 2);
        EXPECT_EQ(storedInputChannel(deviceTables(), project.msl[i], ChannelSide::Right), 3);
    }
    EXPECT_NE(std::find(heard.keys.begin(), heard.keys.end(), "msl_AudioInChannelL"),
              heard.keys.end());
    EXPECT_EQ(heard.keys.back(), "msl_AudioInChannelR");
    EXPECT_EQ(panel->rightChannel()->currentText(), "in 4");

    // A mono take has no right channel; another device's choice is its own.
    pickWithKeyboard(panel->audioFormat(), "44.1KHz, Mono, 16bit");
    EXPECT_FALSE(panel->rightChannel()->isEnabled());
    pickWithKeyboard(panel->audioInDevice(), "stereo in");
    EXPECT_EQ(storedInputChannel(deviceTables(), project.msl[0], ChannelSide::Left), -1);
    model.removeListener(&heard);
    deviceTables() = started;
}

TEST(MidiMonitorWidget, OpensFromTheExtrasMenuAndListsTheManagersMessagesDecoded)
{
    Model model;
    MidiManager manager(qApp); // the program's manager lives under the application
    MainWindow window(model);
    window.actions().action("openMidiMonitor")->trigger();
    auto* monitor = window.findChild<MidiMonitorWidget*>();
    ASSERT_NE(monitor, nullptr);
    EXPECT_TRUE(monitor->isVisible());
    EXPECT_EQ(monitor->windowTitle(), "MIDI Monitor");

    // What RtMidi's thread hands over for each message the input receives.
    emit manager.midiIn({0x91, 60, 100});
    emit manager.midiIn({0xF8});
    QTableWidget* table = monitor->table();
    ASSERT_EQ(table->rowCount(), 2);
    const QStringList first = {table->item(0, 0)->text(), table->item(0, 1)->text(),
                               table->item(0, 2)->text(), table->item(0, 3)->text()};
    EXPECT_EQ(first, QStringList({"0x91", "60", "100", "note 60 on, vel=100 channel=2"}));
    EXPECT_EQ(table->item(1, 1)->text(), "");

    for (QPushButton* button : monitor->findChildren<QPushButton*>())
        if (button->text() == "Clear")
            button->click();
    EXPECT_EQ(table->rowCount(), 0);
}

} // namespace
} // namespace tg::shell
