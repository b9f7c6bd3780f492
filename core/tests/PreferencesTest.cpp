// The preferences file: defaults at their offsets, size rule, round trips, snapshots.
#include "core/Preferences.h"
#include "core/Message.h"
#include "core/Paths.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

// Reads of the file image written independently of the code under test.
struct Image {
    std::vector<uint8_t> bytes;
    std::vector<bool> checked = std::vector<bool>(5872, false);

    uint64_t le(size_t at, size_t n)
    {
        uint64_t v = 0;
        for (size_t i = 0; i < n; ++i) {
            v |= uint64_t(bytes.at(at + i)) << (8 * i);
            checked.at(at + i) = true;
        }
        return v;
    }
    unsigned u8(size_t at) { return unsigned(le(at, 1)); }
    unsigned u16(size_t at) { return unsigned(le(at, 2)); }
    int32_t i32(size_t at) { return int32_t(uint32_t(le(at, 4))); }
    double f64(size_t at)
    {
        const uint64_t bits = le(at, 8);
        double d;
        std::memcpy(&d, &bits, 8);
        return d;
    }
    // The text at `at`, and every byte of its field after it must be 0.
    std::string text(size_t at, size_t field)
    {
        std::string s;
        size_t i = 0;
        for (; i < field && bytes.at(at + i) != 0; ++i)
            s += char(bytes[at + i]);
        for (; i < field; ++i)
            EXPECT_EQ(bytes.at(at + i), 0) << "after the text at " << at;
        le(at, 0);
        for (size_t k = 0; k < field; ++k)
            checked.at(at + k) = true;
        return s;
    }
};

std::string asString(const std::vector<uint8_t>& v)
{
    return std::string(v.begin(), v.end());
}

} // namespace

