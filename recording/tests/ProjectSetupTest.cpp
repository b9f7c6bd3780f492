// Creating a Project from the set-up record: velocity layers, names, keyboard ranges, selected
// keys and the auto-loop settings. The wizard's page checks are tested on the wizard itself;
// devices, format, program and lengths reaching every Multi-Sample on the command line
// (ProjectCommands.NewWithThreeLayersOf61KeysShowsInInfo).
#include "recording/ProjectSetup.h"

#include "core/Model.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

using Ranges = std::vector<std::pair<int, int>>;

Ranges asPairs(const std::vector<tg::VelocityRange>& ranges)
{
    Ranges pairs;
    for (const auto& r : ranges)
        pairs.emplace_back(r.low, r.high);
    return pairs;
}

TEST(VelocitySplit, SpareVelocitiesGoToTheLaterLayers)
{
    EXPECT_EQ(asPairs(tg::splitVelocities(1)), (Ranges{{0, 127}}));
    EXPECT_EQ(asPairs(tg::splitVelocities(5)),
              (Ranges{{0, 24}, {25, 50}, {51, 75}, {76, 101}, {102, 127}}));
    // The single-precision accumulator falls just short of 1.0 for some counts, and then the
    // last spare velocity is never given out: eleven layers end at 126, as designed.
    EXPECT_EQ(tg::splitVelocities(11).back().high, 126);
    // Every count covers the velocities from 0 without gaps or overlaps.
    for (int layers = 1; layers <= 127; ++layers) {
        const auto ranges = tg::splitVelocities(layers);
        ASSERT_EQ(ranges.size(), static_cast<size_t>(layers));
        EXPECT_EQ(ranges.front().low, 0) << layers;
        EXPECT_GE(ranges.back().high, 126) << layers;
        EXPECT_LE(ranges.back().high, 127) << layers;
        for (size_t i = 1; i < ranges.size(); ++i)
            EXPECT_EQ(ranges[i].low, ranges[i - 1].high + 1) << layers;
    }
}

TEST(KeyboardRange, FollowsTheKeyCountAnd128KeysGiveThe88KeyRange)
{
    const std::vector<std::tuple<int, int, int>> cases = {
        {37, 48, 84},  {49, 36, 84},   {61, 36, 96}, {76, 28, 103},
        {88, 21, 108}, {128, 21, 108}, {50, 0, 127}};
    for (const auto& [count, low, high] : cases) {
        uint16_t in = 1, out = 1;
        tg::keyboardRangeFor(count, in, out);
        EXPECT_EQ(in, low) << count;
        EXPECT_EQ(out, high) << count;
    }
}

class ProjectFromSetup : public ::testing::Test {
  protected:
    tg::Model model;
    tg::test::TempDir dir;
    tg::ProjectSetupRecord setup;

    void SetUp() override
    {
        setup.name = "Strings";
        setup.dataPath = dir.path();
        setup.midiOutDevice = "Synth";
        setup.audioInDevice = "Line In";
        setup.sampleFormat = "48KHz, Stereo, 24bit";
    }
    tg::Project& create()
    {
        const tg::Result result = tg::createProjectFromSetup(model, setup);
        EXPECT_TRUE(result.ok()) << result.message;
        return *model.currentProject();
    }
};

