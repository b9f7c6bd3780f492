// Presets on disk: what a preset keeps of a Project, and saving, listing, renaming, deleting and
// applying them.
#include "extras/Presets.h"

#include "core/Model.h"
#include "core/Names.h"
#include "core/Paths.h"
#include "core/ProjectFile.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <tuple>

namespace tg {
namespace {

class Presets : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::filesystem::remove_all(presetsFolder()); // tests may share a user data folder
        copyText(original->name, "Strings");
        copyText(original->dataPath, dir.path().c_str());
        original->mslCount = 2;
        for (int m = 0; m < 2; ++m) {
            TGmsl& msl = original->msl[m];
            copyText(msl.name, m == 0 ? "Soft" : "Loud");
            copyText(msl.MIDIoutDevice, "Synth");
            copyText(msl.AudioInFormat, "48KHz, Stereo, 24bit");
            msl.range_start = m * 64;
            msl.range_end = m * 64 + 63;
            msl.controllerTable[3][1] = 74;
            msl.recordsettings.notelength1 = 7.5;
            msl.KBrangeIn = 36;
            TGmsl_key& key = msl.keys[40];
            key.keyState = 1;
            key.hasAudio = 1;
            key.Note_In = 200;
            key.Loop_Out = 9000;
            key.loopMode = 2;
            key.mapHighFlag = 0;
            key.mapHigh = 45;
            copyText(key.name, "taken");
        }
    }

    test::TempDir dir;
    std::unique_ptr<Project> original = std::make_unique<Project>();
    std::string message;
};

TEST_F(Presets, APresetKeepsSettingsAndKeyChoicesButNoTake)
{
    auto preset = std::make_unique<Project>();
    stripToPreset(*original, *preset);
    const TGmsl_key& key = preset->msl[1].keys[40];
    // Chosen, with its manual zone; no take and no markers.
    EXPECT_EQ(std::make_tuple(key.keyState, key.mapHighFlag, key.mapHigh),
              std::make_tuple(1, 0, 45));
    EXPECT_EQ(std::make_tuple(key.hasAudio, key.Note_In, key.Loop_Out, key.loopMode),
              std::make_tuple(0, 0, 0, 0));
    EXPECT_STREQ(key.name, "Noname");
    EXPECT_STREQ(preset->dataPath, "");
    // Everything but the keys and the data path is the Project's own.
    for (int m = 0; m < 2; ++m)
        for (int note = 0; note < kKeyCount; ++note)
            preset->msl[m].keys[note] = original->msl[m].keys[note];
    EXPECT_EQ(serializeProject(*preset, "x"), serializeProject(*original, "x"));
}

TEST_F(Presets, SavedPresetsAreListedRenamedAppliedAndDeleted)
{
    ASSERT_TRUE(savePreset(*original, "Strings 10", message)) << message;
    ASSERT_TRUE(savePreset(*original, "Strings 9", message)) << message;
    EXPECT_EQ(listPresets(), (std::vector<std::string>{"Strings 9", "Strings 10"}));
    EXPECT_TRUE(
        std::filesystem::is_regular_file(joinPath(userDataFolder(), "Presets/Strings 9.TGprj")));

    EXPECT_FALSE(savePreset(*original, "Strings 9", message));
    EXPECT_EQ(message, "A preset with that name already exists!");
    int asked = 0;
    EXPECT_TRUE(savePreset(*original, "Strings 9", message, [&](const std::string&) {
        ++asked;
        return true;
    }));
    EXPECT_EQ(asked, 1);
    EXPECT_FALSE(renamePreset("Strings 9", "Strings 10", message));
    EXPECT_EQ(message, "A preset with that name already exists!");
    ASSERT_TRUE(renamePreset("Strings 9", "Pads", message)) << message;
    EXPECT_EQ(listPresets(), (std::vector<std::string>{"Pads", "Strings 10"}));

    // Applied, the preset is the stripped Project under the new name and data path, unsaved.
    auto model = std::make_unique<Model>();
    ASSERT_TRUE(applyPreset(*model, "Pads", "Evening", dir.file("take"), message)) << message;
    const Project& made = *model->currentProject();
    auto expected = std::make_unique<Project>();
    stripToPreset(*original, *expected);
    copyText(expected->name, "Evening");
    EXPECT_EQ(serializeProject(made, "x"), serializeProject(*expected, "x"));
    EXPECT_STREQ(made.dataPath, dir.file("take").c_str());
    EXPECT_STREQ(made.projectDir, "");
    EXPECT_EQ(made.modified, 1);
    EXPECT_FALSE(applyPreset(*model, "Pads", "Evening", dir.path(), message));
    EXPECT_EQ(message, "A project with that name already exists!");

    ASSERT_TRUE(deletePreset("Pads", message));
    EXPECT_FALSE(deletePreset("Pads", message));
    EXPECT_EQ(message, "There is no preset named \"Pads\".");
    EXPECT_EQ(listPresets(), (std::vector<std::string>{"Strings 10"}));
}

TEST_F(Presets, NamesThatCannotNameAFileAreRefused)
{
    EXPECT_FALSE(savePreset(*original, "", message));
    EXPECT_EQ(message, "Empty preset names are not allowed!");
    EXPECT_FALSE(savePreset(*original, "Pads/Soft", message));
    EXPECT_FALSE(savePreset(*original, std::string(48, 'x'), message));
    EXPECT_TRUE(listPresets().empty());
}

} // namespace
} // namespace tg
