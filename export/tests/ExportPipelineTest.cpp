// The pipeline's own logic (working copy, trimming, loop-only, levels, abort, progress) with
// simple in-memory audio services; the real reader, renderer and converter are exercised
// by the exporters' end-to-end tests.
#include "export/ExportPipeline.h"

#include "core/Message.h"
#include "export/ExportProgress.h"
#include "export/KeySampleFile.h"
#include "export/tests/MemoryAudio.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using tg::ExportedKey;
using tg::KeyAudio;
using tg::test::MemoryAudio;

struct Written {
    int ordinal, note;
    int32_t noteIn, noteOut;
    size_t bytes;
    int16_t peak;
};

class RecordingSink : public tg::ExportSink {
  public:
    std::vector<Written> keys;
    std::vector<int> begun;
    int abortAfter = -1; // abort flag set after this many keys
    bool finished = false;

    int beginMultiSample(const tg::TGmsl&, int ordinal, std::string&) override
    {
        begun.push_back(ordinal);
        return 1;
    }
    int writeKey(const ExportedKey& key, std::string&) override
    {
        keys.push_back({key.ordinal, key.note, key.key->Note_In, key.key->Note_Out,
                        key.audio.note.size(),
                        int16_t(std::min(tg::test::pcm16Peak(key.audio.note), 32767))});
        if (int(keys.size()) == abortAfter)
            tg::exportAbortFlag = true;
        return 1;
    }
    int finish(std::string&) override
    {
        finished = true;
        return 1;
    }
};

class ExportPipeline : public ::testing::Test {
  protected:
    std::unique_ptr<tg::Project> project = std::make_unique<tg::Project>();
    MemoryAudio audio;
    RecordingSink sink;
    std::string message;

    void SetUp() override
    {
        tg::exportAbortFlag = false;
        tg::copyText(project->name, "Piano");
        tg::copyText(project->dataPath, "/data");
        project->mslCount = 3;
        const int16_t peaks[3] = {8000, 16000, 4000};
        const int32_t velocityHigh[3] = {64, 127, 127};
        for (int m = 0; m < 3; ++m) {
            tg::TGmsl& msl = project->msl[m];
            tg::copyText(msl.name, m == 0 ? "Soft" : m == 1 ? "Hard" : "Pad");
            msl.range_end = velocityHigh[m];
            msl.KBrangeIn = 60;
            msl.KBrangeOut = 64;
            for (int note : {60, 62, 64}) {
                tg::TGmsl_key& key = msl.keys[note];
                key = tg::makeNewKey(note);
                key.keyState = 1;
                key.hasAudio = 1;
                key.Note_In = 10;
                key.Note_Out = 999;
                key.Loop_In = 400;
                key.Loop_Out = 599;
                key.loopMode = 1;
                audio.add(*project, m, note, 1000, int16_t(peaks[m] + note));
            }
        }
        project->msl[2].mapTo = 1; // no velocity range
    }
    void TearDown() override
    {
        tg::exportAbortFlag = false;
        tg::setExportProgressCallback({});
    }

    tg::ExportJob job(uint32_t settings, bool loopOnly = false)
    {
        tg::ExportJob j;
        j.nameLine = "TGexport_Test():\n\n";
        j.project = project.get();
        j.mslIndices = {0, 1, 2};
        j.settings = settings;
        j.loopOnly = loopOnly;
        return j;
    }

    void expectMarkersUnchanged()
    {
        for (int m = 0; m < 3; ++m)
            for (int note : {60, 62, 64}) {
                const tg::TGmsl_key& key = project->msl[m].keys[note];
                EXPECT_EQ(key.Note_In, 10);
                EXPECT_EQ(key.Note_Out, 999);
                EXPECT_EQ(key.Loop_In, 400);
                EXPECT_EQ(key.Loop_Out, 599);
            }
    }
};

constexpr uint32_t kPlain = 0x10408 | 0x1000000 | 0x10000000 | 0x40000000;
constexpr uint32_t kTrim = 0x10408 | 0x1000000 | 0x10000000 | 0x80000000;
constexpr uint32_t kLevels = 0x10408 | 0x1000000 | 0x20000000 | 0x40000000;

} // namespace

TEST_F(ExportPipeline, VisitsSelectedLayersInOrderAndRestoresTrimmedMarkers)
{
    auto j = job(kTrim);
    j.mslIndices = {1, 0};
    ASSERT_EQ(tg::runExportPipeline(j, audio.services(), sink, message), 1) << message;
    ASSERT_EQ(sink.keys.size(), 6u);
    EXPECT_EQ(sink.begun, (std::vector<int>{0, 1}));
    EXPECT_EQ(sink.keys[0].ordinal, 0);
    EXPECT_EQ(sink.keys[0].note, 60);
    EXPECT_EQ(sink.keys[5].ordinal, 1);
    EXPECT_EQ(sink.keys[5].note, 64);
    // During the export the note ends 16 frames after the loop, without the trim bits at its
    // own end.
    EXPECT_EQ(sink.keys[0].noteOut, 615);
    EXPECT_TRUE(sink.finished);
    expectMarkersUnchanged();
    RecordingSink plain;
    ASSERT_EQ(tg::runExportPipeline(job(kPlain), audio.services(), plain, message), 1) << message;
    EXPECT_EQ(plain.keys[0].noteOut, 999);
}

