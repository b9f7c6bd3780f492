// The preferences dialog: a widget for every preference, edits that reach the live record,
// Cancel that puts every byte back.
#include "shell/dialogs/PreferencesDialog.h"
#include "core/IniKeys.h"
#include "core/Model.h"
#include "core/Preferences.h"
#include "core/SettingsAccessor.h"
#include "shell/IniFile.h"
#include "shell/tests/WidgetTestSupport.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QSpinBox>
#include <gtest/gtest.h>

namespace tg::shell {
namespace {

class PreferencesDialogTest : public ::testing::Test {
  protected:
    // Edits a text, a flag, a number, a double, a choice and the MIDI channel.
    void editSome(PreferencesDialog& dialog)
    {
        QLineEdit* data = test::named<QLineEdit>(dialog, "prefs_datapath");
        data->setText("/somewhere/else");
        emit data->editingFinished();
        test::named<QCheckBox>(dialog, "prefs_recordsettings_autoloop")->setChecked(true);
        test::named<QSpinBox>(dialog, "prefs_MIDIoutAttackVelocity")->setValue(101);
        test::named<QDoubleSpinBox>(dialog, "prefs_recordsettings_notelength1")->setValue(4.25);
        test::named<QComboBox>(dialog, "prefs_AudioInFormat")->setCurrentText("96KHz, Mono, 24bit");
        test::named<QSpinBox>(dialog, "prefs_MIDIoutChannel")->setValue(10);
    }

    Model model;
};

TEST_F(PreferencesDialogTest, EveryPreferenceHasItsWidgetAndEditsReachTheRecord)
{
    PreferencesDialog dialog(model);
    for (const SettingKey& key : settingKeys("prefs"))
        EXPECT_NE(dialog.findChild<QWidget*>(QString::fromStdString(key.key)), nullptr) << key.key;

    editSome(dialog);
    const Preferences& prefs = model.preferences();
    EXPECT_STREQ(prefs.datapath, "/somewhere/else");
    EXPECT_EQ(prefs.recordsettings.autoloop, 1);
    EXPECT_EQ(prefs.MIDIoutAttackVelocity, 101);
    EXPECT_EQ(prefs.recordsettings.notelength1, 4.25);
    EXPECT_STREQ(prefs.AudioInFormat, "96KHz, Mono, 24bit");
    EXPECT_EQ(prefs.MIDIoutChannel, 9) << "shown 1-16, kept 0-15";

    test::named<QCheckBox>(dialog, "ShowWarningOnQuit")->setChecked(false);
    dialog.accept();
    EXPECT_EQ(model.preferences().MIDIoutAttackVelocity, 101) << "OK keeps the edits";
    EXPECT_EQ(openIniFile()->value(ini::kShowWarningOnQuit), QVariant(false));
}

TEST_F(PreferencesDialogTest, CancelLeavesThePreferencesByteIdentical)
{
    // A record as read from a file, with bytes no field covers.
    Preferences& prefs = model.preferences();
    prefs.keptBytes[2000] = 0x5a;
    prefs.open5392[1] = 77;
    const PreferencesSnapshot before = takePreferencesSnapshot(prefs);

    PreferencesDialog dialog(model);
    editSome(dialog);
    ASSERT_NE(takePreferencesSnapshot(prefs), before);
    test::named<QCheckBox>(dialog, "ShowWarningOnQuit")->setChecked(false);
    dialog.reject();
    EXPECT_EQ(takePreferencesSnapshot(prefs), before);
    EXPECT_FALSE(openIniFile()->contains(ini::kShowWarningOnQuit));
}

} // namespace
} // namespace tg::shell
