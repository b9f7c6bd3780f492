// Loading a Key-Sample's audio through the model's operation, and the silence markers of old
// project files placed with the rate of real WAV files.
#include "audiofile/KeySampleAudio.h"
#include "audiofile/WavFile.h"
#include "audiofile/tests/TestAudio.h"
#include "core/Model.h"
#include "core/Names.h"
#include "core/tests/ProjectFileBuilder.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

class KeySampleAudio : public ::testing::Test {
  protected:
    tg::test::TempDir dir;
    std::unique_ptr<tg::Project> project = std::make_unique<tg::Project>();

    void SetUp() override
    {
        tg::copyText(project->name, "Piano");
        tg::copyText(project->dataPath, dir.path().c_str());
        project->mslCount = 1;
        tg::copyText(project->msl[0].name, "Soft");
    }
    std::string path(int note) { return tg::keySampleFileName(*project, project->msl[0], note); }
};

TEST_F(KeySampleAudio, ReadsTheKeysWavFileAndMarksTheKey)
{
    const tg::WaveFormat format = tg::makeWaveFormat(48000, 2, 24);
    const std::vector<uint8_t> written = tg::test::noise(6 * 100, 7);
    std::string message;
    ASSERT_TRUE(tg::writeWav(path(64), format, written, message)) << message;

    tg::WaveFormat read;
    std::vector<uint8_t> data;
    const tg::Result result = tg::loadKeySampleAudio(*project, project->msl[0], 64, read, data);
    ASSERT_TRUE(result.ok()) << result.message;
    EXPECT_EQ(data, written);
    EXPECT_EQ(tg::test::describeFormat(read), tg::test::describeFormat(format));
    EXPECT_EQ(project->msl[0].keys[64].hasAudio, 1);
}

TEST_F(KeySampleAudio, FailuresLeaveTheKeyWithoutAudioAndSayWhy)
{
    tg::WaveFormat format;
    std::vector<uint8_t> data;
    project->msl[0].keys[60].hasAudio = 1;
    tg::Result result = tg::loadKeySampleAudio(*project, project->msl[0], 60, format, data);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.message, "Sample file '" + path(60) + "' could not be found.");
    EXPECT_EQ(project->msl[0].keys[60].hasAudio, 0);

    // A file that is not a WAV file: the reader's own message is passed on.
    ASSERT_TRUE(tg::test::writeFileBytes(path(61), "RIFF\x04\0\0\0JUNK"));
    std::string readerMessage;
    std::vector<uint8_t> ignored;
    ASSERT_FALSE(tg::readWav(path(61), format, ignored, readerMessage));
    result = tg::loadKeySampleAudio(*project, project->msl[0], 61, format, data);
    EXPECT_EQ(result.message,
              "Error reading sample file '" + path(61) + "'. Error: " + readerMessage);
    EXPECT_TRUE(data.empty());

    // A data chunk too large to hold in memory.
    tg::test::RiffBuilder riff;
    riff.chunk("fmt ", tg::test::fmtBody(tg::makeWaveFormat(44100, 1, 16)));
    std::string body = riff.bytes() + "data";
    tg::test::RiffBuilder::appendU32(body, 0xFFFFFFF0u);
    ASSERT_TRUE(tg::test::writeFileBytes(path(62), body + std::string(16, '\0')));
    result = tg::loadKeySampleAudio(*project, project->msl[0], 62, format, data);
    EXPECT_EQ(result.message, "Unable to allcate memory.");
    EXPECT_EQ(project->msl[0].keys[62].hasAudio, 0);
}

TEST(OldProjectSilence, SecondsArePlacedWithTheRateOfTheKeysRecording)
{
    tg::test::TempDir dir;
    tg::test::ProjectFileBuilder b(2000);
    b.header("Old", dir.path(), 1);
    tg::test::StoredMultiSample m;
    m.key.oldSilenceSeconds = 1.3f; // stored as a 32-bit float: 1.29999995...
    b.multiSample(m);
    ASSERT_TRUE(tg::test::writeFileBytes(dir.file("Old.TGprj"), b.text()));
    std::string message;
    ASSERT_TRUE(tg::writeWav(dir.file("Old - Layer - 060 - C4.wav"),
                             tg::makeWaveFormat(48000, 1, 16), std::vector<uint8_t>(200, 0),
                             message));

    tg::Model model;
    tg::ProjectLoadOptions options;
    options.wavRate = tg::wavFileRateReader();
    tg::ProjectLoadOutcome outcome;
    ASSERT_TRUE(tg::loadProjects(model, dir.path(), {"Old.TGprj"}, options, outcome, message))
        << message;
    const tg::TGmsl& msl = model.project(0).msl[0];
    EXPECT_EQ(msl.keys[60].Silence_In, 15599);  // 1.3 s × 0.25 × 48000, integer part
    EXPECT_EQ(msl.keys[60].Silence_Out, 49919); // 1.3 s × 0.8 × 48000, integer part
    EXPECT_EQ(msl.keys[60].hasAudio, 1);
    EXPECT_EQ(msl.keys[59].Silence_In, 0); // no recording: nothing to place the time with
    EXPECT_EQ(msl.keys[59].Silence_Out, 0);
}

} // namespace
