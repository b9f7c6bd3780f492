// The AIFF-files export over in-memory audio: the key zone and name handed to the writer. The
// WAV-files export's names and release parts are checked on real files by InterruptedExport,
// their loop and root key through libsndfile (ExportedSamples in tests/clients).
#include "export/ExportWavFiles.h"

#include "core/Message.h"
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
        project->mslCount = 1;
        tg::TGmsl& msl = project->msl[0];
        tg::copyText(msl.name, "Soft");
        msl.KBrangeIn = 48;
        msl.KBrangeOut = 72;
        msl.keys[60] = tg::makeNewKey(60);
        msl.keys[60].keyState = 1;
        msl.keys[60].hasAudio = 1;
        msl.keys[60].Note_Out = 999;
        audio.add(*project, 0, 60, 1000, 2000);
    }
};

} // namespace

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
    audio.failWritesTo = "x-00";
    EXPECT_EQ(tg::TGexport_Aiff("/out", "x-<#msi#>", project.get(), {0}, 0x10408, false, message,
                                audio.services()),
              0);
    EXPECT_EQ(message, "TGexport_Aiff():\n\nunable to open /out/x-00.aif");
}
