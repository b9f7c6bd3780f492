// WAV-files and AIFF-files exports over in-memory audio: names from the template, parts,
// loop and root key handed to the writers.
#include "export/ExportWavFiles.h"

#include "core/Message.h"
#include "export/NamingTags.h"
#include "export/tests/MemoryAudio.h"

#include <gtest/gtest.h>

#include <memory>
#include <tuple>

namespace {

class ExportSampleSets : public ::testing::Test {
  protected:
    std::unique_ptr<tg::Project> project = std::make_unique<tg::Project>();
    tg::test::MemoryAudio audio;
    std::string message;

    void SetUp() override
    {
        tg::copyText(project->name, "Grand");
        tg::copyText(project->dataPath, "/data");
        project->mslCount = 2;
        for (int m = 0; m < 2; ++m) {
            tg::TGmsl& msl = project->msl[m];
            tg::copyText(msl.name, m == 0 ? "Soft" : "Hard");
            msl.KBrangeIn = 48;
            msl.KBrangeOut = 72;
            msl.keys[60] = tg::makeNewKey(60);
            tg::TGmsl_key& key = msl.keys[60];
            key.keyState = 1;
            key.hasAudio = 1;
            key.Note_In = 10;
            key.Note_Out = 999;
            key.loopMode = 1;
            key.Loop_In = 300;
            key.Loop_Out = 499;
            audio.add(*project, m, 60, 1000, 2000);
        }
        project->msl[1].keys[60].releaseOn = 1;
    }
};

} // namespace

TEST_F(ExportSampleSets, WavFilesAreNamedByTheTemplateWithTheirReleaseParts)
{
    ASSERT_EQ(tg::TGexport_WavFiles("/out", tg::kLongNamingDefault, project.get(), {1, 0},
                                    0x80010408, false, message, audio.services()),
              1)
        << message;
    ASSERT_EQ(audio.written.size(), 3u);
    // Loop, root key and trimming as a real reader sees them: ExportedSamples in tests/clients.
    EXPECT_TRUE(audio.written.at("/out/Grand-00-Hard-060-Noname-C4.wav").loop.enabled);
    const auto& release = audio.written.at("/out/Grand-00-Hard-060-Noname-C4 - release.wav");
    EXPECT_FALSE(release.loop.enabled);
    EXPECT_EQ(audio.written.count("/out/Grand-01-Soft-060-Noname-C4.wav"), 1u);
}

TEST_F(ExportSampleSets, AiffFilesGetTheKeyZoneAndTheirName)
{
    project->msl[0].keys[60].mapLowFlag = 0;
    project->msl[0].keys[60].mapLow = 55;
    ASSERT_EQ(tg::TGexport_Aiff("/out", "x-<#msi#>", project.get(), {0}, 0x10408, true, message,
                                audio.services()),
              1)
        << message;
    const auto& file = audio.written.at("/out/x-00.aif");
    EXPECT_EQ(file.name, "x-00");
    const auto& i = file.instrument; // root key, key zone, velocity range
    EXPECT_EQ(std::make_tuple(i.rootKey, i.lowKey, i.highKey, i.lowVelocity, i.highVelocity),
              std::make_tuple(60, 55, 72, 1, 127));
}

TEST_F(ExportSampleSets, MessagesCarryTheirEntryName)
{
    audio.failWritesTo = "Soft";
    EXPECT_EQ(tg::TGexport_WavFiles("/out", "<#ms#>", project.get(), {0}, 0x10408, false, message,
                                    audio.services()),
              0);
    EXPECT_EQ(message, "TGexport_WavFiles():\n\nunable to open /out/Soft.wav");
    EXPECT_EQ(tg::TGexport_Aiff("/out", "<#ms#>", nullptr, {0}, 0x10408, false, message,
                                audio.services()),
              0);
    EXPECT_EQ(message, "TGexport_Aiff():\n\nillegal pointer (==NULL)");
}
