// Prophet-X layer checks and the loop-type notice.
#include "export/templates/ExportChecks.h"

#include "export/tests/SyntheticProject.h"

#include <gtest/gtest.h>

namespace tg {
namespace {

using test::addKey;
using test::addLayer;

const char kVelocityMessage[] =
    "The project you are trying to export contains a setting that is not fully compatible with "
    "the Prophet-X's playback engine.\n\nVelocity-overlapping is not supported. Each layer must "
    "have a unique velocity mapping range with no gaps in between.";
const char kKeyMessage[] =
    "The project you are trying to export contains one or more settings that are not fully "
    "compatible with the Prophet-X's playback engine.\n\nA) Each keysample in one multisample "
    "must be accompanied by keysamples in all other layers on the same midi note.\nB) Each "
    "keysample's note range must be the same for the accompanied keysamples in all other layers.";

std::unique_ptr<Project> layers(int aLow, int aHigh, int bLow, int bHigh)
{
    auto project = test::makeProject("P");
    addLayer(*project, "A", aLow, aHigh);
    addLayer(*project, "B", bLow, bHigh);
    for (int m : {0, 1}) {
        addKey(*project, m, 60, 0, 64);
        addKey(*project, m, 72, 65, 127);
    }
    return project;
}

TEST(ProphetXChecks, LayersTileTheVelocitiesAndShareTheirKeysAndRanges)
{
    EXPECT_TRUE(checkProphetXLayers(*layers(64, 127, 0, 63), {0, 1}).ok()); // in any order
    EXPECT_EQ(checkProphetXLayers(*layers(0, 64, 64, 127), {0, 1}).message, kVelocityMessage);
    EXPECT_EQ(checkProphetXLayers(*layers(0, 62, 64, 127), {0, 1}).message, kVelocityMessage);

    auto missing = layers(0, 63, 64, 127);
    missing->msl[1].keys[72].hasAudio = 0;
    EXPECT_EQ(checkProphetXLayers(*missing, {0, 1}).message, kKeyMessage);
    auto ranges = layers(0, 63, 64, 127);
    ranges->msl[1].keys[72].mapLow = 66;
    EXPECT_EQ(checkProphetXLayers(*ranges, {0, 1}).message, kKeyMessage);
}

TEST(LoopTypeCheck, MixedLoopsGiveTheFormatsNotice)
{
    auto project = layers(0, 63, 64, 127);
    EXPECT_FALSE(hasMixedLoopTypes(*project));
    EXPECT_TRUE(checkLoopTypes(*project, SingleLoopFormat::Deluge).ok());

    project->msl[0].keys[60].loopMode = 1;
    EXPECT_TRUE(hasMixedLoopTypes(*project));
    EXPECT_EQ(checkLoopTypes(*project, SingleLoopFormat::Deluge).message,
              "This project contains both single shot and looped samples. The Deluge format only "
              "supports one or the other per project. Please adjust the \"Loop all samples\" "
              "setting in the following dialog.");
    EXPECT_NE(
        checkLoopTypes(*project, SingleLoopFormat::ProphetX).message.find("The Prophet X format"),
        std::string::npos);
    EXPECT_NE(
        checkLoopTypes(*project, SingleLoopFormat::Quantum).message.find("The Quantum format"),
        std::string::npos);

    // A looped key that holds no recording does not count.
    project->msl[0].keys[60].hasAudio = 0;
    EXPECT_FALSE(hasMixedLoopTypes(*project));
}

} // namespace
} // namespace tg
