// The template and Korg writers inside the common pipeline, with the program's own reader,
// renderer, converter and WAV writer: level gains, loop-only, channels and the working copy
// reach them exactly as they reach the WAV-files export. An abort between keys is the
// pipeline's own (ExportPipeline), during the archive the Bitwig exporter's (BitwigExporter).
#include "export/ExportTemplateFormats.h"

#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "core/Names.h"
#include "export/ExportAudioServices.h"
#include "export/ExportProgress.h"
#include "export/templates/QuantumExporter.h"
#include "tests/support/Pcm16.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace {

using namespace tg;

constexpr int kFrames = 4000;

// A stereo recording whose right channel is the left one negated and halved.
std::vector<uint8_t> recording(int16_t peak)
{
    return test::pcm16(kFrames, 2, [peak](size_t i, int channel) {
        const auto left = int16_t(std::lround(peak * std::sin(double(i) * 0.05)));
        return channel == 0 ? left : int16_t(-left / 2);
    });
}

class TemplateFormatsInPipeline : public ::testing::Test {
  protected:
    test::TempDir dir;
    std::unique_ptr<Project> project = std::make_unique<Project>();
    ExportServices services = defaultExportServices();
    int renders = 0;
    std::string message;
    std::unique_ptr<Project> before;

    void SetUp() override
    {
        exportAbortFlag = false;
        copyText(project->name, "Piano");
        copyText(project->dataPath, dir.path().c_str());
        project->mslCount = 2;
        const int16_t peaks[2] = {4000, 16000};
        for (int m = 0; m < 2; ++m) {
            TGmsl& msl = project->msl[m];
            copyText(msl.name, m == 0 ? "Soft" : "Hard");
            msl.range_start = m == 0 ? 0 : 64;
            msl.range_end = m == 0 ? 63 : 127;
            msl.KBrangeIn = 48;
            msl.KBrangeOut = 72;
            for (int note : {60, 64}) {
                std::string error;
                ASSERT_EQ(writeWav(keySampleFileName(*project, msl, note),
                                   makeWaveFormat(44100, 2, 16), recording(peaks[m]), error),
                          1)
                    << error;
                TGmsl_key& key = msl.keys[note];
                copyText(key.name, "K");
                key.keyState = 1;
                key.hasAudio = 1;
                key.Note_In = 0;
                key.Note_Out = kFrames - 1;
                key.loopMode = 1;
                key.Loop_In = 1000;
                key.Loop_Out = 2999;
            }
        }
        before = std::make_unique<Project>(*project);
        auto render = services.render;
        services.render = [this, render](const TGmsl_key& key, const KeyAudio& audio,
                                         RenderedKey& out, std::string& error) {
            ++renders;
            return render(key, audio, out, error);
        };
    }
    void TearDown() override
    {
        exportAbortFlag = false;
        setExportProgressCallback({});
    }

    ExportJob job(const char* nameLine, uint32_t settings, bool loopOnly = false)
    {
        ExportJob j;
        j.nameLine = nameLine;
        j.project = project.get();
        j.mslIndices = {0, 1};
        j.settings = settings;
        j.loopOnly = loopOnly;
        return j;
    }

    // Markers and key ranges are what they were before the export moved them.
    void expectMarkersAsBefore()
    {
        const auto markers = [](const Project& p) {
            std::string all;
            for (int m = 0; m < 2; ++m)
                for (const TGmsl_key& k : p.msl[m].keys)
                    all += formatText("%d %d %d %d %d %d|", k.Note_In, k.Note_Out, k.Loop_In,
                                      k.Loop_Out, k.mapLow, k.mapHigh);
            return all;
        };
        EXPECT_EQ(markers(*project), markers(*before));
    }
};

} // namespace

TEST_F(TemplateFormatsInPipeline, QuantumGetsLevelGainsAndLoopOnlyAndTheProjectIsRestored)
{
    // Same rate, depth and channels as recorded; levels adjusted to the loudest layer.
    const uint32_t word = 0x20010101;
    QuantumExporter exporter(*project, {0, 1}, dir.file("card"), word, "Pianos", "Grand");
    ASSERT_EQ(
        runTemplateExport(job("QuantumExporter:\n\n", word, true), exporter, services, message), 1)
        << message;
    EXPECT_EQ(renders, 4);

    WaveFormat format;
    std::vector<uint8_t> soft, hard;
    ASSERT_EQ(readWav(dir.file("card/samples/Pianos/K-00-060.wav"), format, soft, message), 1)
        << message;
    ASSERT_EQ(readWav(dir.file("card/samples/Pianos/K-01-060.wav"), format, hard, message), 1)
        << message;
    // Loop only: the loop's 2000 frames, in the recording's format.
    EXPECT_EQ(format.nChannels, 2);
    EXPECT_EQ(soft.size(), 2000u * 4);
    EXPECT_EQ(hard.size(), 2000u * 4);
    // The soft layer is raised to the hard layer's level.
    EXPECT_NEAR(test::pcm16Peak(soft), test::pcm16Peak(hard), 8);
    EXPECT_GT(test::pcm16Peak(hard), 15000);
    expectMarkersAsBefore(); // the map's lines are CardExport's business
}

TEST_F(TemplateFormatsInPipeline, KronosStereoRendersEachKeyOnceAndSplitsItsChannels)
{
    const uint32_t word = 0x20408; // 44.1 kHz, 16 bit, stereo
    ExportJob j = job("TGexport_KORGKRONOS():\n\n", word);
    j.mslIndices = {1};
    std::vector<double> fractions;
    setExportProgressCallback(
        [&](double fraction, const std::string&) { fractions.push_back(fraction); });
    ASSERT_EQ(runKronosExport(j, dir.path(), 3, services, message), 1) << message;
    EXPECT_EQ(renders, 4); // two keys, each rendered once per channel
    // Progress counts every render, so it climbs steadily to the end.
    EXPECT_EQ(fractions, (std::vector<double>{0.0, 0.25, 0.5, 0.75, 1.0}));

    const std::vector<uint8_t> source = recording(16000);
    for (int channel = 0; channel < 2; ++channel) {
        // KMP 1 is the left channel, KMP 2 the right; samples are numbered across both.
        const std::string ksf = test::readFileBytes(
            dir.file(formatText("Piano03/MS%03d%03d.KSF", channel + 1, channel == 0 ? 1 : 3)));
        ASSERT_GT(ksf.size(), 60u + 2 * kFrames);
        ASSERT_EQ(ksf.compare(40, 4, "SMD1"), 0);
        // The renderer's click fade touches the last frames; the body is the recording.
        for (int i = 0; i < kFrames - 200; i += 97) {
            const int16_t value = int16_t(uint8_t(ksf[60 + 2 * i]) << 8 | uint8_t(ksf[61 + 2 * i]));
            ASSERT_EQ(value, test::pcm16At(source, size_t(2 * i + channel))) << "frame " << i;
        }
    }
    expectMarkersAsBefore();
}