TEST(PreferencesFile, FreshRecordHoldsEveryDefaultAtItsOffset)
{
    Image f{tg::serializePreferences(tg::defaultPreferences())};
    ASSERT_EQ(f.bytes.size(), 5872u);
    const std::string dataPath = tg::joinPath(tg::userDataFolder(), "Data");

    for (size_t i = 0; i < 16; ++i)
        EXPECT_EQ(f.u8(i), 0u);
    EXPECT_EQ(f.text(16, 260), dataPath);
    EXPECT_EQ(f.text(276, 36), "");
    const unsigned midi[] = {0, 1, 1, 0, 64, 0, 0};
    for (size_t i = 0; i < 7; ++i)
        EXPECT_EQ(f.u16(312 + 2 * i), midi[i]) << 312 + 2 * i;
    EXPECT_EQ(f.text(326, 68), "");
    EXPECT_EQ(f.text(394, 38), "44.1KHz, Stereo, 16bit");
    EXPECT_EQ(f.f64(432), 2.5);
    EXPECT_EQ(f.u8(440), 0u);
    EXPECT_EQ(f.f64(448), 1.5);
    EXPECT_EQ(f.f64(456), 0.0);
    EXPECT_EQ(f.u8(464), 0u);
    EXPECT_EQ(f.f64(472), 0.0);
    EXPECT_EQ(f.u8(480), 1u);
    EXPECT_EQ(f.u8(481), 1u);
    EXPECT_EQ(f.i32(484), 21);
    EXPECT_EQ(f.f64(488), 0.6);
    EXPECT_EQ(f.f64(496), 0.5);
    EXPECT_EQ(f.f64(504), 3.5);
    EXPECT_EQ(f.u8(512), 0u);
    EXPECT_EQ(f.u8(513), 1u);
    EXPECT_EQ(f.f64(520), 1.0);
    EXPECT_EQ(f.f64(528), 30.0);
    EXPECT_EQ(f.f64(536), 55.0);
    EXPECT_EQ(f.f64(544), 0.2);
    EXPECT_EQ(f.text(552, 16), "Exponential^2");
    EXPECT_EQ(f.f64(568), 0.5);
    EXPECT_EQ(f.text(576, 16), "Exponential^2");
    EXPECT_EQ(f.u16(592), 1u);
    EXPECT_EQ(f.u8(630), 0u);
    EXPECT_EQ(f.u16(708), 1u);
    EXPECT_EQ(f.f64(712), 0.7);
    EXPECT_EQ(f.text(726, 1242 - 726), "");
    EXPECT_EQ(f.u16(1242), 6u);
    EXPECT_EQ(f.u16(1244), 4u);
    EXPECT_EQ(f.u16(1250), 0u);
    EXPECT_EQ(f.text(1252, 1768 - 1252), "");
    EXPECT_EQ(f.u16(1768), 1u);
    EXPECT_EQ(f.u16(1770), 1u);
    EXPECT_EQ(f.u16(5384), 2u);
    EXPECT_EQ(f.u16(5386), 25u);
    EXPECT_EQ(f.u16(5388), 25u);
    EXPECT_EQ(f.u16(5390), 1u);
    const int32_t at5392[] = {-1000, 20, 1000, 488};
    for (size_t i = 0; i < 4; ++i)
        EXPECT_EQ(f.i32(5392 + 4 * i), at5392[i]);
    const unsigned at5408[] = {1, 1, 1, 1, 1, 1, 1, 0};
    for (size_t i = 0; i < 8; ++i)
        EXPECT_EQ(f.u16(5408 + 2 * i), at5408[i]);
    EXPECT_EQ(f.f64(5424), 0.9);
    EXPECT_EQ(f.f64(5432), 0.5);
    EXPECT_EQ(f.u16(5440), 1u);
    EXPECT_EQ(f.text(5448, 48), "MyInstrument");
    EXPECT_EQ(f.text(5496, 260), dataPath);
    const int32_t at5756[] = {0, 15, 0, 0, 1, 0, 2, 1, 6};
    for (size_t i = 0; i < 9; ++i)
        EXPECT_EQ(f.i32(5756 + 4 * i), at5756[i]);
    EXPECT_EQ(f.f64(5792), 10.0);
    EXPECT_EQ(f.f64(5800), 0.0);
    EXPECT_EQ(f.i32(5808), 0);
    EXPECT_EQ(f.i32(5812), 1);
    EXPECT_EQ(f.le(5816, 4), 1u);
    EXPECT_EQ(f.u16(5824), 1u);
    EXPECT_EQ(f.u16(5826), 1u);

    for (size_t i = 0; i < 5872; ++i) {
        if (!f.checked[i]) {
            EXPECT_EQ(f.bytes[i], 0) << "unlisted byte " << i;
        }
    }
}

TEST(PreferencesFile, FilesOfAnyOtherSizeAreIgnored)
{
    tg::Preferences changed = tg::defaultPreferences();
    changed.recordsettings.notelength1 = 9.0;
    const std::string image = asString(tg::serializePreferences(changed));
    tg::Preferences loaded;

    for (const std::string& bytes : {image.substr(0, 5871), image + '\0', std::string()}) {
        ASSERT_TRUE(tg::test::writeFileBytes(tg::preferencesFilePath(), bytes));
        tg::loadPreferences(loaded);
        EXPECT_EQ(loaded.recordsettings.notelength1, 2.5) << bytes.size();
        EXPECT_EQ(tg::serializePreferences(loaded),
                  tg::serializePreferences(tg::defaultPreferences()));
    }
    ASSERT_TRUE(tg::test::writeFileBytes(tg::preferencesFilePath(), image));
    tg::loadPreferences(loaded);
    EXPECT_EQ(loaded.recordsettings.notelength1, 9.0);
}

