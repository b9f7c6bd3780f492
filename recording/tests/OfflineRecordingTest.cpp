// A whole recording run bounced offline from the hosted instruments: FluidSynth with the
// General MIDI SoundFont and an LV2 synth from lilv, no audio device involved.
#include "recording/OfflineTakeSource.h"

#include "analysis/PcmSamples.h"
#include "audiofile/WavFile.h"
#include "core/Model.h"
#include "core/Names.h"
#include "recording/ProjectSetup.h"
#include "recording/RecordingRun.h"
#include "tests/support/TempDir.h"
#include "tests/support/ToneAnalysis.h"

#include <gtest/gtest.h>

namespace tg {
namespace {

class OfflineRecording : public ::testing::Test {
  protected:
    // A Project of one Multi-Sample per layer over keys 48..84, every `step`-th key.
    Project& makeProject(int layers, int step, double noteLength, float releaseLength,
                         const char* format = "44.1KHz, Stereo, 16bit")
    {
        ProjectSetupRecord setup;
        setup.name = "Bounce";
        setup.dataPath = dir.path();
        setup.audioInDevice = kPluginDeviceName;
        setup.midiOutDevice = kPluginDeviceName;
        setup.pluginRecording = true;
        setup.sampleFormat = format;
        setup.keyCount = 37;
        setup.velocityLayers = layers;
        setup.keyStep = step;
        setup.noteLength = noteLength;
        setup.releaseLength = releaseLength;
        const Result made = createProjectFromSetup(model, setup);
        EXPECT_TRUE(made.ok()) << made.message;
        return *model.currentProject();
    }

    int run(OfflineTakeSource& source, std::string& msg)
    {
        RunOptions options;
        options.command = kRecordSelectedProject;
        options.recordOnlyEmptyKeys = false;
        options.keepLockedKeys = false;
        return runOfflineRecording(model, options, source, observer, msg);
    }

    // The first channel of a key's WAV file, on the 16-bit scale whatever its width.
    std::vector<double> keySamples(const Project& project, int msl, int note, WaveFormat& format)
    {
        std::vector<uint8_t> data;
        std::string msg;
        EXPECT_EQ(readWav(keySampleFileName(project, project.msl[msl], note), format, data, msg), 1)
            << msg;
        std::vector<double> samples;
        if (format.nBlockAlign == 0)
            return samples;
        const double scale = 32768.0 / (pcm::sampleMax(pcm::bytesPerSample(format)) + 1.0);
        for (int64_t f = 0; f < int64_t(data.size()) / format.nBlockAlign; ++f)
            samples.push_back(pcm::sampleAt(format, data.data(), f, 0) * scale);
        return samples;
    }

    test::TempDir dir;
    Model model;
    RunObserver observer;
};

InstrumentSpec specOf(const std::string& text)
{
    InstrumentSpec choice;
    std::string msg;
    EXPECT_EQ(parseInstrumentSpec(text, choice, msg), 1) << msg;
    return choice;
}

TEST_F(OfflineRecording, SoundFontRunRecordsEveryKeyWithNoteAfterTheLeadIn)
{
    Project& project = makeProject(2, 12, 1.0, 0.5);
    OfflineTakeSource source(specOf("/usr/share/sounds/sf2/FluidR3_GM.sf2?preset=19"));
    std::string msg;
    ASSERT_EQ(run(source, msg), 1) << msg;
    EXPECT_NE(source.description().find("preset 19"), std::string::npos);
    EXPECT_NEAR(source.secondsRendered(), 2 * 4 * 2.0, 1e-3); // 2 layers x keys 48,60,72,84

    for (int msl = 0; msl < project.mslCount; ++msl) {
        for (int note : {48, 60, 72, 84}) {
            const TGmsl_key& key = project.msl[msl].keys[note];
            EXPECT_EQ(key.hasAudio, 1) << note;
            WaveFormat format;
            const std::vector<double> left = keySamples(project, msl, note, format);
            EXPECT_EQ(format.nSamplesPerSec, 44100u);
            EXPECT_EQ(format.nChannels, 2);
            ASSERT_GE(left.size(), size_t(88200)) << note;
            EXPECT_LT(test::peakBetween(left, 0, 22000), 2.0) << "lead-in of " << note;
            // Note_In found by the detection lands at the Note On, half a second in.
            EXPECT_NEAR(key.Note_In, 22050, 600) << note;
            const double hz =
                test::pitchNearNote(left, 22050 + 4410, 22050 + 4410 + 8192, 44100.0, note);
            EXPECT_NEAR(hz / test::noteHz(note), 1.0, 0.005) << note;
        }
        EXPECT_EQ(project.msl[msl].keys[54].hasAudio, 0); // not a step key
    }
    // The layers were played with their own velocities: the upper layer is louder.
    WaveFormat format;
    const double soft = test::rmsBetween(keySamples(project, 0, 60, format), 26460, 44100);
    const double loud = test::rmsBetween(keySamples(project, 1, 60, format), 26460, 44100);
    EXPECT_GT(loud, soft * 1.2) << soft << " vs " << loud;
}

TEST_F(OfflineRecording, Lv2RunRecordsNonSilentTakesAtThePitchOfEachKey)
{
    Project& project = makeProject(1, 18, 0.6, 0.2, "48KHz, Mono, 24bit");
    OfflineTakeSource source(specOf("lv2:http://drobilla.net/plugins/mda/EPiano?random_tuning=0"));
    std::string msg;
    ASSERT_EQ(run(source, msg), 1) << msg;
    for (int note : {48, 66, 84}) {
        WaveFormat format;
        const std::vector<double> samples = keySamples(project, 0, note, format);
        EXPECT_EQ(format.nSamplesPerSec, 48000u);
        EXPECT_EQ(format.wBitsPerSample, 24);
        EXPECT_EQ(format.nChannels, 1);
        // 1.3 s, truncated as the recorder truncates the armed length in float arithmetic.
        ASSERT_NEAR(double(samples.size()), 48000 * 1.3, 1.0) << note;
        EXPECT_GT(test::rmsBetween(samples, 24000, 48000), 100.0) << note;
        const double hz =
            test::pitchNearNote(samples, 24000 + 2400, 24000 + 2400 + 8192, 48000.0, note);
        EXPECT_NEAR(hz / test::noteHz(note), 1.0, 0.01) << note << ": " << hz;
    }
}

} // namespace
} // namespace tg