TEST_F(ExportPipeline, LoopOnlyUsesTheLoopWhenItIsUsable)
{
    project->msl[0].keys[62].Loop_Out = 405; // 5 frames: too short
    project->msl[0].keys[64].Loop_In = 5;    // starts before the note
    auto j = job(kPlain, true);
    j.mslIndices = {0};
    ASSERT_EQ(tg::runExportPipeline(j, audio.services(), sink, message), 1) << message;
    ASSERT_EQ(sink.keys.size(), 3u);
    EXPECT_EQ(sink.keys[0].noteIn, 400);
    EXPECT_EQ(sink.keys[0].noteOut, 599);
    EXPECT_EQ(sink.keys[1].noteIn, 10);
    EXPECT_EQ(sink.keys[1].noteOut, 999);
    EXPECT_EQ(sink.keys[2].noteIn, 10);
    EXPECT_EQ(project->msl[0].keys[60].Note_In, 10);
}

TEST_F(ExportPipeline, LevelsFollowTheLayerWithTheHighestVelocity)
{
    ASSERT_EQ(tg::runExportPipeline(job(kLevels), audio.services(), sink, message), 1) << message;
    ASSERT_EQ(sink.keys.size(), 9u);
    // Reference "Hard": its loudest key peaks at 16064. "Soft" keys are raised to it,
    // "Hard" keys keep their own level, the no-velocity "Pad" layer is left alone.
    EXPECT_NEAR(sink.keys[0].peak, 16064, 1);
    EXPECT_NEAR(sink.keys[2].peak, 16064, 1);
    EXPECT_EQ(sink.keys[3].peak, 16060);
    EXPECT_EQ(sink.keys[5].peak, 16064);
    EXPECT_EQ(sink.keys[6].peak, 4060);
}

TEST_F(ExportPipeline, OnAVelocityTieTheFirstLayerLeadsAndASilentKeyKeepsGainOne)
{
    project->msl[0].range_end = 127; // ties with "Hard"
    auto& silent = audio.files[tg::keySampleFilePath(*project, project->msl[0], 62)].data;
    std::fill(silent.begin(), silent.end(), 0);
    ASSERT_EQ(tg::runExportPipeline(job(kLevels), audio.services(), sink, message), 1) << message;
    EXPECT_EQ(sink.keys[0].peak, 8060);      // reference: unchanged
    EXPECT_EQ(sink.keys[1].peak, 0);         // nothing to divide by
    EXPECT_NEAR(sink.keys[3].peak, 8064, 1); // "Hard" is lowered to "Soft"'s loudest key
}

TEST_F(ExportPipeline, UnreadableFileDuringLevelAnalysisAborts)
{
    audio.files.erase(tg::keySampleFilePath(*project, project->msl[1], 62));
    EXPECT_EQ(tg::runExportPipeline(job(kLevels | 0x80000000), audio.services(), sink, message), 0);
    EXPECT_EQ(message, "TGexport_Test():\n\nExport aborted.");
    EXPECT_TRUE(sink.keys.empty());
    expectMarkersUnchanged();
}

// A failing writer during a trimmed loop-only export: ExportedSamples.FullDiskLeavesTheProject
// AsItWas (tests/clients) on a real full disk. A failing render: the render-ahead test below.
TEST_F(ExportPipeline, ConvertFailureCarriesItsMessage)
{
    EXPECT_EQ(tg::runExportPipeline(job(0x20410), audio.services(), sink, message), 0);
    EXPECT_EQ(message, "TGexport_Test():\n\nconvert sample error: unsupported in this test");
}

TEST_F(ExportPipeline, ConverterGetsTargetFormatChannelAndResamplingChoice)
{
    struct Call {
        tg::WaveFormat to;
        tg::ChannelMode channels;
        tg::ResampleMode resampling;
        bool withLoop;
    };
    std::vector<Call> calls;
    tg::ExportServices services = audio.services();
    services.convert = [&](std::vector<uint8_t>&, const tg::WaveFormat&, const tg::WaveFormat& to,
                           int32_t* loopStart, int32_t*, tg::ChannelMode channels,
                           tg::ResampleMode resampling, std::string&) {
        calls.push_back({to, channels, resampling, loopStart != nullptr});
        return 1;
    };
    project->msl[0].keys[60].releaseOn = 1; // this key also has a release part to convert
    auto j = job(0x40000000 | 0x10000000 | 0x2000000 | 0x100000 | 0x800 | 0x04);
    j.mslIndices = {0};
    ASSERT_EQ(tg::runExportPipeline(j, services, sink, message), 1) << message;
    ASSERT_EQ(calls.size(), 4u); // note and release of key 60, notes of 62 and 64
    EXPECT_EQ(calls[0].to.nSamplesPerSec, 22050u);
    EXPECT_EQ(calls[0].to.wBitsPerSample, 24);
    EXPECT_EQ(calls[0].to.nChannels, 1);
    EXPECT_EQ(calls[0].channels, tg::ChannelMode::Right);
    EXPECT_EQ(calls[0].resampling, tg::ResampleMode::HighQuality);
    EXPECT_TRUE(calls[0].withLoop);
    EXPECT_FALSE(calls[1].withLoop); // the release part has no loop
    EXPECT_EQ(calls[3].resampling, tg::ResampleMode::HighQuality);
}

