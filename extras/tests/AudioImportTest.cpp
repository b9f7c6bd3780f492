// Importing real WAV and AIFF files into a Project: where they land, what their Key-Samples
// hold, layers, conflicts, the one-shot folder import and bad files.
#include "extras/AudioImport.h"

#include "analysis/tests/TestSignals.h"
#include "audiofile/AiffFile.h"
#include "audiofile/WavFile.h"
#include "core/Model.h"
#include "core/Names.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <memory>
#include <tuple>
#include <utility>

namespace tg {
namespace {

const WaveFormat kMono16 = makeWaveFormat(44100, 1, 16);

class AudioImport : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::filesystem::create_directories(dir.file("data"));
        std::filesystem::create_directories(dir.file("in"));
        copyText(model->preferences().AudioInFormat, "44.1KHz, Mono, 16bit");
        ASSERT_TRUE(model->newProject().ok());
        copyText(project().name, "Imp");
        copyText(project().dataPath, dir.file("data").c_str());
        ASSERT_TRUE(model->addMultiSample().ok());
        copyText(project().msl[0].name, "Piano");
    }

    Project& project() { return *model->currentProject(); }

    std::string wav(const std::string& name, const std::vector<uint8_t>& data,
                    const WaveFormat& format = kMono16, const WavLoopInfo* loop = nullptr)
    {
        std::string message;
        EXPECT_TRUE(writeWav(dir.file("in/" + name), format, data, message, loop)) << message;
        return dir.file("in/" + name);
    }

    // Plans and runs an import of `files`; returns the run's result.
    int import(const std::vector<std::string>& files, ConflictPolicy policy,
               ImportRequest request = {}, ConflictQuestion ask = {})
    {
        std::vector<ImportItem> plan;
        EXPECT_TRUE(planImport(project(), files, request, plan, message)) << message;
        ImportRun run;
        run.policy = policy;
        run.ask = std::move(ask);
        return runImport(*model, plan, run, outcome, message);
    }

    std::vector<uint8_t> keyAudio(int msl, int note)
    {
        WaveFormat format;
        std::vector<uint8_t> data;
        std::string why;
        EXPECT_TRUE(
            readWav(keySampleFileName(project(), project().msl[msl], note), format, data, why))
            << why;
        return data;
    }

    test::TempDir dir;
    std::unique_ptr<Model> model = std::make_unique<Model>();
    ImportOutcome outcome;
    std::string message;
    const std::vector<uint8_t> tone = test::makeSine(kMono16, 6000, 9000.0, 100.0);
};

TEST_F(AudioImport, KeysComeFromChunksThenNamesAndAudioIsKeptBitExact)
{
    WavLoopInfo loop{1000, 4999, 70};
    const std::string looped = wav("Strange C1.wav", tone, kMono16, &loop); // chunk beats name
    const std::string named = wav("Piano C#3.wav", tone);
    AiffKeyRecord instrument;
    instrument.baseNote = 50;
    // The writer adds INST only to a looped file.
    ASSERT_TRUE(writeAiff(dir.file("in/bell.aif"), kMono16, tone.data(), int32_t(tone.size()), 1000,
                          4999, instrument, message))
        << message;

    ASSERT_TRUE(import({looped, named, dir.file("in/bell.aif")}, ConflictPolicy::Refuse))
        << message;
    EXPECT_EQ(outcome.imported, 3);
    for (int note : {70, 49, 50}) {
        const TGmsl_key& key = project().msl[0].keys[note];
        EXPECT_EQ(key.keyState, 1);
        EXPECT_EQ(key.hasAudio, 1);
        EXPECT_EQ(keyAudio(0, note), tone) << note;
    }
    const TGmsl_key& key = project().msl[0].keys[70];
    // Looped as the chunk says, without a crossfade, the note running to the last frame.
    EXPECT_EQ(
        std::make_tuple(int{key.loopMode}, key.Loop_In, key.Loop_Out, key.xfadeLen, key.Note_Out),
        std::make_tuple(1, 1000, 4999, 0, 5999));
    EXPECT_STREQ(key.name, "Strange C1");
    EXPECT_EQ(project().msl[0].keys[49].loopMode, 0);
}

