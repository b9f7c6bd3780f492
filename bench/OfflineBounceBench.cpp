// Offline bouncing speed: audio seconds rendered per wall second for takes of the demo's
// shape (3 s note, 1 s release, half a second lead-in), per hosted instrument. For a
// SoundFont the same notes are also rendered by libfluidsynth alone, with the same synth
// settings and nothing of ours around it; our speed is reported as a fraction of that.
#include "devices/HostedInstrument.h"
#include "devices/OfflineBouncer.h"

#include <fluidsynth.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

using namespace tg;

constexpr int kRate = 44100;
constexpr int kFirstNote = 48;
constexpr int kLastNote = 72; // exclusive
constexpr double kLeadIn = 0.5, kNote = 3.0, kRelease = 1.0;

// Best of three passes (the machine being shared) of `pass`, which renders every note once and
// returns the audio seconds it made, or a negative number on failure.
double bestSpeed(const std::function<double()>& pass)
{
    double best = 0.0;
    for (int i = 0; i < 3; ++i) {
        const auto begin = std::chrono::steady_clock::now();
        const double audio = pass();
        if (audio < 0.0)
            return -1.0;
        const double wall =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        best = std::max(best, audio / wall);
    }
    return best;
}

// The same takes straight from libfluidsynth: silence the last note, note on after the lead-in,
// note off after the note, the release, written as interleaved 16-bit frames.
double directFluidSynthSpeed(const InstrumentSpec& choice)
{
    fluid_settings_t* settings = new_fluid_settings();
    fluid_settings_setnum(settings, "synth.sample-rate", kRate);
    fluid_settings_setint(settings, "synth.reverb.active", 0);
    fluid_settings_setint(settings, "synth.chorus.active", 0);
    fluid_settings_setnum(settings, "synth.gain", choice.gain);
    fluid_settings_setint(settings, "synth.threadsafe-api", 0);
    fluid_settings_setint(settings, "synth.dynamic-sample-loading", 1);
    fluid_synth_t* synth = new_fluid_synth(settings);
    const int font = fluid_synth_sfload(synth, choice.path.c_str(), 1);
    double speed = -1.0;
    if (font != FLUID_FAILED &&
        fluid_synth_program_select(synth, 0, font, choice.bank, choice.preset) == FLUID_OK) {
        const int leadIn = int(kLeadIn * kRate), note = int(kNote * kRate);
        const int release = int((kLeadIn + kNote + kRelease) * kRate) - leadIn - note;
        std::vector<int16_t> take(size_t(leadIn + note + release) * 2);
        auto render = [&](int from, int count) {
            fluid_synth_write_s16(synth, count, take.data() + 2 * from, 0, 2,
                                  take.data() + 2 * from, 1, 2);
        };
        speed = bestSpeed([&] {
            double audio = 0.0;
            for (int key = kFirstNote; key < kLastNote; ++key) {
                fluid_synth_all_sounds_off(synth, -1);
                render(0, leadIn);
                fluid_synth_noteon(synth, 0, key, 127);
                render(leadIn, note);
                fluid_synth_noteoff(synth, 0, key);
                render(leadIn + note, release);
                audio += double(take.size() / 2) / kRate;
            }
            return audio;
        });
    }
    delete_fluid_synth(synth);
    delete_fluid_settings(settings);
    return speed;
}

void measure(const char* text)
{
    InstrumentSpec choice;
    std::string msg;
    if (!parseInstrumentSpec(text, choice, msg)) {
        std::printf("%-60s %s\n", text, msg.c_str());
        return;
    }
    auto instrument = openHostedInstrument(choice, kRate, msg);
    if (instrument == nullptr) {
        std::printf("%-60s %s\n", text, msg.c_str());
        return;
    }
    const AudioStreamConfig format{-1, -1, -1, kRate, 16, 2, -1.0f};
    std::vector<uint8_t> take;
    const double ours = bestSpeed([&] {
        double audio = 0.0;
        for (int note = kFirstNote; note < kLastNote; ++note) {
            BounceNote bounce;
            bounce.note = note;
            bounce.leadIn = kLeadIn;
            bounce.noteLength = kNote;
            bounce.releaseLength = kRelease;
            if (!bounceNote(*instrument, bounce, format, take, msg))
                return -1.0;
            audio += double(take.size()) / 4.0 / kRate;
        }
        return audio;
    });
    if (ours < 0.0) {
        std::printf("%-60s %s\n", text, msg.c_str());
        return;
    }
    std::printf("%-60s %8.1fx real time", instrument->description().c_str(), ours);
    if (choice.kind == InstrumentSpec::Kind::SoundFont) {
        const double direct = directFluidSynthSpeed(choice);
        if (direct > 0.0)
            std::printf("   libfluidsynth alone %8.1fx   ours/alone %.2f", direct, ours / direct);
    }
    std::printf("\n");
}

} // namespace

int main()
{
    measure("/usr/share/sounds/sf2/FluidR3_GM.sf2?preset=0");
    measure("/usr/share/sounds/sf2/FluidR3_GM.sf2?preset=48");
    measure("lv2:http://drobilla.net/plugins/mda/EPiano");
    return 0;
}
