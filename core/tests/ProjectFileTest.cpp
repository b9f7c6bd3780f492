// The project file: every byte of a file laid out independently of the writer comes back
// through the reader and the writer; limits and clamps, the failure messages, and the data
// path forms. Keys get their audio from the files on disk in every loaded recording
// (RecordOnTheSynth); no temporary file stays after a save (AtomicFile, SaveSafety).
#include "core/ProjectFile.h"
#include "core/Model.h"
#include "core/tests/ProjectFileBuilder.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <tuple>

namespace {

using tg::Project;
using tg::TGmsl_key;
using tg::test::ProjectFileBuilder;
using tg::test::StoredMultiSample;
using tg::test::TempDir;

std::unique_ptr<Project> makeProject(const char* name, const char* dataPath, int mslCount)
{
    auto p = std::make_unique<Project>();
    tg::copyText(p->name, name);
    tg::copyText(p->dataPath, dataPath);
    p->mslCount = mslCount;
    return p;
}

// A model and a folder per test; files are loaded through the model as the program does.
class ProjectFileTest : public ::testing::Test {
  protected:
    tg::Model model;
    TempDir dir;
    tg::ProjectLoadOutcome outcome;
    std::string message;

    int load(const std::vector<std::string>& files, tg::ProjectLoadOptions options = {})
    {
        outcome = {};
        message.clear();
        return tg::loadProjects(model, dir.path(), files, options, outcome, message);
    }
    void writeFile(const std::string& name, const std::vector<uint8_t>& bytes)
    {
        ASSERT_TRUE(
            tg::test::writeFileBytes(dir.file(name), std::string(bytes.begin(), bytes.end())));
    }
    std::string readError(const std::string& name)
    {
        return "read error: " + dir.file(name) + "\n\nmaybe wrong format?";
    }
};

TEST_F(ProjectFileTest, ReadThenWriteGivesBackEveryByteOfTheFile)
{
    ProjectFileBuilder file(2980);
    file.header("Round Trip", dir.path(), 3, 2, 1, -12345);
    for (int i = 0; i < 3; ++i) {
        StoredMultiSample m; // the builder's values, made unlike each other's
        m.name = "Layer " + std::to_string(i);
        m.shorts[3] += uint16_t(i);
        m.notelength1 += i;
        m.key.keyState = 0xFFC8; // a byte field in the record, widened with its sign in the file
        m.key.name = "Key name " + std::to_string(i);
        m.key.noteIn += i;
        file.multiSample(m);
    }
    writeFile("Round Trip.TGprj", file.bytes());

    model.setAudioInputDeviceCount(3);
    ASSERT_TRUE(load({"Round Trip.TGprj"})) << message;
    ASSERT_EQ(outcome.loaded.size(), 1u);
    EXPECT_TRUE(outcome.warnings.empty());
    Project& q = model.project(outcome.loaded[0]);
    EXPECT_EQ(tg::serializeProject(q, dir.path()), file.bytes());
    EXPECT_STREQ(q.projectDir, dir.path().c_str());
    EXPECT_STREQ(q.dataPath, dir.path().c_str());
    for (int i = 0; i < 3; ++i) {
        SCOPED_TRACE("multi-sample " + std::to_string(i));
        EXPECT_EQ(q.msl[i].audioInChannelL, std::vector<int32_t>(3, -1));
        EXPECT_EQ(q.msl[i].audioInChannelR, std::vector<int32_t>(3, -1));
        for (const TGmsl_key& k : q.msl[i].keys)
            EXPECT_EQ(k.hasAudio, 0);
    }

    // Saving writes the same bytes to the named file and marks the record unmodified.
    q.modified = 1;
    std::filesystem::create_directory(dir.file("saved"));
    ASSERT_TRUE(tg::saveProject(q, dir.file("saved"), "Round Trip", message)) << message;
    EXPECT_EQ(q.modified, 0);
    EXPECT_STREQ(q.projectDir, dir.file("saved").c_str());
    EXPECT_EQ(tg::test::readFileBytes(dir.file("saved/Round Trip.TGprj")), file.text());
}

TEST_F(ProjectFileTest, TextsAreCutToWhatTheFileKeepsAndDeviceNamesToTheirFirstLine)
{
    auto p = makeProject("Cut", "/d", 2);
    tg::copyText(p->msl[0].AudioInDevice, std::string(68, 'a').c_str()); // file keeps 64
    tg::copyText(p->msl[0].MIDIoutDevice, std::string(36, 'm').c_str()); // fills its field
    tg::copyText(p->msl[1].AudioInDevice, "Card\nsecond line");
    ASSERT_TRUE(tg::saveProject(*p, dir.path(), "Cut", message));
    EXPECT_STREQ(p->msl[1].AudioInDevice, "Card\nsecond line"); // memory unchanged
    ASSERT_TRUE(load({"Cut.TGprj"}, {true, false, {}})) << message;
    EXPECT_EQ(std::string(model.project(0).msl[0].AudioInDevice), std::string(64, 'a'));
    EXPECT_EQ(std::string(model.project(0).msl[0].MIDIoutDevice), std::string(36, 'm'));
    EXPECT_STREQ(model.project(0).msl[1].AudioInDevice, "Card");
}

TEST_F(ProjectFileTest, NewerVersionIsARefusedReadAndLeavesNoProject)
{
    auto p = makeProject("New", "/d", 0);
    std::vector<uint8_t> bytes = tg::serializeProject(*p, "/d");
    bytes[20] = 0xA5; // 2981
    writeFile("New.TGprj", bytes);
    EXPECT_FALSE(load({"New.TGprj"}));
    EXPECT_EQ(message, readError("New.TGprj"));
    EXPECT_EQ(model.projectCount(), 0);

    bytes[20] = 0xA4;
    bytes[3] = 'X'; // signature
    writeFile("Sig.TGprj", bytes);
    EXPECT_FALSE(load({"Sig.TGprj"}));
    EXPECT_EQ(message, readError("Sig.TGprj"));
}

TEST_F(ProjectFileTest, MultiSampleCountAbove128LoadsWhat128BlocksHold)
{
    ProjectFileBuilder full(2980);
    full.header("Many", "/d", 200, 300, 150, 0);
    for (int i = 0; i < 128; ++i)
        full.multiSample(StoredMultiSample{});
    writeFile("Many.TGprj", full.bytes());
    ASSERT_TRUE(load({"Many.TGprj"}, {true, false, {}})) << message;
    const Project& q = model.project(0);
    EXPECT_EQ(std::make_tuple(q.mslCount, q.currentMsl, q.topMsl), std::make_tuple(128, 127, 127));

    ProjectFileBuilder few(2980);
    few.header("Few", "/d", 200);
    for (int i = 0; i < 3; ++i)
        few.multiSample(StoredMultiSample{});
    writeFile("Few.TGprj", few.bytes());
    EXPECT_FALSE(load({"Few.TGprj"}, {true, false, {}}));
    EXPECT_EQ(message, readError("Few.TGprj"));
    EXPECT_EQ(model.projectCount(), 1);
}

TEST_F(ProjectFileTest, LengthsAboveTheirLimitsAreClamped)
{
    ProjectFileBuilder b(2980);
    b.header("Long", "/d", 1);
    StoredMultiSample m;
    m.notelength1 = 5000.0;
    m.notelength2 = 3600.5;
    m.releaselength1 = 2000.0;
    m.releaselength2 = 1800.0;
    b.multiSample(m);
    writeFile("Long.TGprj", b.bytes());
    ASSERT_TRUE(load({"Long.TGprj"}, {true, false, {}})) << message;
    const tg::RecordSettings& rs = model.project(0).msl[0].recordsettings;
    EXPECT_EQ(std::make_tuple(rs.notelength1, rs.notelength2, rs.releaselength1, rs.releaselength2),
              std::make_tuple(3600.0, 3600.0, 1800.0, 1800.0));
}

TEST_F(ProjectFileTest, CutNameWarnsFrom48CharactersAndSavingGoesBackToTheLoadedFile)
{
    const std::string cut(47, 'n');
    const std::string base = cut + "n"; // one character more than a name holds
    auto p = makeProject("x", "/d", 0);
    writeFile(base + ".TGprj", tg::serializeProject(*p, "/d"));
    writeFile(cut + ".TGprj", tg::serializeProject(*p, "/unrelated"));
    const std::string unrelated = tg::test::readFileBytes(dir.file(cut + ".TGprj"));
    writeFile("Lower.tgprj", tg::serializeProject(*p, "/d"));

    ASSERT_TRUE(load({base + ".TGprj", "Lower.tgprj"}, {true, false, {}})) << message;
    EXPECT_EQ(std::string(model.project(0).name), cut);
    ASSERT_EQ(outcome.warnings.size(), 1u);
    EXPECT_EQ(outcome.warnings[0],
              "The name of the project is too long and will be truncated\n\n\"" + base +
                  "\"\nwill become\n\"" + cut + "\"");

    for (int i = 0; i < 2; ++i) {
        model.project(i).viewValue = 7;
        ASSERT_TRUE(tg::saveProjectAgain(model.project(i), message)) << message;
    }
    EXPECT_EQ(tg::test::readFileBytes(dir.file(cut + ".TGprj")), unrelated);
    EXPECT_FALSE(std::filesystem::exists(dir.file("Lower.TGprj")));
    tg::Model reloaded;
    ASSERT_TRUE(tg::loadProjects(reloaded, dir.path(), {base + ".TGprj", "Lower.tgprj"},
                                 {true, false, {}}, outcome, message));
    EXPECT_EQ(reloaded.project(0).viewValue, 7);
    EXPECT_EQ(reloaded.project(1).viewValue, 7);
}

TEST_F(ProjectFileTest, StoredStringLengthsAreBoundedByFieldAndFile)
{
    // A name longer than its field is read and cut; the file goes on after it.
    ProjectFileBuilder longName(2980);
    longName.header("ignored", "/d", 1);
    StoredMultiSample m;
    m.name = std::string(300, 'L');
    m.xfadetype = std::string(40, 'c');
    longName.multiSample(m);
    writeFile("LongName.TGprj", longName.bytes());
    ASSERT_TRUE(load({"LongName.TGprj"}, {true, false, {}})) << message;
    EXPECT_EQ(std::string(model.project(0).msl[0].name), std::string(47, 'L'));
    EXPECT_EQ(std::string(model.project(0).msl[0].recordsettings.xfadetype), std::string(16, 'c'));
    EXPECT_EQ(model.project(0).msl[0].range_end, 84);

    // A negative length, and one that runs past the end of the file, are read errors.
    ProjectFileBuilder negative(2980);
    negative.raw("Tonegrabber Project", 20);
    negative.i32(2980);
    negative.i32(-1);
    writeFile("Negative.TGprj", negative.bytes());
    EXPECT_FALSE(load({"Negative.TGprj"}));
    EXPECT_EQ(message, readError("Negative.TGprj"));

    ProjectFileBuilder pastEnd(2980);
    pastEnd.raw("Tonegrabber Project", 20);
    pastEnd.i32(2980);
    pastEnd.i32(0x7FFFFFF0);
    pastEnd.string("abc");
    writeFile("PastEnd.TGprj", pastEnd.bytes());
    EXPECT_FALSE(load({"PastEnd.TGprj"}));
    EXPECT_EQ(message, readError("PastEnd.TGprj"));
    EXPECT_EQ(model.projectCount(), 1);
}

TEST_F(ProjectFileTest, RelativeDataPathsAreExpandedAndRelocationStoresTheDataFolder)
{
    auto p = makeProject("Reloc", "/somewhere/else", 0);
    ASSERT_TRUE(tg::saveProject(*p, dir.path(), "Reloc", message, true));
    const std::string bytes = tg::test::readFileBytes(dir.file("Reloc.TGprj"));
    EXPECT_NE(bytes.find(std::string("..\\Reloc_data\0", 14)), std::string::npos);
    std::filesystem::create_directory(dir.file("Reloc_data"));
    ASSERT_TRUE(load({"Reloc.TGprj"})) << message;
    EXPECT_STREQ(model.project(0).dataPath, dir.file("Reloc_data").c_str());
    EXPECT_TRUE(outcome.warnings.empty());

    EXPECT_EQ(tg::expandDataPath("..\\a\\b", "/prj", "/home"), "/prj/a/b");
    EXPECT_EQ(tg::expandDataPath("../a/b", "/prj", "/home"), "/prj/a/b");
    EXPECT_EQ(tg::expandDataPath(".\\Data", "/prj", "/home"), "/home/Data");
    EXPECT_EQ(tg::expandDataPath("/abs/Data", "/prj", "/home"), "/abs/Data");
    EXPECT_EQ(tg::expandDataPath("..\\" + std::string(400, 'x'), "/prj", "/h").size(), 259u);
}

TEST_F(ProjectFileTest, LoadFailuresStopWithTheirMessagesAndKeepEarlierProjects)
{
    auto p = makeProject("A", "/no/such/folder", 0);
    writeFile("A.TGprj", tg::serializeProject(*p, p->dataPath));
    writeFile("B.TGprj", tg::serializeProject(*p, p->dataPath));

    // A missing data path warns and keeps the Project.
    ASSERT_TRUE(load({"A.TGprj"})) << message;
    ASSERT_EQ(outcome.warnings.size(), 1u);
    EXPECT_EQ(outcome.warnings[0], "Couldn't find the datapath \"/no/such/folder\"\nof the "
                                   "project \"A\"");

    EXPECT_FALSE(load({"B.TGprj", "noextension", "B2.TGprj"}, {true, false, {}}));
    EXPECT_EQ(message, "something was wrong with the extension...");
    EXPECT_EQ(model.projectCount(), 2); // B stays loaded

    EXPECT_FALSE(load({"A.TGprj"}, {true, false, {}}));
    EXPECT_EQ(message,
              "The name \"A\" is already in use.\n\nLoading will be canceled at this point.");
    ASSERT_TRUE(load({"A.TGprj"}, {true, true, {}})); // the check can be skipped
    EXPECT_EQ(model.projectCount(), 3);

    EXPECT_FALSE(load({"Missing.TGprj"}));
    EXPECT_EQ(message, "unable to open: " + dir.file("Missing.TGprj"));
    EXPECT_EQ(model.projectCount(), 3);

    while (model.projectCount() < tg::kMaxProjects)
        ASSERT_TRUE(model.newProject().ok());
    EXPECT_FALSE(load({"A.TGprj"}, {true, true, {}}));
    EXPECT_EQ(message, "You cannot have more than 128 projects.");
}

TEST_F(ProjectFileTest, SaveFailuresReportTheirMessagesAndSaveAgainUsesTheFolder)
{
    auto p = makeProject("S", "/d", 0);
    EXPECT_FALSE(tg::saveProject(*p, dir.file("no-such-folder"), "S", message));
    EXPECT_EQ(message, "unable to open: " + dir.file("no-such-folder") + "/S.TGprj");
    EXPECT_STREQ(p->projectDir, "");

    auto fresh = makeProject("Fresh", "/d", 0);
    EXPECT_TRUE(tg::saveProjectAgain(*fresh, message)); // never saved: nothing to do
    EXPECT_FALSE(std::filesystem::exists(dir.file("Fresh.TGprj")));

    ASSERT_TRUE(tg::saveProject(*p, dir.path(), "S", message));
    p->viewValue = 99;
    ASSERT_TRUE(tg::saveProjectAgain(*p, message));
    ASSERT_TRUE(load({"S.TGprj"}, {true, false, {}}));
    EXPECT_EQ(model.project(0).viewValue, 99);

    bool asked = false;
    EXPECT_FALSE(tg::saveProject(*p, dir.path(), "S", message, false, [&](const std::string&) {
        asked = true;
        return false;
    }));
    EXPECT_TRUE(asked);
}

} // namespace
