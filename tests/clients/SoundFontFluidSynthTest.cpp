// Banks from the SoundFont 2 export played by FluidSynth: pitch, key zones, rate, a note without
// a loop.
#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "core/Names.h"
#include "export/ExportAudioServices.h"
#include "export/ExportSoundFont2.h"
#include "tests/support/Pcm16.h"
#include "tests/support/TempDir.h"
#include "tests/support/ToneAnalysis.h"

#include <fluidsynth.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace {

constexpr int kRate = 44100;
constexpr int kFrames = 66150;    // 1.5 s per Key-Sample
constexpr int kLoopStart = 22050; // the last second is the loop
constexpr int kLoopEnd = kFrames - 1;
constexpr double kPi = 3.14159265358979323846;

// A whole number of cycles per second, so the one-second loop joins without a click.
double loopableFrequency(int note)
{
    return std::round(tg::test::noteHz(note));
}

// Writes a synthetic mono Key-Sample file: a sine at the key's own pitch.
void writeTone(const tg::Project& p, int note, double amplitude)
{
    const double f = loopableFrequency(note);
    const auto data = tg::test::pcm16(kFrames, 1, [&](size_t i, int) {
        return int16_t(
            std::lround(amplitude * 32767.0 * std::sin(2 * kPi * f * double(i) / kRate)));
    });
    std::string message;
    ASSERT_EQ(tg::writeWav(tg::keySampleFileName(p, p.msl[0], note),
                           tg::makeWaveFormat(kRate, 1, 16), data, message),
              1)
        << message;
}

class FluidPlayer {
  public:
    explicit FluidPlayer(const std::string& bank)
    {
        settings_ = new_fluid_settings();
        fluid_settings_setnum(settings_, "synth.sample-rate", kRate);
        fluid_settings_setint(settings_, "synth.reverb.active", 0);
        fluid_settings_setint(settings_, "synth.chorus.active", 0);
        fluid_settings_setnum(settings_, "synth.gain", 0.5);
        synth_ = new_fluid_synth(settings_);
        fontId_ = fluid_synth_sfload(synth_, bank.c_str(), 1);
    }
    ~FluidPlayer()
    {
        delete_fluid_synth(synth_);
        delete_fluid_settings(settings_);
    }
    bool loaded() const { return fontId_ != FLUID_FAILED; }

    // The left output while `key` is held for `seconds`.
    std::vector<double> play(int key, double seconds)
    {
        const int frames = int(seconds * kRate);
        std::vector<float> left(frames), right(frames);
        fluid_synth_program_select(synth_, 0, fontId_, 0, 0);
        fluid_synth_noteon(synth_, 0, key, 127);
        fluid_synth_write_float(synth_, frames, left.data(), 0, 1, right.data(), 0, 1);
        fluid_synth_noteoff(synth_, 0, key);
        const std::vector<double> heard(left.begin(), left.end());
        // Let the release finish so the next note starts from silence.
        left.resize(kRate);
        right.resize(kRate);
        fluid_synth_write_float(synth_, kRate, left.data(), 0, 1, right.data(), 0, 1);
        return heard;
    }

  private:
    fluid_settings_t* settings_ = nullptr;
    fluid_synth_t* synth_ = nullptr;
    int fontId_ = FLUID_FAILED;
};

// Level of a window given in seconds.
double rms(const std::vector<double>& x, double from, double to)
{
    return tg::test::rmsBetween(x, int64_t(from * kRate), int64_t(to * kRate));
}

// The pitch of `key` within 1 % (a sixth of a semitone) from 0.3 s to 0.9 s.
void expectPitchOf(int key, const std::vector<double>& x)
{
    const double hz =
        tg::test::crossingPitchHz(x, int64_t(0.3 * kRate), int64_t(0.9 * kRate), kRate);
    EXPECT_NEAR(hz, tg::test::noteHz(key), tg::test::noteHz(key) * 0.01) << "key " << key;
}

class SoundFontInFluidSynth : public ::testing::Test {
  protected:
    std::unique_ptr<tg::Project> project = std::make_unique<tg::Project>();
    tg::test::TempDir dir;
    tg::ExportServices services = tg::defaultExportServices();

    void SetUp() override
    {
        tg::copyText(project->name, "Tones");
        tg::copyText(project->dataPath, dir.path().c_str());
        project->mslCount = 1;
        tg::TGmsl& msl = project->msl[0];
        tg::copyText(msl.name, "Sine");
        msl.KBrangeIn = 36;
        msl.KBrangeOut = 96;
        msl.range_start = 0;
        msl.range_end = 127;
        for (int note : {48, 60, 72}) {
            tg::TGmsl_key& key = msl.keys[note];
            key = tg::makeNewKey(note);
            key.keyState = 1;
            key.hasAudio = 1;
            key.Note_In = 0;
            key.Note_Out = kFrames - 1;
            key.loopMode = 1;
            key.Loop_In = kLoopStart;
            key.Loop_Out = kLoopEnd;
        }
        writeTone(*project, 48, 0.5);
        writeTone(*project, 60, 0.25);
        writeTone(*project, 72, 0.4);
    }

    // The exported bank loaded into FluidSynth. Default rate 44.1 kHz; 16 Bit, channels as
    // recorded; tail kept, levels untouched.
    std::unique_ptr<FluidPlayer> exportBank(const std::string& name, uint32_t frequency = 0x08)
    {
        std::string message;
        const uint32_t settings = frequency | 0x400 | 0x10000 | 0x1000000 | 0x10000000 | 0x40000000;
        EXPECT_EQ(tg::TGexport_SoundFont2(dir.path(), name, "sf2", project.get(), {0}, settings,
                                          message, services),
                  1)
            << message;
        auto player = std::make_unique<FluidPlayer>(dir.file(name + ".sf2"));
        EXPECT_TRUE(player->loaded()) << name;
        return player;
    }
};

} // namespace

// Loops held for a long time and stereo pairs kept apart are heard with real recordings in
// tests/e2e (HeldLoops); here each key's pitch, the choice between Key-Samples, the bank's rate
// and a note without a loop.
TEST_F(SoundFontInFluidSynth, EachKeySoundsAtItsPitchFromTheNearerKeySample)
{
    const auto player = exportBank("keys");
    for (int key : {36, 48, 60, 66})
        expectPitchOf(key, player->play(key, 1.0));
    // 53 lies nearer 48 (amplitude 0.5), 57 nearer 60 (amplitude 0.25).
    const std::vector<double> low = player->play(53, 1.0);
    const std::vector<double> high = player->play(57, 1.0);
    expectPitchOf(53, low);
    expectPitchOf(57, high);
    EXPECT_NEAR(rms(low, 0.3, 0.9) / rms(high, 0.3, 0.9), 2.0, 0.1);
}

TEST_F(SoundFontInFluidSynth, ConvertedRateIsTheSampleRateOfTheBank)
{
    // Resampled to 48 kHz (high quality), played at 44.1 kHz: the pitch stays only when the
    // bank states the new rate.
    const auto player = exportBank("rate", 0x10);
    expectPitchOf(60, player->play(60, 1.0));
}

TEST_F(SoundFontInFluidSynth, WithoutLoopTheNoteEndsWithItsSample)
{
    project->msl[0].keys[60].loopMode = 0;
    const auto player = exportBank("noloop");
    const std::vector<double> heard = player->play(60, 4.0); // the sample lasts 1.5 s
    const double early = rms(heard, 0.5, 1.0);
    ASSERT_GT(early, 0.01);
    EXPECT_LT(rms(heard, 3.0, 3.5), early * 0.01);
}