TEST_F(ExportPipeline, ProgressTextsNameLayerAndKey)
{
    std::vector<std::pair<double, std::string>> reports;
    tg::setExportProgressCallback(
        [&](double fraction, const std::string& text) { reports.emplace_back(fraction, text); });
    auto j = job(kLevels);
    j.mslIndices = {1};
    ASSERT_EQ(tg::runExportPipeline(j, audio.services(), sink, message), 1) << message;
    ASSERT_GE(reports.size(), 6u);
    EXPECT_EQ(reports[0].second, "Analyzing Levels of Key-Samples.");
    EXPECT_EQ(
        reports[3].second,
        "Working on Multisample \"Hard\" (1 of 3)\r\n\r\nRendering and writing Key 60 (\"C4\")");
    EXPECT_DOUBLE_EQ(reports[4].first, 1.0 / 3.0);
}

TEST_F(ExportPipeline, MissingPartsAndBadSelectionsAreRefused)
{
    auto j = job(kPlain);
    j.project = nullptr;
    EXPECT_EQ(tg::runExportPipeline(j, audio.services(), sink, message), 0);
    EXPECT_EQ(message, "TGexport_Test():\n\nillegal pointer (==NULL)");
    j = job(kPlain);
    j.mslIndices = {0, 3};
    EXPECT_EQ(tg::runExportPipeline(j, audio.services(), sink, message), 0);
    EXPECT_EQ(message, "TGexport_Test():\n\nillegal Multi-Sample index 3");
}

// Workers rendering ahead must change nothing the writer sees: same keys, markers, audio and
// gains in the same order, with the same progress reports.
TEST_F(ExportPipeline, RenderingAheadOnWorkersWritesWhatOneThreadWrites)
{
    for (const bool loopOnly : {false, true}) {
        std::vector<Written> written[2];
        std::vector<std::string> progress[2];
        for (int pass = 0; pass < 2; ++pass) {
            RecordingSink out;
            tg::setExportProgressCallback(
                [&](double, const std::string& text) { progress[pass].push_back(text); });
            auto j = job(kLevels, loopOnly);
            j.renderThreads = pass == 0 ? 1 : 3;
            ASSERT_EQ(tg::runExportPipeline(j, audio.services(), out, message), 1) << message;
            written[pass] = out.keys;
        }
        ASSERT_EQ(written[0].size(), 9u);
        ASSERT_EQ(written[1].size(), written[0].size());
        for (size_t i = 0; i < written[0].size(); ++i) {
            const Written& a = written[0][i];
            const Written& b = written[1][i];
            EXPECT_EQ(std::tie(a.ordinal, a.note, a.noteIn, a.noteOut, a.bytes, a.peak),
                      std::tie(b.ordinal, b.note, b.noteIn, b.noteOut, b.bytes, b.peak))
                << "key " << i << (loopOnly ? " loop only" : "");
        }
        EXPECT_EQ(progress[0], progress[1]);
        expectMarkersUnchanged();
    }
}

TEST_F(ExportPipeline, AbortAndFailuresWhileRenderingAheadStopAtTheirKey)
{
    sink.abortAfter = 2;
    auto j = job(kLevels);
    j.renderThreads = 3;
    EXPECT_EQ(tg::runExportPipeline(j, audio.services(), sink, message), 0);
    EXPECT_EQ(message, "TGexport_Test():\n\nExport aborted.");
    EXPECT_EQ(sink.keys.size(), 2u);
    expectMarkersUnchanged();

    tg::exportAbortFlag = false;
    RecordingSink second;
    project->msl[0].keys[62].Note_Out = 5000; // beyond the recording: rendering fails
    EXPECT_EQ(tg::runExportPipeline(j, audio.services(), second, message), 0);
    EXPECT_EQ(message, "TGexport_Test():\n\nthe note's length is equal 0");
    EXPECT_EQ(second.keys.size(), 1u); // key 60 was written, nothing after the failing key
    EXPECT_EQ(project->msl[0].keys[62].Note_Out, 5000); // the user's marker, however odd
}
