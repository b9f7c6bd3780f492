// Whole exports from recorded Key-Sample files: libsndfile opens the WAV, AIFF and SFZ sample
// files and finds the rendered loop and root key; an export that fills the disk leaves the
// Project and its recordings as they were (an aborted one is tested with the export pipeline).
#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "core/Names.h"
#include "export/ExportAudioServices.h"
#include "export/ExportSfz.h"
#include "export/ExportWavFiles.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <memory>

namespace {

constexpr int kFrames = 20000;
constexpr int kNoteIn = 500;
constexpr int kLoopIn = 4000;
constexpr int kLoopOut = 13999;
constexpr int kNoteOut = 18999;

struct SndfileCloser {
    void operator()(SNDFILE* f) const { sf_close(f); }
};

struct SoundFileView {
    bool opened = false;
    SF_INFO info{};
    bool hasInstrument = false;
    SF_INSTRUMENT instrument{};
};

SoundFileView viewWithSndfile(const std::string& path)
{
    SoundFileView view;
    std::unique_ptr<SNDFILE, SndfileCloser> file(sf_open(path.c_str(), SFM_READ, &view.info));
    view.opened = file != nullptr;
    if (file)
        view.hasInstrument = sf_command(file.get(), SFC_GET_INSTRUMENT, &view.instrument,
                                        sizeof view.instrument) == SF_TRUE;
    return view;
}

std::vector<uint8_t> tone(int channels)
{
    std::vector<uint8_t> data;
    for (int i = 0; i < kFrames; ++i)
        for (int c = 0; c < channels; ++c) {
            const int16_t v = int16_t(8000 * std::sin(0.05 * i * (c + 1)));
            data.push_back(uint8_t(v & 0xFF));
            data.push_back(uint8_t((v >> 8) & 0xFF));
        }
    return data;
}

class ExportedSamples : public ::testing::Test {
  protected:
    std::unique_ptr<tg::Project> project = std::make_unique<tg::Project>();
    tg::test::TempDir dir;
    std::string out;
    tg::ExportServices services = tg::defaultExportServices();
    std::string message;

    void SetUp() override
    {
        out = dir.file("out");
        std::filesystem::create_directories(out);
        std::filesystem::create_directories(dir.file("data"));
        tg::copyText(project->name, "Organ");
        tg::copyText(project->dataPath, dir.file("data").c_str());
        project->mslCount = 2;
        for (int m = 0; m < 2; ++m) {
            tg::TGmsl& msl = project->msl[m];
            tg::copyText(msl.name, m == 0 ? "Soft" : "Loud");
            msl.range_start = m == 0 ? 1 : 65;
            msl.range_end = m == 0 ? 64 : 127;
            msl.KBrangeIn = 48;
            msl.KBrangeOut = 72;
            for (int note : {60, 64, 67}) {
                tg::TGmsl_key& key = msl.keys[note];
                key = tg::makeNewKey(note);
                key.keyState = 1;
                key.hasAudio = 1;
                key.Note_In = kNoteIn;
                key.Note_Out = kNoteOut;
                key.loopMode = 1;
                key.Loop_In = kLoopIn;
                key.Loop_Out = kLoopOut;
                key.xfadeLen = 200;
                const int channels = note == 64 ? 2 : 1;
                std::string text;
                ASSERT_EQ(tg::writeWav(tg::keySampleFileName(*project, msl, note),
                                       tg::makeWaveFormat(44100, uint16_t(channels), 16),
                                       tone(channels), text),
                          1)
                    << text;
            }
        }
    }

    // Every marker and zone of the Project, to compare before and after an export.
    std::string markers() const
    {
        std::string all;
        for (int m = 0; m < project->mslCount; ++m)
            for (const tg::TGmsl_key& k : project->msl[m].keys)
                all += tg::formatText("%d %d %d %d %d %d|", k.Note_In, k.Note_Out, k.Loop_In,
                                      k.Loop_Out, k.mapLow, k.mapHigh);
        return all;
    }
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
    ASSERT_EQ(tg::TGexport_WavFiles(out, "<#ms#>-<#mn#>", project.get(), {0, 1}, kSettings, false,
                                    message, services),
              1)
        << message;
    for (const char* name : {"Soft-060.wav", "Soft-064.wav", "Loud-067.wav"}) {
        SCOPED_TRACE(name);
        const SoundFileView view = viewWithSndfile(out + "/" + name);
        ASSERT_TRUE(view.opened);
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
    ASSERT_EQ(tg::TGexport_Aiff(out, "<#msi#>-<#n#>", project.get(), {0}, kSettings, true, message,
                                services),
              1)
        << message;
    const SoundFileView view = viewWithSndfile(out + "/00-E4.aif");
    ASSERT_TRUE(view.opened);
    EXPECT_EQ(view.info.channels, 2);
    // Loop only: the file is the loop itself.
    EXPECT_EQ(view.info.frames, kLoopOut - kLoopIn + 1);
    ASSERT_TRUE(view.hasInstrument);
    EXPECT_EQ(view.instrument.basenote, 64);
    ASSERT_GE(view.instrument.loop_count, 1);
    EXPECT_EQ(view.instrument.loops[0].start, 0u);
    EXPECT_EQ(view.instrument.loops[0].end, uint32_t(kLoopOut - kLoopIn + 1));
}

TEST_F(ExportedSamples, SfzSampleFilesCarryLoopAndRootKey)
{
    ASSERT_EQ(tg::TGexport_DimensionSFZ(out, "Organ", "sfz", project.get(), {0, 1}, kSettings, 0.0,
                                        0.0, message, services),
              1)
        << message;
    const SoundFileView view = viewWithSndfile(out + "/Organ-001-067-G4.wav");
    ASSERT_TRUE(view.opened);
    ASSERT_TRUE(view.hasInstrument);
    EXPECT_EQ(view.instrument.basenote, 67);
    EXPECT_EQ(view.instrument.loops[0].end, uint32_t(kLoopOut - kNoteIn + 1));
    const std::string text = tg::test::readFileBytes(out + "/Organ.sfz");
    EXPECT_NE(text.find("<region> trigger=attack  pitch_keycenter=67 lokey=66 hikey=72 "
                        "sample=Organ-001-067-G4.wav\r\n"),
              std::string::npos)
        << text;
}

TEST_F(ExportedSamples, FullDiskLeavesTheProjectAsItWas)
{
    const std::string before = markers();
    const std::string audioBefore = recordings();
    int ok = 1;
    {
        // Room for the start of the first file only, whoever runs the test.
        tg::test::FileSizeLimit full(16 * 1024);
        ASSERT_TRUE(full.active());
        ok = tg::TGexport_WavFiles(out, "<#mn#>", project.get(), {0, 1}, kSettings, true, message,
                                   services);
    }
    EXPECT_EQ(ok, 0);
    EXPECT_EQ(message.rfind("TGexport_WavFiles():\n\n", 0), 0u) << message;
    EXPECT_EQ(markers(), before);
    EXPECT_EQ(recordings(), audioBefore);
}
