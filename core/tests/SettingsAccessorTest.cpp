// The keyed settings accessor: prefixes, kinds, text limits, targets and the copy to defaults.
#include "core/SettingsAccessor.h"
#include "core/Model.h"
#include "core/Preferences.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class SettingsAccess : public ::testing::Test {
  protected:
    tg::Model model;
    bool ok = false;

    void withMultiSample()
    {
        ASSERT_TRUE(model.newProject().ok());
        ASSERT_TRUE(model.addMultiSample().ok());
    }
};

struct KeyListener : tg::TonegrabberModelListener {
    std::vector<std::string> keys;
    int preferences = 0;
    void settingChanged(const std::string& key) override { keys.push_back(key); }
    void preferencesChanged() override { ++preferences; }
};

} // namespace

TEST_F(SettingsAccess, TextsAreCutToTheirFieldLimits)
{
    withMultiSample();
    const struct {
        const char* key;
        size_t kept;
    } fields[] = {{"msl_AudioInDevice", 68},
                  {"msl_AudioInFormat", 36},
                  {"prefs_MIDIoutDevice", 36},
                  {"prefs_datapath", 259},
                  {"msl_recordsettings_xfadetype", 16},
                  {"prefs_recordsettings_xfadetype", 16}};
    for (const auto& field : fields) {
        tg::setSettingText(model, field.key, std::string(300, 'a'), ok);
        EXPECT_TRUE(ok) << field.key;
        EXPECT_EQ(tg::settingText(model, field.key, ok), std::string(field.kept, 'a')) << field.key;
    }
    // Curve names fill their field whole; the field after them is untouched.
    EXPECT_EQ(model.currentMultiSample()->recordsettings.bfxfadelength, 0.5);
    EXPECT_EQ(model.preferences().recordsettings.bfxfadelength, 0.5);
    // A shorter text leaves nothing of the longer one behind.
    tg::setSettingText(model, "msl_AudioInDevice", "hw:1", ok);
    EXPECT_EQ(tg::settingText(model, "msl_AudioInDevice", ok), "hw:1");
    EXPECT_EQ(model.currentMultiSample()->AudioInDevice[5], '\0');
}

TEST_F(SettingsAccess, KeysWithoutAKnownPrefixOrNameAreRefused)
{
    withMultiSample();
    const double before = model.preferences().recordsettings.notelength1;
    for (const char* key : {"recordsettings_notelength1", "prefs.recordsettings.notelength1",
                            "prefs_recordsettings_notelength", "prefs_nosuchkey",
                            "msl_recordsettings_notelength3", "PREFS_recordsettings_notelength1"}) {
        ok = true;
        tg::setSettingDouble(model, key, 7.0, ok);
        EXPECT_FALSE(ok) << key;
        ok = true;
        tg::settingDouble(model, key, ok);
        EXPECT_FALSE(ok) << key;
    }
    EXPECT_EQ(model.preferences().recordsettings.notelength1, before);
}

