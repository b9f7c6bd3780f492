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

constexpr size_t kFileSize = 5872;

// Where the file keeps its texts (written from the file's layout, not from the code). A text
// that fills its field comes back one character shorter, as the record keeps a terminator;
// device and curve names are held whole.
struct TextField {
    size_t at, size;
    bool heldWhole;
};
constexpr TextField kTextFields[] = {
    {16, 260, false}, {276, 36, true},   {326, 68, true},    {394, 38, false},  {552, 16, true},
    {576, 16, true},  {726, 516, false}, {1252, 516, false}, {5448, 48, false}, {5496, 260, false}};

// A file image with no zero byte in it, so that every field holds something to lose.
std::vector<uint8_t> patternImage()
{
    std::vector<uint8_t> image(kFileSize);
    for (size_t i = 0; i < image.size(); ++i)
        image[i] = uint8_t(1 + (i * 37 + i / 251) % 255);
    return image;
}

uint64_t littleEndian(const std::vector<uint8_t>& image, size_t at, size_t size)
{
    uint64_t value = 0;
    for (size_t i = 0; i < size; ++i)
        value |= uint64_t(image.at(at + i)) << (8 * i);
    return value;
}

std::string asString(const std::vector<uint8_t>& v)
{
    return std::string(v.begin(), v.end());
}

} // namespace

TEST(PreferencesFile, EveryByteOfTheFileComesBackThroughTheRecord)
{
    const std::vector<uint8_t> image = patternImage();
    tg::Preferences p;
    ASSERT_TRUE(tg::parsePreferences(image.data(), image.size(), p));
    const std::vector<uint8_t> again = tg::serializePreferences(p);
    ASSERT_EQ(again.size(), kFileSize);

    std::vector<size_t> expectedChanges; // only the last byte of a text filling its field
    for (const TextField& text : kTextFields)
        if (!text.heldWhole)
            expectedChanges.push_back(text.at + text.size - 1);
    std::vector<size_t> changes;
    for (size_t i = 0; i < kFileSize; ++i)
        if (again[i] != image[i])
            changes.push_back(i);
    EXPECT_EQ(changes, expectedChanges);
    for (size_t at : changes)
        EXPECT_EQ(again[at], 0) << at;

    // Fields the program reads, found where the file keeps them.
    EXPECT_EQ(std::string(p.datapath), asString(image).substr(16, 259));
    EXPECT_EQ(std::string(p.MIDIoutDevice), asString(image).substr(276, 36));
    EXPECT_EQ(std::string(p.AudioInFormat), asString(image).substr(394, 37));
    EXPECT_EQ(p.MIDIoutChannel, littleEndian(image, 312, 2));
    EXPECT_EQ(p.ClickPopRedFade_in, littleEndian(image, 5386, 2));
    EXPECT_EQ(p.ClickPopRedFade_out, littleEndian(image, 5388, 2));
    EXPECT_EQ(uint32_t(p.recordsettings.latency), littleEndian(image, 484, 4));
    double noteLength = 0;
    const uint64_t bits = littleEndian(image, 432, 8);
    std::memcpy(&noteLength, &bits, 8);
    EXPECT_EQ(std::memcmp(&p.recordsettings.notelength1, &noteLength, 8), 0);
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

TEST(PreferencesFile, SaveThenLoadGivesTheSameRecord)
{
    // Every byte's way through the record is checked above; this is the way through the file.
    tg::Preferences p = tg::defaultPreferences();
    std::memset(p.MIDIoutDevice, 'M', 36); // fills the stored field with no terminator
    p.recordsettings.latency = -300;
    p.ClickPopRedFade_out = 200;
    p.open5816 = 0xdeadbeef;
    ASSERT_TRUE(tg::savePreferences(p));
    EXPECT_EQ(tg::test::readFileBytes(tg::preferencesFilePath()).size(), kFileSize);
    tg::Preferences q;
    tg::loadPreferences(q);
    EXPECT_EQ(tg::serializePreferences(q), tg::serializePreferences(p));
    EXPECT_EQ(std::string(q.MIDIoutDevice), std::string(36, 'M'));
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
