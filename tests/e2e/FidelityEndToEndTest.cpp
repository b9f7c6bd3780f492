// Fidelity of the whole chain: a SoundFont preset sampled offline through the hosted
// instrument, auto-noted, auto-looped and exported as SoundFont 2, then played again through
// FluidSynth. For a set of notes, sampled keys and keys between them, the re-rendered sound
// must match the original preset's render: pitch within 0.5 %, level within 1 dB, and the
// spectral distance is reported.
#include "tests/e2e/SampledSoundFont.h"
#include "tests/support/TempDir.h"
#include "tests/support/ToneAnalysis.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdio>

namespace tg::test {
namespace {

constexpr const char* kFont = kGeneralMidiFont;
constexpr double kRate = 44100.0;
constexpr int kFftSize = 4096;

void fft(std::vector<std::complex<double>>& a)
{
    const size_t n = a.size();
    for (size_t i = 1, j = 0; i < n; ++i) {
        size_t bit = n >> 1;
        for (; j & bit; bit >>= 1)
            j ^= bit;
        j ^= bit;
        if (i < j)
            std::swap(a[i], a[j]);
    }
    for (size_t length = 2; length <= n; length <<= 1) {
        const std::complex<double> step = std::polar(1.0, -2.0 * M_PI / double(length));
        for (size_t i = 0; i < n; i += length) {
            std::complex<double> w(1.0);
            for (size_t k = 0; k < length / 2; ++k) {
                const std::complex<double> u = a[i + k];
                const std::complex<double> v = a[i + k + length / 2] * w;
                a[i + k] = u + v;
                a[i + k + length / 2] = u - v;
                w *= step;
            }
        }
    }
}

// Mean power spectrum (Hann window, half-overlapping frames) of [from, to).
std::vector<double> powerSpectrum(const std::vector<double>& samples, int64_t from, int64_t to)
{
    std::vector<double> power(kFftSize / 2, 0.0);
    int frames = 0;
    for (int64_t start = from; start + kFftSize <= to; start += kFftSize / 2, ++frames) {
        std::vector<std::complex<double>> block(kFftSize);
        for (int i = 0; i < kFftSize; ++i) {
            const double window = 0.5 - 0.5 * std::cos(2.0 * M_PI * i / (kFftSize - 1));
            block[size_t(i)] = samples[size_t(start + i)] * window;
        }
        fft(block);
        for (int i = 0; i < kFftSize / 2; ++i)
            power[size_t(i)] += std::norm(block[size_t(i)]);
    }
    for (double& p : power)
        p /= std::max(frames, 1);
    return power;
}

// Root-mean-square difference in dB of two power spectra between 30 Hz and 10 kHz, each bin
// floored 80 dB under the louder spectrum's peak so that noise-floor bins do not dominate.
double spectralDistanceDb(const std::vector<double>& a, const std::vector<double>& b)
{
    const double peak =
        std::max(*std::max_element(a.begin(), a.end()), *std::max_element(b.begin(), b.end()));
    const double floor = peak * 1e-8;
    const int low = int(30.0 * kFftSize / kRate);
    const int high = int(10000.0 * kFftSize / kRate);
    double sum = 0.0;
    for (int i = low; i < high; ++i) {
        const double difference =
            10.0 * std::log10(std::max(a[size_t(i)], floor) / std::max(b[size_t(i)], floor));
        sum += difference * difference;
    }
    return std::sqrt(sum / (high - low));
}

std::vector<double> render(HostedInstrument& instrument, int note)
{
    BounceNote bounce;
    bounce.note = note;
    bounce.noteLength = 1.5;
    bounce.releaseLength = 0.2;
    const std::vector<uint8_t> take = bounceTake(instrument, bounce, 1);
    return firstChannel(take, 1, int64_t(take.size() / 2));
}

class Fidelity : public ::testing::TestWithParam<int> {};

// Preset 19 (church organ) sustains; preset 0 (grand piano) dies away and is stretched.
TEST_P(Fidelity, SampledSoundFontPresetPlaysBackLikeTheOriginal)
{
    TempDir dir;
    Model model;
    sampleIntoSoundFont(model, dir.path(), {"Fidelity", GetParam(), 6, 0.5f});
    ASSERT_FALSE(HasFatalFailure());

    const std::string original = std::string(kFont) + "?preset=" + std::to_string(GetParam());
    // The takes already carry the original's gain, so the sampled bank would play at unity
    // gain, but its stereo Key-Samples are pairs panned hard left and right, and FluidSynth
    // plays a hard-panned voice at 0.707 of the sample (a centred one at 0.5 per side): the
    // bank plays 3 dB up to sound as loud as its takes.
    auto before = openInstrument(original);
    auto after = openInstrument(dir.file("Fidelity.sf2") + "?gain=1.41421");
    ASSERT_NE(before, nullptr);
    ASSERT_NE(after, nullptr);
    const int64_t from = 22050 + 4410; // past the attack
    const int64_t to = 22050 + 4410 + 32768;
    auto pitchOf = [&](const std::vector<double>& samples, int note) {
        return pitchNearNote(samples, from, from + 8192, kRate, note);
    };
    // Sampled keys must sound as the original did. A key between them plays a neighbour's
    // sample transposed in equal temperament, so its pitch must be that neighbour's original
    // pitch moved by the interval (a stretched piano differs from its own key there), and
    // its level, the neighbour's, is only reported.
    for (int note : {48, 54, 57, 60, 63, 72, 81, 84}) {
        const bool sampled = (note - 48) % 6 == 0;
        const std::vector<double> a = render(*before, note);
        const std::vector<double> b = render(*after, note);
        const double hzA = pitchOf(a, note);
        const double hzB = pitchOf(b, note);
        const double levelDb = 20.0 * std::log10(rmsBetween(b, from, to) / rmsBetween(a, from, to));
        const double distance =
            spectralDistanceDb(powerSpectrum(a, from, to), powerSpectrum(b, from, to));
        std::fprintf(stderr,
                     "preset %d note %3d (%s): original %8.3f Hz, re-rendered %8.3f Hz, level "
                     "%+5.2f dB, spectral distance %5.2f dB\n",
                     GetParam(), note, sampled ? "sampled" : "between", hzA, hzB, levelDb,
                     distance);
        if (sampled) {
            EXPECT_NEAR(hzB / hzA, 1.0, 0.005) << note;
            EXPECT_NEAR(levelDb, 0.0, 1.0) << note;
            continue;
        }
        double closest = 1.0;
        for (int root : {note - (note - 48) % 6, note - (note - 48) % 6 + 6}) {
            const double predicted =
                pitchOf(render(*before, root), root) * std::pow(2.0, (note - root) / 12.0);
            closest = std::min(closest, std::fabs(hzB / predicted - 1.0));
        }
        EXPECT_LT(closest, 0.005) << note << ": no neighbour transposes to " << hzB << " Hz";
    }
}

INSTANTIATE_TEST_SUITE_P(GeneralMidi, Fidelity, ::testing::Values(19, 0));

} // namespace
} // namespace tg::test