TEST_F(ProjectFromSetup, ThreeLayersOf61KeysEverySecondKey)
{
    setup.velocityLayers = 3;
    setup.keyCount = 61;
    setup.keyStep = 2;
    setup.midiChannel = 10;
    setup.midiProgram = 5;
    tg::Project& p = create();
    EXPECT_STREQ(p.name, "Strings");
    EXPECT_EQ(p.dataPath, dir.path());
    ASSERT_EQ(p.mslCount, 3);
    const char* names[] = {"Velocity 41", "Velocity 84", "Velocity 127"};
    const int lows[] = {0, 42, 85}, highs[] = {41, 84, 127};
    for (int i = 0; i < 3; ++i) {
        SCOPED_TRACE(i);
        const tg::TGmsl& m = p.msl[i];
        EXPECT_STREQ(m.name, names[i]);
        EXPECT_EQ(m.range_start, lows[i]);
        EXPECT_EQ(m.range_end, highs[i]);
        EXPECT_EQ(m.MIDIoutAttackVelocity, highs[i]);
        EXPECT_EQ(m.MIDIoutChannel, 9);
        EXPECT_EQ(m.MIDIoutProgram_active, 1);
        EXPECT_EQ(m.recordsettings.autoloop, 0);
        for (int note = 0; note < 128; ++note)
            EXPECT_EQ(m.keys[note].keyState, note >= 36 && note <= 96 && note % 2 == 0 ? 1 : 0)
                << note;
    }
}

TEST_F(ProjectFromSetup, AutoLoopSettingsFollowComplexityAndLoopStart)
{
    setup.autoLoop = true;
    struct Case {
        tg::LoopComplexity complexity;
        int start;
        double search, outStart, xfade, bfxfade;
    };
    const double defaultBf = model.preferences().recordsettings.bfxfadelength;
    const Case cases[] = {{tg::LoopComplexity::Simple, 30, 1.5, 61.5, 0.75, defaultBf},
                          {tg::LoopComplexity::Intermediate, 50, 3.0, 72.5, 25.0, defaultBf},
                          {tg::LoopComplexity::Complex, 70, 1.5, 83.5, 24.5, 25.0}};
    for (const Case& c : cases) {
        setup.complexity = c.complexity;
        setup.loopStartPercent = c.start;
        setup.name = "P" + std::to_string(c.start);
        const tg::RecordSettings& rs = create().msl[0].recordsettings;
        SCOPED_TRACE(c.start);
        EXPECT_EQ(rs.autoloop, 1);
        EXPECT_EQ(rs.loopsearchlength, c.search);
        EXPECT_EQ(rs.loopstart, c.start);
        EXPECT_DOUBLE_EQ(rs.loopoutsearchstart, c.outStart);
        EXPECT_EQ(rs.xfadelength, c.xfade);
        EXPECT_EQ(rs.bfxfadelength, c.bfxfade);
        EXPECT_STREQ(rs.xfadetype, "Exponential^2");
        EXPECT_STREQ(rs.bfxfadetype, "Exponential^2");
    }
}

TEST_F(ProjectFromSetup, PluginRecordingUsesThePluginDevicesAndProgramZeroSendsNone)
{
    setup.pluginRecording = true;
    setup.midiProgram = 0;
    setup.keyCount = 128;
    setup.keyStep = 200; // only the first key of the range
    const tg::TGmsl& m = create().msl[0];
    EXPECT_STREQ(m.MIDIoutDevice, "-Vst Plugin-");
    EXPECT_STREQ(m.AudioInDevice, "-Vst Plugin-");
    EXPECT_EQ(m.MIDIoutProgram_active, 0);
    int selected = 0;
    for (const auto& key : m.keys)
        selected += key.keyState;
    EXPECT_EQ(selected, 1);
    EXPECT_EQ(m.keys[21].keyState, 1);
}

TEST_F(ProjectFromSetup, InputChannelsAreKeptForTheChosenDeviceRowOnly)
{
    model.setAudioInputDeviceCount(3);
    setup.audioInDeviceRow = 1;
    setup.audioInChannelLeft = 2;
    setup.audioInChannelRight = 3;
    const tg::TGmsl& m = create().msl[0];
    EXPECT_EQ(m.audioInChannelL, std::vector<int32_t>({-1, 2, -1}));
    EXPECT_EQ(m.audioInChannelR, std::vector<int32_t>({-1, 3, -1}));

    setup.name = "Hosted"; // the hosted instrument has no channels to keep
    setup.pluginRecording = true;
    const tg::TGmsl& hosted = create().msl[0];
    EXPECT_EQ(hosted.audioInChannelL, std::vector<int32_t>({-1, -1, -1}));
}

} // namespace