TEST(PreferencesFile, MissingFileGivesDefaultsAndUnwritableFolderFailsQuietly)
{
    tg::Preferences loaded;
    loaded.MIDIoutChannel = 5;
    tg::loadPreferences(loaded);
    EXPECT_EQ(loaded.MIDIoutChannel, 0);
    const std::string home = tg::userDataFolder();
    setenv("TONEGRABBER_HOME", "/nonexistent/folder/for/prefs", 1);
    EXPECT_FALSE(tg::savePreferences(loaded));
    setenv("TONEGRABBER_HOME", home.c_str(), 1);
}

TEST(PreferencesFile, SaveThenLoadRoundTripsEveryField)
{
    tg::Preferences p = tg::defaultPreferences();
    p.open0[8] = 0;
    p.open0[3] = 0x5a;
    tg::copyText(p.datapath, "/music/samples");
    std::memset(p.MIDIoutDevice, 'M', 36); // fills the stored field with no terminator
    p.MIDIoutChannel = 15;
    p.AutoSendReset = 0;
    p.MIDIoutProgram_active = 0;
    p.MIDIoutProgram = 127;
    p.MIDIoutAttackVelocity = 101;
    p.MIDIoutReleaseVelocity = 33;
    p.MIDIoutAfterTouch = 12;
    std::memset(p.AudioInDevice, 'A', 68);
    tg::copyText(p.AudioInFormat, "96KHz, Mono, 24bit");
    tg::RecordSettings& rs = p.recordsettings;
    rs.notelength1 = 1.25;
    rs.notelength2_active = 1;
    rs.notelength2 = -2.0;
    rs.releaselength1 = 0.75;
    rs.releaselength2_active = 1;
    rs.releaselength2 = 4.5;
    rs.clickpopred = 0;
    rs.zerocrossing = 0;
    rs.latency = -300;
    rs.thresPrecisionIn = 0.125;
    rs.thresPrecisionOut = 0.875;
    rs.recpause = 1e-3;
    rs.autoloop = 1;
    rs.autogain = 0;
    rs.loopsearchlength = 2.0;
    rs.loopstart = 40.0;
    rs.loopoutsearchstart = 60.0;
    rs.xfadelength = 0.3;
    std::memcpy(rs.xfadetype, "Sixteen-CharName", 16);
    rs.bfxfadelength = 0.6;
    tg::copyText(rs.bfxfadetype, "Linear");
    p.open592 = 7;
    p.open630 = 8;
    p.open708 = 9;
    p.open712 = 1.5;
    tg::copyText(p.SampleEditor, "/usr/bin/audacity");
    p.open1242[1] = 11;
    p.open1250 = 12;
    tg::copyText(p.TempDir, "/tmp/tg");
    p.promptWhenDeleting = 0;
    p.showPrjWizardAtStartup = 0;
    p.open5384 = 3;
    p.ClickPopRedFade_in = 100;
    p.ClickPopRedFade_out = 200;
    p.loadPrjAtStartup = 0;
    p.open5392[3] = -5;
    p.open5408[7] = 9;
    p.open5424[1] = 0.25;
    p.open5440 = 0;
    tg::copyText(p.instrumentName, "Grand");
    tg::copyText(p.secondPath, "/other");
    p.open5756[1] = 16;
    p.open5772[2] = 3;
    p.open5788 = 7;
    p.open5792[0] = 11.0;
    p.open5808[1] = 2;
    p.open5816 = 0xdeadbeef;
    p.open5824[0] = 4;

    ASSERT_TRUE(tg::savePreferences(p));
    EXPECT_EQ(tg::test::readFileBytes(tg::preferencesFilePath()).size(), 5872u);
    tg::Preferences q;
    tg::loadPreferences(q);
    EXPECT_EQ(tg::serializePreferences(q), tg::serializePreferences(p));
    EXPECT_STREQ(q.datapath, "/music/samples");
    EXPECT_EQ(std::string(q.MIDIoutDevice), std::string(36, 'M'));
    EXPECT_EQ(std::string(q.AudioInDevice), std::string(68, 'A'));
    EXPECT_STREQ(q.recordsettings.xfadetype, "Sixteen-CharName");
    EXPECT_STREQ(q.recordsettings.bfxfadetype, "Linear");
    EXPECT_EQ(q.recordsettings.latency, -300);
    EXPECT_EQ(q.recordsettings.recpause, 1e-3);
    EXPECT_EQ(q.open5816, 0xdeadbeefu);
    EXPECT_EQ(q.open5392[3], -5);
    EXPECT_EQ(q.open0[3], 0x5a);
    EXPECT_EQ(q.ClickPopRedFade_out, 200);
    EXPECT_STREQ(q.instrumentName, "Grand");
}

