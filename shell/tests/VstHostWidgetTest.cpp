// The hosted-instrument set-up as the user works it: the General MIDI SoundFont's presets,
// the installed LV2 instruments with their parameters, and the choice kept for recording.
#include "shell/wizard/VstHostWidget.h"
#include "core/Model.h"
#include "devices/InstrumentSpec.h"
#include "shell/ActionTable.h"
#include "shell/MainWindow.h"
#include "shell/tests/WidgetTestSupport.h"
#include "tests/support/TempDir.h"

#include <QAction>
#include <QApplication>
#include <QDoubleSpinBox>
#include <QListWidget>
#include <QRadioButton>
#include <QTableWidget>
#include <gtest/gtest.h>

namespace tg::shell {
namespace {

constexpr const char* kGeneralMidi = "/usr/share/sounds/sf2/FluidR3_GM.sf2";

QString cell(QTableWidget* table, int row, int column)
{
    return table->item(row, column)->text();
}

TEST(VstHostWidget, ListsTheSoundFontsPresetsAndKeepsTheChosenOne)
{
    VstHostWidget host;
    EXPECT_EQ(host.windowTitle(), "VST Host");
    host.loadSoundFont(QString::fromLatin1(kGeneralMidi));
    auto* presets = host.findChild<QTableWidget*>("presets");
    ASSERT_GT(presets->rowCount(), 128);
    EXPECT_EQ(cell(presets, 0, 0), "0");
    EXPECT_EQ(cell(presets, 0, 1), "0");
    EXPECT_EQ(cell(presets, 0, 2), "Yamaha Grand Piano");
    const int last = presets->rowCount() - 1;
    EXPECT_EQ(cell(presets, last, 0), "128"); // the drum kits come last
    int organ = -1;
    for (int row = 0; row < presets->rowCount(); ++row)
        if (cell(presets, row, 0) == "0" && cell(presets, row, 1) == "19")
            organ = row;
    ASSERT_GE(organ, 0);
    EXPECT_EQ(cell(presets, organ, 2), "Church Organ");

    presets->selectRow(organ);
    host.findChild<QDoubleSpinBox*>("gain")->setValue(0.8);
    host.accept();
    InstrumentSpec chosen;
    chosen.path = kGeneralMidi;
    chosen.preset = 19;
    chosen.gain = 0.8;
    EXPECT_EQ(storedInstrumentSpec(), instrumentSpecText(chosen));

    // Opened again from the menu, it shows the kept choice.
    Model model;
    MainWindow window(model);
    bool shown = false;
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [&] {
        if (auto* again = qobject_cast<VstHostWidget*>(QApplication::activeModalWidget())) {
            EXPECT_EQ(instrumentSpecText(again->choice()), storedInstrumentSpec());
            shown = true;
            again->reject();
        }
    });
    user.start(10);
    window.actions().action(QStringLiteral("openVstHostConfig"))->trigger();
    EXPECT_TRUE(shown);
}

TEST(VstHostWidget, AFileThatIsNoSoundFontIsRefused)
{
    test::TempDir dir;
    const std::string text = dir.file("notes.sf2");
    ASSERT_TRUE(test::writeFileBytes(text, "just some words, not RIFF"));
    VstHostWidget host;
    test::MessageBoxAnswerer answerer;
    host.loadSoundFont(QString::fromStdString(text));
    EXPECT_EQ(answerer.texts(), QStringList{QString::fromStdString(
                                    "'" + text + "' is not a SoundFont file that can be read")});
    EXPECT_EQ(host.findChild<QTableWidget*>("presets")->rowCount(), 0);
}

TEST(VstHostWidget, AnLv2InstrumentIsChosenByNameWithItsParameters)
{
    VstHostWidget host;
    host.findChild<QRadioButton*>("lv2Kind")->click();
    auto* instruments = host.findChild<QListWidget*>("lv2Instruments");
    const QList<QListWidgetItem*> found = instruments->findItems("MDA ePiano", Qt::MatchExactly);
    ASSERT_EQ(found.size(), 1);
    instruments->setCurrentItem(found[0]);
    auto* parameters = host.findChild<QTableWidget*>("parameters");
    ASSERT_GT(parameters->rowCount(), 3);
    auto* hardness = host.findChild<QDoubleSpinBox*>("hardness");
    ASSERT_NE(hardness, nullptr);
    hardness->setValue(hardness->minimum() + (hardness->maximum() - hardness->minimum()) / 4);

    host.accept();
    // Parameters left at their defaults are not kept.
    InstrumentSpec piano;
    piano.kind = InstrumentSpec::Kind::Lv2;
    piano.uri = "http://drobilla.net/plugins/mda/EPiano";
    piano.controls = {{"hardness", float(hardness->value())}};
    EXPECT_EQ(storedInstrumentSpec(), instrumentSpecText(piano));
}

} // namespace
} // namespace tg::shell
