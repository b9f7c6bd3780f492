// Loops as a musician hears them: sustained General MIDI presets sampled offline through the
// hosted instrument, auto-noted, auto-looped and exported as SoundFont 2, then held by
// FluidSynth for several times the sample's length. Every sounding key must hold (it has a
// loop and still sounds at the end), no wrap of the loop may click, and the two channels
// must come back apart, each its own channel of the take. A wrap clicks when its seam step,
// the part of its step that the audio does not take itself where it first enters the loop,
// passes the loop click rule (a whole step may: a square wave's own edge at the loop start).
#include "analysis/KeySampleFile.h"
#include "analysis/PcmSamples.h"
#include "analysis/Renderer.h"
#include "audiofile/WavFile.h"
#include "core/Names.h"
#include "tests/e2e/LoopWraps.h"
#include "tests/e2e/SampledSoundFont.h"
#include "tests/support/Pcm16.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

namespace tg::test {
namespace {

constexpr const char* kFont = kGeneralMidiFont;
constexpr int32_t kRate = 44100;
constexpr double kHoldSeconds = 6.0; // three times the sampled note

// Channel `channel` of interleaved 16-bit stereo frames.
std::vector<double> channelOf(const std::vector<uint8_t>& bytes, int channel)
{
    std::vector<double> out(bytes.size() / 4);
    for (size_t i = 0; i < out.size(); ++i)
        out[i] = pcm16At(bytes, 2 * i + size_t(channel));
    return out;
}

double energy(const std::vector<double>& x, int64_t from, int64_t count)
{
    double sum = 0.0;
    for (int64_t i = 0; i < count; ++i)
        sum += x[size_t(from + i)] * x[size_t(from + i)];
    return sum;
}

// Where the rendered note starts in the held output and at what gain: the offset whose
// stretch of output correlates best with the note, searched around Note On.
struct Alignment {
    int64_t offset = -1;
    double gain = 0.0;
    double correlation = 0.0;
};

Alignment align(const std::vector<double>& played, const std::vector<double>& note, int64_t noteOn)
{
    const int64_t from = std::min<int64_t>(2000, int64_t(note.size()) / 4);
    const int64_t count = std::min<int64_t>(4096, int64_t(note.size()) - from);
    const double noteEnergy = energy(note, from, count);
    Alignment best;
    for (int64_t d = noteOn - 64; d < noteOn + 2048; ++d) {
        double cross = 0.0;
        for (int64_t i = 0; i < count; ++i)
            cross += played[size_t(d + from + i)] * note[size_t(from + i)];
        const double playedEnergy = energy(played, d + from, count);
        const double correlation = playedEnergy > 0.0 && noteEnergy > 0.0
                                       ? cross / std::sqrt(playedEnergy * noteEnergy)
                                       : 0.0;
        if (correlation > best.correlation)
            best = {d, cross / noteEnergy, correlation};
    }
    return best;
}

// What one held key showed.
struct HeldKey {
    bool sounding = false;
    bool looped = false;
    LoopWraps wraps;           // of the first channel, with the clicks of both
    double heldLevel = 0.0;    // RMS of the last half second held against the first loop pass
    double channelError = 0.0; // energy of (played - gain x own channel) over played energy
};

HeldKey holdKey(HostedInstrument& sampled, int note, const TGmsl_key& key, const WaveFormat& format,
                const std::vector<uint8_t>& recording)
{
    HeldKey result;
    BounceNote bounce;
    bounce.note = note;
    bounce.noteLength = kHoldSeconds;
    bounce.releaseLength = 0.1;
    const std::vector<uint8_t> take = bounceTake(sampled, bounce, 2);
    const int64_t noteOn = bounceNoteOnFrame(bounce, kRate);
    const int64_t noteOff = bounceNoteOffFrame(bounce, kRate);
    const std::vector<double> played[2] = {channelOf(take, 0), channelOf(take, 1)};
    double peak = 0.0;
    for (int64_t i = noteOn; i < noteOn + kRate; ++i)
        peak = std::max({peak, std::fabs(played[0][size_t(i)]), std::fabs(played[1][size_t(i)])});
    result.sounding = peak > 100.0;
    result.looped = key.loopMode != 0 && key.Loop_Out > key.Loop_In;
    if (!result.sounding || !result.looped)
        return result;

    RenderedNote rendered;
    const size_t bytes = recording.size();
    std::string msg;
    EXPECT_EQ(
        renderKeySample(&key, &format, recording.data(), &bytes, RenderOptions{}, &rendered, msg),
        1)
        << msg;
    const WaveFormat& f = rendered.format;
    std::vector<double> audio[2];
    for (int ch = 0; ch < 2; ++ch)
        for (int64_t i = 0; i < rendered.frames; ++i)
            audio[ch].push_back(pcm::sampleAt(f, rendered.note.data(), i, ch) *
                                (f.wBitsPerSample == 8 ? 256.0 : 1.0));

    double errorEnergy = 0.0, playedEnergy = 0.0;
    for (int ch = 0; ch < 2; ++ch) {
        const Alignment at = align(played[ch], audio[ch], noteOn);
        EXPECT_GT(at.correlation, 0.99) << "key " << note << " channel " << ch;
        const int64_t loopStart = at.offset + rendered.loopStart;
        const int64_t loopEnd = at.offset + rendered.loopEnd;
        const int64_t length = loopEnd + 1 - loopStart;
        for (int64_t i = 0; i < rendered.frames && at.offset + i < noteOff; ++i) {
            const double difference =
                played[ch][size_t(at.offset + i)] - at.gain * audio[ch][size_t(i)];
            errorEnergy += difference * difference;
            playedEnergy += played[ch][size_t(at.offset + i)] * played[ch][size_t(at.offset + i)];
        }
        const LoopWraps wraps = measureLoopWraps(played[ch], loopStart, loopEnd, noteOff);
        result.wraps.wraps = ch == 0 ? wraps.wraps : result.wraps.wraps;
        result.wraps.clickingWraps += wraps.clickingWraps;
        result.wraps.worstRatio = std::max(result.wraps.worstRatio, wraps.worstRatio);
        const int64_t half = kRate / 2;
        const double held = std::sqrt(energy(played[ch], noteOff - half, half) / double(half));
        const double first =
            std::sqrt(energy(played[ch], loopStart, length) / double(std::max<int64_t>(length, 1)));
        result.heldLevel = std::max(result.heldLevel, first > 0.0 ? held / first : 0.0);
    }
    result.channelError = playedEnergy > 0.0 ? errorEnergy / playedEnergy : 1.0;
    return result;
}

class HeldLoops : public ::testing::TestWithParam<int> {};

TEST_P(HeldLoops, SampledPresetHoldsEveryKeyWithoutClicks)
{
    TempDir dir;
    Model model;
    sampleIntoSoundFont(model, dir.path(), {"Held", GetParam(), 18, 0.3f}); // keys 48, 66, 84
    ASSERT_FALSE(HasFatalFailure());
    const Project& project = *model.currentProject();
    std::string msg;

    const auto sampled = openInstrument(dir.file("Held.sf2") + "?gain=1");
    ASSERT_NE(sampled, nullptr);
    const TGmsl& msl = project.msl[0];
    for (const KeyRef& ref : keysInScope(project, KeyScope::Project, 0, 0)) {
        const TGmsl_key& key = msl.keys[size_t(ref.note)];
        WaveFormat format;
        std::vector<uint8_t> recording;
        ASSERT_EQ(readWav(keySampleFileName(project, msl, ref.note), format, recording, msg), 1)
            << msg;
        const HeldKey held = holdKey(*sampled, ref.note, key, format, recording);
        std::fprintf(stderr,
                     "held loops: preset %3d key %3d: %s, %s, %d wraps, %d clicking, worst seam "
                     "step %5.1fx median, held level %5.2f, channel error %.4f\n",
                     GetParam(), ref.note, held.sounding ? "sounding" : "silent",
                     held.looped ? "looped" : "NO LOOP", held.wraps.wraps, held.wraps.clickingWraps,
                     held.wraps.worstRatio, held.heldLevel, held.channelError);
        if (!held.sounding)
            continue;
        EXPECT_TRUE(held.looped) << "key " << ref.note << " sounds but has no loop";
        if (!held.looped)
            continue;
        EXPECT_GT(held.wraps.wraps, 1) << "key " << ref.note << " is not held past its sample";
        EXPECT_EQ(held.wraps.clickingWraps, 0) << "key " << ref.note;
        EXPECT_GT(held.heldLevel, 0.5) << "key " << ref.note << " fades while held";
        EXPECT_LT(held.channelError, 0.01) << "key " << ref.note << " mixes its channels";
    }
}

// Organs, reeds, strings, voices, brass, winds, leads and pads that hold their sound.
INSTANTIATE_TEST_SUITE_P(SustainedGeneralMidi, HeldLoops,
                         ::testing::Values(16, 19, 20, 21, 22, 40, 42, 44, 48, 50, 52, 53, 56, 57,
                                           58, 60, 61, 65, 68, 71, 73, 80, 81, 89));

} // namespace
} // namespace tg::test