TEST(PreferencesFile, BytesOutsideTheFieldsSurviveALoadAndSave)
{
    std::vector<uint8_t> image = tg::serializePreferences(tg::defaultPreferences());
    image[3000] = 0x77; // inside the unlisted stretch between 1772 and 5384
    image[441] = 0x66;  // a gap inside the record-setting block
    ASSERT_TRUE(tg::test::writeFileBytes(tg::preferencesFilePath(), asString(image)));
    tg::Preferences p;
    tg::loadPreferences(p);
    p.MIDIoutChannel = 3;
    ASSERT_TRUE(tg::savePreferences(p));
    const std::string saved = tg::test::readFileBytes(tg::preferencesFilePath());
    ASSERT_EQ(saved.size(), 5872u);
    EXPECT_EQ(uint8_t(saved[3000]), 0x77);
    EXPECT_EQ(uint8_t(saved[441]), 0x66);
    EXPECT_EQ(uint8_t(saved[312]), 3);
}

TEST(PreferencesFile, UnterminatedTextsAreReadWithinTheirFields)
{
    std::vector<uint8_t> image = tg::serializePreferences(tg::defaultPreferences());
    std::memset(image.data() + 16, 'd', 260);   // datapath with no terminator
    std::memset(image.data() + 552, 'x', 16);   // xfadetype filling its field
    std::memset(image.data() + 1252, 't', 516); // TempDir with no terminator
    tg::Preferences p;
    ASSERT_TRUE(tg::parsePreferences(image.data(), image.size(), p));
    EXPECT_EQ(std::string(p.datapath), std::string(259, 'd'));
    EXPECT_EQ(std::string(p.recordsettings.xfadetype), std::string(16, 'x'));
    EXPECT_EQ(std::string(p.TempDir), std::string(515, 't'));
    EXPECT_EQ(p.recordsettings.bfxfadelength, 0.5); // the next field is untouched
}

TEST(PreferencesFile, ParseRejectsWrongSizesWithoutTouchingTheRecord)
{
    std::vector<uint8_t> image(5872, 0xff);
    tg::Preferences p = tg::defaultPreferences();
    EXPECT_FALSE(tg::parsePreferences(image.data(), 5871, p));
    EXPECT_FALSE(tg::parsePreferences(nullptr, 5872, p));
    EXPECT_EQ(tg::serializePreferences(p), tg::serializePreferences(tg::defaultPreferences()));
}

TEST(PreferencesDialog, RestoringTheSnapshotGivesBackAll5872Bytes)
{
    std::vector<uint8_t> image = tg::serializePreferences(tg::defaultPreferences());
    for (size_t i = 1772; i < 5384; ++i)
        image[i] = uint8_t(i * 7); // unlisted bytes as another program version may leave them
    tg::Preferences live;
    ASSERT_TRUE(tg::parsePreferences(image.data(), image.size(), live));
    const tg::PreferencesSnapshot snapshot = tg::takePreferencesSnapshot(live);
    ASSERT_EQ(snapshot.size(), 5872u);

    live.recordsettings.xfadelength = 9.0;
    tg::copyText(live.TempDir, "/changed");
    live.keptBytes.fill(0);
    live.open5408[2] = 0;
    tg::restorePreferencesSnapshot(live, snapshot);
    EXPECT_EQ(tg::serializePreferences(live), image);
}