TEST_F(AudioImport, OtherRatesAreResampledWithTheirLoop)
{
    // A 441 Hz sine at 48 kHz, looped over whole periods, into a 44.1 kHz Multi-Sample.
    const WaveFormat stereo48 = makeWaveFormat(48000, 2, 24);
    const double period48 = 48000.0 / 441.0;
    const std::vector<uint8_t> source = test::makeSine(stereo48, 48000, 3000000.0, period48);
    WavLoopInfo loop{9600, 38399, 60};
    ASSERT_TRUE(import({wav("Tone.wav", source, stereo48, &loop)}, ConflictPolicy::Refuse))
        << message;

    const TGmsl_key& key = project().msl[0].keys[60];
    EXPECT_NEAR(key.Loop_In, 8820, 2);
    EXPECT_NEAR(key.Loop_Out, 35279, 2);
    EXPECT_EQ(key.Note_Out, 44099);
    const std::vector<uint8_t> audio = keyAudio(0, 60);
    ASSERT_EQ(audio.size(), 44100u * 2);
    // Against the ideal tone (both channels mixed, so the phase shift of the right one counts):
    // the band-limited resampler keeps the error 60 dB below the signal away from the ends.
    double signal = 0, error = 0;
    for (int64_t f = 1000; f < 43000; ++f) {
        const double phase = 2.0 * M_PI * f / 100.0;
        const double ideal = 3000000.0 / 256.0 * (std::sin(phase) + std::sin(phase + 0.7)) / 2;
        const double got = test::sampleOf(kMono16, audio, f, 0);
        signal += ideal * ideal;
        error += (got - ideal) * (got - ideal);
    }
    EXPECT_GT(10.0 * std::log10(signal / error), 60.0);
}

TEST_F(AudioImport, FilesWithoutMarkersAreAutoNoted)
{
    // Half a second of silence, then the note.
    const std::vector<uint8_t> late = test::makeSignal(kMono16, 44100, [](int64_t f, int) {
        return f < 22050 ? 0 : int32_t(12000 * std::sin(f * 0.05));
    });
    ASSERT_TRUE(import({wav("Late 72.wav", late)}, ConflictPolicy::Refuse)) << message;
    const TGmsl_key& key = project().msl[0].keys[72];
    EXPECT_NEAR(key.Note_In, 22050, 10);
    EXPECT_GT(key.Note_Out, 44000);
}

TEST_F(AudioImport, OccupiedKeysAreRefusedSkippedReplacedOrAsked)
{
    const std::string first = wav("A 60.wav", tone);
    ASSERT_TRUE(import({first}, ConflictPolicy::Refuse));
    const std::vector<uint8_t> other = test::makeSine(kMono16, 3000, 5000.0, 50.0);
    const std::string second = wav("B 60.wav", other);

    EXPECT_FALSE(import({second}, ConflictPolicy::Refuse));
    EXPECT_EQ(message, "Key C4 (60) of the Multi-Sample \"Piano\" already holds a Key-Sample; "
                       "choose whether to replace or to skip such keys.");
    ASSERT_TRUE(import({second}, ConflictPolicy::Skip));
    EXPECT_EQ(outcome.skipped, 1);
    EXPECT_EQ(keyAudio(0, 60), tone);

    int asked = 0;
    ASSERT_TRUE(import({second}, ConflictPolicy::Ask, {}, [&](const ImportItem& item) {
        ++asked;
        EXPECT_EQ(item.note, 60);
        return ConflictAnswer::Cancel;
    }));
    EXPECT_TRUE(outcome.cancelled);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(keyAudio(0, 60), tone);

    ASSERT_TRUE(import({second}, ConflictPolicy::Replace));
    EXPECT_EQ(keyAudio(0, 60), other);
    EXPECT_STREQ(project().msl[0].keys[60].name, "B 60");
}

