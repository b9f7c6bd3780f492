// Whole exports from recorded Key-Sample files: libsndfile opens the WAV and AIFF files and
// finds the rendered loop and root key (an SFZ export writes its samples with the same WAV
// writer); an export that fills the disk leaves the Project and its recordings as they were
// (an aborted one is tested with the export pipeline).
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "export/ExportAudioServices.h"
#include "export/ExportWavFiles.h"
#include "tests/clients/SndfileView.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/ProjectFileAccess.h"
#include "tests/support/SavedProject.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <memory>

namespace {

constexpr int kFrames = 20000;
constexpr int kNoteIn = 500;
constexpr int kLoopIn = 4000;
constexpr int kLoopOut = 13999;
constexpr int kNoteOut = 18999;

using tg::test::SndfileView;
using tg::test::viewWithSndfile;

class ExportedSamples : public ::testing::Test {
  protected:
    tg::test::TempDir dir;
    std::string out = dir.file("out");
    std::unique_ptr<tg::Model> model;
    tg::ExportServices services = tg::defaultExportServices();
    std::string message;

    // Two velocity layers of keys 60, 64 (stereo) and 67 with a crossfaded loop.
    void SetUp() override
    {
        std::filesystem::create_directories(out);
        std::filesystem::create_directories(dir.file("data"));
        tg::test::SineProjectShape shape;
        shape.layers = {"Soft", "Loud"};
        shape.notes = {60, 64, 67};
        shape.stereoNotes = {64};
        shape.frames = kFrames;
        shape.noteIn = kNoteIn;
        shape.loopIn = kLoopIn;
        shape.loopOut = kLoopOut;
        shape.dataPath = dir.file("data");
        const std::string path =
            tg::test::saveSineProject(dir.path(), "Organ", shape, [](tg::Project& p) {
                for (int m = 0; m < 2; ++m) {
                    tg::TGmsl& msl = p.msl[m];
                    msl.range_start = m == 0 ? 1 : 65;
                    msl.range_end = m == 0 ? 64 : 127;
                    msl.KBrangeIn = 48;
                    msl.KBrangeOut = 72;
                    for (int note : {60, 64, 67}) {
                        msl.keys[note].Note_Out = kNoteOut;
                        msl.keys[note].xfadeLen = 200;
                    }
                }
            });
        model = tg::test::loadProjectFile(path);
        ASSERT_EQ(model->projectCount(), 1);
        project = &model->project(0);
    }

    tg::Project* project = nullptr;

    // The whole Project as its file would hold it, to compare before and after an export.
    std::vector<uint8_t> saved() const { return tg::serializeProject(*project, project->dataPath); }
    std::string recordings() const
    {
        std::string all;
        for (int m = 0; m < project->mslCount; ++m)
            for (int note : {60, 64, 67})
                all +=
                    tg::test::readFileBytes(tg::keySampleFileName(*project, project->msl[m], note));
        return all;
    }
};

// 44.1 kHz 16 Bit, channels as recorded, trim after the loop, levels adjusted.
constexpr uint32_t kSettings = 0x08 | 0x400 | 0x10000 | 0x1000000 | 0x20000000 | 0x80000000;

} // namespace

TEST_F(ExportedSamples, WavFilesCarryTheRenderedLoopAndRootKey)
{
    ASSERT_EQ(tg::TGexport_WavFiles(out, "<#ms#>-<#mn#>", project, {0, 1}, kSettings, false,
                                    message, services),
              1)
        << message;
    for (const char* name : {"Soft-060.wav", "Soft-064.wav", "Loud-067.wav"}) {
        SCOPED_TRACE(name);
        const SndfileView view = viewWithSndfile(out + "/" + name);
        ASSERT_TRUE(view.file);
        // The note up to 16 frames after the loop end.
        EXPECT_EQ(view.info.frames, kLoopOut + 16 + 1 - kNoteIn);
        EXPECT_EQ(view.info.channels, std::strcmp(name, "Soft-064.wav") == 0 ? 2 : 1);
        ASSERT_TRUE(view.hasInstrument);
        ASSERT_EQ(view.instrument.loop_count, 1);
        EXPECT_EQ(view.instrument.loops[0].start, uint32_t(kLoopIn - kNoteIn));
        // libsndfile reports one past the inclusive last loop frame of the smpl chunk.
        EXPECT_EQ(view.instrument.loops[0].end, uint32_t(kLoopOut - kNoteIn + 1));
    }
    EXPECT_EQ(viewWithSndfile(out + "/Soft-060.wav").instrument.basenote, 60);
    EXPECT_EQ(viewWithSndfile(out + "/Loud-067.wav").instrument.basenote, 67);
}

TEST_F(ExportedSamples, AiffFilesCarryTheLoopAsMarkersBetweenFrames)
{
    ASSERT_EQ(
        tg::TGexport_Aiff(out, "<#msi#>-<#n#>", project, {0}, kSettings, true, message, services),
        1)
        << message;
    const SndfileView view = viewWithSndfile(out + "/00-E4.aif");
    ASSERT_TRUE(view.file);
    EXPECT_EQ(view.info.channels, 2);
    // Loop only: the file is the loop itself.
    EXPECT_EQ(view.info.frames, kLoopOut - kLoopIn + 1);
    ASSERT_TRUE(view.hasInstrument);
    EXPECT_EQ(view.instrument.basenote, 64);
    ASSERT_GE(view.instrument.loop_count, 1);
    EXPECT_EQ(view.instrument.loops[0].start, 0u);
    EXPECT_EQ(view.instrument.loops[0].end, uint32_t(kLoopOut - kLoopIn + 1));
}

TEST_F(ExportedSamples, FullDiskLeavesTheProjectAsItWas)
{
    const std::vector<uint8_t> before = saved();
    const std::string audioBefore = recordings();
    int ok = 1;
    {
        // Room for the start of the first file only, whoever runs the test.
        tg::test::FileSizeLimit full(16 * 1024);
        ASSERT_TRUE(full.active());
        ok = tg::TGexport_WavFiles(out, "<#mn#>", project, {0, 1}, kSettings, true, message,
                                   services);
    }
    EXPECT_EQ(ok, 0);
    EXPECT_EQ(message.rfind("TGexport_WavFiles():\n\n", 0), 0u) << message;
    EXPECT_EQ(saved(), before);
    EXPECT_EQ(recordings(), audioBefore);
}
