// The crossfade region the editor shades is the stretch the renderer blends before the loop's
// end (or, looping back and forth, before the turn of the forward pass).
#include "shell/editor/MarkerScene.h"

#include <gtest/gtest.h>

namespace tg::shell {
namespace {

TEST(MarkerScene, CrossfadeRegionFollowsTheLoopMode)
{
    TGmsl_key key = makeNewKey(60);
    key.Loop_In = 1000;
    key.Loop_Out = 5000;
    key.xfadeLen = 300;
    key.bfxfadeLen = 200;
    EXPECT_LT(crossfadeRegion(key).end, crossfadeRegion(key).begin) << "loop off";

    key.loopMode = 1;
    EXPECT_EQ(crossfadeRegion(key).begin, 4701);
    EXPECT_EQ(crossfadeRegion(key).end, 5000);

    key.loopMode = 2;
    EXPECT_EQ(crossfadeRegion(key).begin, 4501);
    EXPECT_EQ(crossfadeRegion(key).end, 4800);

    key.loopMode = 1;
    key.xfadeLen = 9000; // longer than the loop: never before Loop_In
    EXPECT_EQ(crossfadeRegion(key).begin, 1000);
    key.xfadeLen = 0;
    EXPECT_LT(crossfadeRegion(key).end, crossfadeRegion(key).begin);

    // Only the selected marker is drawn selected.
    const WaveScene scene = markerScene(key, MarkerId::LoopOut);
    EXPECT_TRUE(scene.markers[5].selected);
    EXPECT_FALSE(scene.markers[4].selected);
}

} // namespace
} // namespace tg::shell
