// Project files of older versions, built field by field as those versions wrote them: fields a
// version lacks take their stated values, and old curve names and release flags are brought up
// to date.
#include "core/Model.h"
#include "core/ProjectFile.h"
#include "core/tests/ProjectFileBuilder.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <ostream>

namespace {

using tg::test::ProjectFileBuilder;
using tg::test::StoredKey;
using tg::test::StoredMultiSample;

// Which fields each version holds.
struct VersionCase {
    int32_t version;
    bool autoGain;     // key autoGainXFade and Multi-Sample autogain
    bool zones;        // mapLowFlag/mapLow/mapHighFlag/mapHigh as four bytes
    bool keyName;      // 48-byte key name
    bool silencePair;  // Silence_In/Out as two values, and releaseOn
    bool reserved1;    // the value after the curves
    bool loopResults;  // five loop results
    bool reservedB;    // the second group of six values
    bool curveRenamed; // "Exponential" / "Logarithmic" renamed
};

const VersionCase kCases[] = {
    {2980, true, true, true, true, true, true, true, false},
    {2940, false, true, true, true, true, true, true, false},
    {2900, false, false, true, true, true, true, true, false},
    {2250, false, false, false, true, true, true, true, false},
    {1930, false, false, false, false, true, true, true, false},
    {1920, false, false, false, false, false, true, true, false},
    {1910, false, false, false, false, false, false, true, false},
    {1500, false, false, false, false, false, false, false, false},
    {1499, false, false, false, false, false, false, false, true},
};

void PrintTo(const VersionCase& c, std::ostream* out)
{
    *out << "version " << c.version;
}

class OlderVersions : public ::testing::TestWithParam<VersionCase> {};

TEST_P(OlderVersions, AbsentFieldsTakeTheirStatedValues)
{
    const VersionCase c = GetParam();
    tg::test::TempDir dir;
    ProjectFileBuilder b(c.version);
    b.header("stored name", dir.path(), 1, 0, 0, 7);
    StoredMultiSample m;
    m.xfadetype = "Exponential";
    m.bfxfadetype = "Logarithmic";
    m.key.releaseOn = 0; // a pair that fits: newer files keep the stored 0
    b.multiSample(m);
    ASSERT_TRUE(tg::test::writeFileBytes(dir.file("Old.TGprj"), b.text()));

    tg::Model model;
    tg::ProjectLoadOutcome outcome;
    std::string message;
    ASSERT_TRUE(tg::loadProjects(model, dir.path(), {"Old.TGprj"}, {}, outcome, message))
        << message;
    const tg::Project& p = model.project(0);
    EXPECT_STREQ(p.name, "Old");
    EXPECT_EQ(p.viewValue, 7);
    const tg::TGmsl& msl = p.msl[0];
    EXPECT_STREQ(msl.name, "Layer");
    EXPECT_EQ(msl.KBrangeOut, m.shorts[8]);
    EXPECT_EQ(msl.parameterTable[56][1], 1113);
    EXPECT_EQ(msl.recordsettings.autogain, c.autoGain ? 1 : 0);
    EXPECT_EQ(msl.recordsettings.latency, m.latency);
    EXPECT_STREQ(msl.recordsettings.xfadetype, c.curveRenamed ? "Exponential^2" : "Exponential");
    EXPECT_STREQ(msl.recordsettings.bfxfadetype, c.curveRenamed ? "Log2" : "Logarithmic");
    EXPECT_EQ(msl.range_end, m.rangeEnd);

    const StoredKey& k = m.key;
    for (int note : {0, 61, 127}) {
        SCOPED_TRACE("note " + std::to_string(note));
        const tg::TGmsl_key& key = msl.keys[note];
        EXPECT_EQ(key.keyState, 1);
        EXPECT_EQ(key.autoGainXFade, c.autoGain ? 1 : 0);
        EXPECT_EQ(key.mapLowFlag, c.zones ? 0 : 1);
        EXPECT_EQ(key.mapLow, c.zones ? k.mapLow : note);
        EXPECT_EQ(key.mapHighFlag, c.zones ? 0 : 1);
        EXPECT_EQ(key.mapHigh, c.zones ? k.mapHigh : note);
        EXPECT_STREQ(key.name, c.keyName ? "Key" : "Noname");
        // Without a recording the old silence time cannot be placed: both markers are 0.
        EXPECT_EQ(key.Silence_In, c.silencePair ? k.silenceIn : 0);
        EXPECT_EQ(key.Silence_Out, c.silencePair ? k.silenceOut : 0);
        EXPECT_EQ(key.Note_Out, k.noteOut);
        EXPECT_EQ(key.Release_Out, k.releaseOut);
        EXPECT_EQ(key.releaseOn, c.silencePair ? 0 : 1);
        EXPECT_EQ(key.loopMode, k.loopMode);
        EXPECT_EQ(key.LoopSearch_Len, k.loop[4]);
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(key.loopResults[i], c.loopResults ? i + 1 : -1);
        EXPECT_EQ(key.bfxfadeLen, k.bfxfadeLen);
        EXPECT_EQ(key.bfxfadeCurve, k.bfxfadeCurve);
        EXPECT_EQ(key.reserved1, c.reserved1 ? k.reserved1 : 0);
        EXPECT_EQ(key.reservedA[5], k.reservedA[5]);
        EXPECT_EQ(key.reservedB[0], c.reservedB ? k.reservedB[0] : 0);
    }
}

INSTANTIATE_TEST_SUITE_P(ProjectFile, OlderVersions, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::to_string(info.param.version); });

TEST(ProjectFileReleaseFlag, StoredFlagIsKeptOnlyWhenTheReleasePartFits)
{
    tg::test::TempDir dir;
    for (int32_t version : {2980, 2000}) {
        SCOPED_TRACE(version);
        ProjectFileBuilder b(version);
        b.header("x", dir.path(), 1);
        StoredMultiSample m;
        m.key.releaseOn = 1;
        m.key.releaseIn = m.key.releaseOut; // the release part is empty
        b.multiSample(m);
        ASSERT_TRUE(tg::test::writeFileBytes(dir.file("R.TGprj"), b.text()));
        tg::Model model;
        tg::ProjectLoadOutcome outcome;
        std::string message;
        ASSERT_TRUE(tg::loadProjects(model, dir.path(), {"R.TGprj"}, {}, outcome, message));
        EXPECT_EQ(model.project(0).msl[0].keys[5].releaseOn, 0);
    }
}

} // namespace