TEST_F(AudioImport, LayerTagsFillAndAddVelocityLayers)
{
    ASSERT_TRUE(
        import({wav("Pad C3 v1.wav", tone), wav("Pad C3 v2.wav", tone), wav("Pad D3 v3.wav", tone)},
               ConflictPolicy::Refuse))
        << message;
    ASSERT_EQ(project().mslCount, 3);
    EXPECT_EQ(outcome.layersAdded, 2);
    EXPECT_STREQ(project().msl[1].name, "Piano-1");
    EXPECT_STREQ(project().msl[2].name, "Piano-2");
    EXPECT_EQ(project().msl[0].range_end, 41);
    EXPECT_EQ(project().msl[2].range_start, 85);
    const TGmsl* msl = project().msl;
    EXPECT_EQ(std::make_tuple(msl[0].keys[48].hasAudio, msl[1].keys[48].hasAudio,
                              msl[2].keys[50].hasAudio, msl[2].keys[48].hasAudio),
              std::make_tuple(1, 1, 1, 0));
}

TEST_F(AudioImport, PlansThatCannotRunAreRefusedBeforeAnythingIsWritten)
{
    std::vector<ImportItem> plan;
    const std::string nameless = wav("Texture.wav", tone);
    ASSERT_TRUE(planImport(project(), {nameless}, {}, plan, message));
    EXPECT_EQ(plan[0].source, KeySource::Unknown);
    EXPECT_FALSE(checkImportPlan(project(), plan, message));
    EXPECT_NE(message.find("No key was found for"), std::string::npos);

    ImportRequest request;
    request.firstChosenKey = 36;
    EXPECT_FALSE(import({nameless, wav("Other.wav", tone), wav("Twin C2.wav", tone)},
                        ConflictPolicy::Replace, request));
    EXPECT_NE(message.find("would both become key C2 (36) of layer 1"), std::string::npos)
        << message;

    test::writeFileBytes(dir.file("in/Notes C4.wav"), "this is text, not audio");
    EXPECT_FALSE(planImport(project(), {dir.file("in/Notes C4.wav")}, {}, plan, message));
    EXPECT_NE(message.find("is neither a WAV nor an AIFF file"), std::string::npos) << message;
    EXPECT_TRUE(std::filesystem::is_empty(dir.file("data")));
}

TEST_F(AudioImport, SoundLibraryFolderBecomesOneMultiSampleKeyByKey)
{
    std::filesystem::create_directories(dir.file("in/Drums"));
    for (const char* name : {"Kick 10.wav", "Kick 2.wav", "Kick 1.wav"})
        wav(std::string("Drums/") + name, tone);
    test::writeFileBytes(dir.file("in/Drums/readme.txt"), "not a sample");
    ImportRun run;
    ASSERT_TRUE(importSoundLibrary(*model, dir.file("in/Drums/"), 36, run, outcome, message))
        << message;
    ASSERT_EQ(project().mslCount, 2);
    const TGmsl& drums = project().msl[1];
    EXPECT_STREQ(drums.name, "Drums");
    EXPECT_STREQ(drums.keys[36].name, "Kick 1");
    EXPECT_STREQ(drums.keys[37].name, "Kick 2");
    EXPECT_STREQ(drums.keys[38].name, "Kick 10");
    EXPECT_EQ(drums.keys[39].hasAudio, 0);

    EXPECT_FALSE(importSoundLibrary(*model, dir.file("in/Drums"), 126, run, outcome, message));
    EXPECT_EQ(message, "The folder holds 3 samples, but only 2 keys lie from F#9 to G9.");
}

} // namespace
} // namespace tg
