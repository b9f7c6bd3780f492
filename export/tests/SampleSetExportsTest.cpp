// The SFZ and AIFF-files exports over in-memory audio: the written SFZ file, the key zone and
// name handed to the AIFF writer, failures. Loop and root key of the written samples are
// checked through libsndfile (ExportedSamples in tests/clients); the WAV-files export's names
// and release parts on real files by InterruptedExport.
#include "export/ExportSfz.h"
#include "export/ExportWavFiles.h"

#include "core/Message.h"
#include "export/ExportProgress.h"
#include "export/tests/MemoryAudio.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <tuple>

namespace {

class SampleSetExport : public ::testing::Test {
  protected:
    std::unique_ptr<tg::Project> project = std::make_unique<tg::Project>();
    tg::test::MemoryAudio audio;
    tg::test::TempDir dir;
    std::string message;

    void SetUp() override
    {
        tg::exportAbortFlag = false;
        tg::copyText(project->name, "Grand");
        tg::copyText(project->dataPath, "/data");
        project->mslCount = 2;
        const char* names[2] = {"Soft", "Pad"};
        for (int m = 0; m < 2; ++m) {
            tg::TGmsl& msl = project->msl[m];
            tg::copyText(msl.name, names[m]);
            msl.KBrangeIn = 58;
            msl.KBrangeOut = 63;
            for (int note : {60, 62}) {
                msl.keys[note] = tg::makeNewKey(note);
                msl.keys[note].keyState = 1;
                msl.keys[note].hasAudio = 1;
                msl.keys[note].Note_Out = 499;
                audio.add(*project, m, note, 500, 1000);
            }
        }
        project->msl[0].range_start = 1;
        project->msl[0].range_end = 64;
        project->msl[0].keys[60].releaseOn = 1;
        project->msl[1].mapTo = 1;
    }
    void TearDown() override { tg::exportAbortFlag = false; }

    int run()
    {
        return tg::TGexport_DimensionSFZ(dir.path(), "Piano", "sfz", project.get(), {0, 1}, 0x10408,
                                         0.0, 0.0, message, audio.services());
    }
};

} // namespace

TEST_F(SampleSetExport, SfzWritesSamplesAndTheRegionTextInOneFile)
{
    ASSERT_EQ(run(), 1) << message;
    const std::string dashes = "//" + std::string(83, '-') + "\r\n";
    const std::string expected =
        dashes +
        "// sfz Definition File\r\n// \r\n"
        "// this file was created with Corvane's Tonegrabber\xCE\xA0Version 6.01\r\n"
        "// for Cakewalk's virtual sampler \"Dimension\".\r\n" +
        dashes +
        "\r\n\r\n<group> // parameters for the multi-sample \"Soft\"\r\nlovel=1\r\nhivel=64\r\n\r\n"
        "<region> trigger=attack  pitch_keycenter=60 lokey=58 hikey=61 ampeg_release=0 "
        "sample=Piano-000-060-C4.wav\r\n"
        "<region> trigger=release pitch_keycenter=60 lokey=58 hikey=61 ampeg_attack=0 "
        "sample=Piano-000-060-C4-release.wav\r\n"
        "<region> trigger=attack  pitch_keycenter=62 lokey=62 hikey=63 "
        "sample=Piano-000-062-D4.wav\r\n"
        "\r\n\r\n<group> // parameters for the multi-sample \"Pad\"\r\n\r\n"
        "<region> trigger=attack  pitch_keycenter=60 lokey=58 hikey=61 "
        "sample=Piano-001-060-C4.wav\r\n"
        "<region> trigger=attack  pitch_keycenter=62 lokey=62 hikey=63 "
        "sample=Piano-001-062-D4.wav\r\n";
    EXPECT_EQ(tg::test::readFileBytes(dir.file("Piano.sfz")), expected);
    // Each sample the text names is written; the loop and root key they carry are checked
    // through libsndfile (ExportedSamples in tests/clients).
    EXPECT_EQ(audio.written.size(), 5u);
    for (const char* name : {"Piano-000-060-C4-release.wav", "Piano-001-062-D4.wav"})
        EXPECT_EQ(audio.written.count(dir.file(name)), 1u) << name;
}

TEST_F(SampleSetExport, SfzFailuresLeaveNoSfzFile)
{
    audio.failWritesTo = "Piano-001-060";
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(message,
              "TGexport_DimensionSFZ():\n\nunable to open " + dir.file("Piano-001-060-C4.wav"));
    EXPECT_FALSE(std::filesystem::exists(dir.file("Piano.sfz")));

    audio.failWritesTo.clear();
    tg::setExportProgressCallback([](double, const std::string&) { tg::exportAbortFlag = true; });
    EXPECT_EQ(run(), 0);
    tg::setExportProgressCallback({});
    EXPECT_EQ(message, "TGexport_DimensionSFZ():\n\nExport aborted.");
    EXPECT_FALSE(std::filesystem::exists(dir.file("Piano.sfz")));
}

TEST_F(SampleSetExport, UnopenableSfzFileIsReported)
{
    // A regular file where the folder should be: nothing can be created below it.
    ASSERT_TRUE(tg::test::writeFileBytes(dir.file("blocker"), "x"));
    const std::string folder = dir.file("blocker");
    EXPECT_EQ(tg::TGexport_DimensionSFZ(folder, "Piano", "sfz", project.get(), {0}, 0x10408, 0.0,
                                        0.0, message, audio.services()),
              0);
    EXPECT_EQ(message, "TGexport_DimensionSFZ():\n\nunable to open \"" + folder + "/Piano.sfz\"");
    EXPECT_EQ(project->msl[0].keys[60].Note_Out, 499);
}

TEST_F(SampleSetExport, AiffFilesGetTheKeyZoneAndTheirNameAndFailuresTheEntryName)
{
    project->msl[0].keys[60].mapLowFlag = 0;
    project->msl[0].keys[60].mapLow = 55;
    ASSERT_EQ(tg::TGexport_Aiff(dir.path(), "x-<#msi#>-<#mn#>", project.get(), {0}, 0x10408, false,
                                message, audio.services()),
              1)
        << message;
    const auto& file = audio.written.at(dir.file("x-00-060.aif"));
    EXPECT_EQ(file.name, "x-00-060");
    const auto& i = file.instrument; // root key, key zone, the full velocity range
    EXPECT_EQ(std::make_tuple(i.rootKey, i.lowKey, i.highKey, i.lowVelocity, i.highVelocity),
              std::make_tuple(60, 55, 61, 1, 127));

    audio.failWritesTo = "x-00-062";
    EXPECT_EQ(tg::TGexport_Aiff(dir.path(), "x-<#msi#>-<#mn#>", project.get(), {0}, 0x10408, false,
                                message, audio.services()),
              0);
    EXPECT_EQ(message, "TGexport_Aiff():\n\nunable to open " + dir.file("x-00-062.aif"));
}