TEST_F(SettingsAccess, AKeyOnlyMatchesInTheAccessorOfItsKindAndItsPrefixes)
{
    withMultiSample();
    tg::setSettingText(model, "prefs_recordsettings_notelength1", "3", ok);
    EXPECT_FALSE(ok);
    tg::setSettingDouble(model, "prefs_recordsettings_xfadetype", 3.0, ok);
    EXPECT_FALSE(ok);
    tg::setSettingText(model, "msl_datapath", "/x", ok); // only in the preferences
    EXPECT_FALSE(ok);
    tg::setSettingShort(model, "prefs_KBrangeIn", 10, ok); // only in the Multi-Sample
    EXPECT_FALSE(ok);
    tg::setSettingLong(model, "prefs_mappingsettings_range_end", 10, ok);
    EXPECT_FALSE(ok);
    // Short/long/char keys that do exist, in both targets.
    tg::setSettingShort(model, "msl_MIDIoutProgram", 42, ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(model.currentMultiSample()->MIDIoutProgram, 42);
    EXPECT_EQ(model.currentMultiSample()->MIDIoutProgram_active, 1); // not the longer name
    tg::setSettingShort(model, "prefs_MIDIoutProgram_active", 0, ok);
    EXPECT_EQ(model.preferences().MIDIoutProgram_active, 0);
    EXPECT_EQ(model.preferences().MIDIoutProgram, 0);
    tg::setSettingLong(model, "msl_mappingsettings_range_start", 64, ok);
    EXPECT_EQ(model.currentMultiSample()->range_start, 64);
    tg::setSettingLong(model, "prefs_recordsettings_latency", -12, ok);
    EXPECT_EQ(tg::settingLong(model, "prefs_recordsettings_latency", ok), -12);
    tg::setSettingChar(model, "msl_recordsettings_autoloop", 1, ok);
    EXPECT_EQ(model.currentMultiSample()->recordsettings.autoloop, 1);
    EXPECT_EQ(model.preferences().recordsettings.autoloop, 0);
    tg::setSettingShort(model, "prefs_ClickPopRedFade_in", 480, ok);
    EXPECT_EQ(tg::settingShort(model, "prefs_ClickPopRedFade_in", ok), 480);
}

TEST_F(SettingsAccess, MultiSampleKeysNeedACurrentMultiSample)
{
    tg::setSettingDouble(model, "msl_recordsettings_recpause", 1.0, ok);
    EXPECT_FALSE(ok); // no Project
    ASSERT_TRUE(model.newProject().ok());
    tg::setSettingDouble(model, "msl_recordsettings_recpause", 1.0, ok);
    EXPECT_FALSE(ok); // a Project without Multi-Samples
    tg::setSettingDouble(model, "prefs_recordsettings_recpause", 1.0, ok);
    EXPECT_TRUE(ok);
}

TEST_F(SettingsAccess, MslPrefixIsLookedForBeforePrefs)
{
    withMultiSample();
    // Holding both prefixes, the key is taken as a Multi-Sample key (and then matches none).
    tg::setSettingDouble(model, "msl_prefs_recordsettings_recpause", 1.0, ok);
    EXPECT_FALSE(ok);
    tg::SettingKind kind;
    EXPECT_FALSE(tg::findSettingKind("msl_prefs_recordsettings_recpause", kind));
    ASSERT_TRUE(tg::findSettingKind("prefs_recordsettings_notelength1", kind));
    EXPECT_EQ(kind, tg::SettingKind::Double);
}

TEST_F(SettingsAccess, SettersMarkTheProjectAndTellListeners)
{
    withMultiSample();
    model.currentProject()->modified = 0;
    KeyListener listener;
    model.addListener(&listener);
    tg::setSettingDouble(model, "prefs_recordsettings_loopstart", 12.0, ok);
    EXPECT_EQ(model.currentProject()->modified, 0);
    tg::setSettingShort(model, "msl_KBrangeIn", 36, ok);
    EXPECT_EQ(model.currentProject()->modified, 1);
    tg::setSettingShort(model, "msl_nosuchkey", 36, ok);
    EXPECT_EQ(listener.keys,
              (std::vector<std::string>{"prefs_recordsettings_loopstart", "msl_KBrangeIn"}));
}

TEST_F(SettingsAccess, CurrentSettingsBecomeTheDefaults)
{
    EXPECT_FALSE(tg::setCurrentSettingsAsDefault(model));
    withMultiSample();
    tg::TGmsl& msl = *model.currentMultiSample();
    tg::copyText(msl.AudioInDevice, "system");
    tg::copyText(msl.MIDIoutDevice, "FLUID Synth");
    tg::copyText(msl.AudioInFormat, "48KHz, Mono, 16bit");
    msl.MIDIoutChannel = 9;
    msl.MIDIoutAfterTouch = 5;
    msl.recordsettings.notelength1 = 6.0;
    msl.recordsettings.latency = 99;
    tg::copyText(msl.recordsettings.bfxfadetype, "Linear");
    msl.KBrangeIn = 21; // exists only for Multi-Samples: stays out of the preferences
    KeyListener listener;
    model.addListener(&listener);
    ASSERT_TRUE(tg::setCurrentSettingsAsDefault(model));
    EXPECT_EQ(listener.preferences, 1);
    const tg::Preferences& prefs = model.preferences();
    EXPECT_STREQ(prefs.AudioInDevice, "system");
    EXPECT_STREQ(prefs.MIDIoutDevice, "FLUID Synth");
    EXPECT_STREQ(prefs.AudioInFormat, "48KHz, Mono, 16bit");
    EXPECT_EQ(prefs.MIDIoutChannel, 9);
    EXPECT_EQ(prefs.MIDIoutAfterTouch, 5);
    EXPECT_EQ(prefs.recordsettings.notelength1, 6.0);
    EXPECT_EQ(prefs.recordsettings.latency, 99);
    EXPECT_STREQ(prefs.recordsettings.bfxfadetype, "Linear");
    // The next Multi-Sample is made from them (ModelOps.NewMultiSampleHasTheNewRecordValues),
    // but the keyboard range is its own.
    ASSERT_TRUE(model.addMultiSample().ok());
    EXPECT_EQ(model.currentMultiSample()->KBrangeIn, 48);
}
