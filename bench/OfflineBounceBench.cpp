// Offline bouncing speed: audio seconds rendered per wall second for takes of the demo's
// shape (3 s note, 1 s release, half a second lead-in), per hosted instrument.
#include "devices/HostedInstrument.h"
#include "devices/OfflineBouncer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

using namespace tg;

// Best of three passes over two octaves of takes, the machine being shared.
void measure(const char* text)
{
    InstrumentSpec choice;
    std::string msg;
    if (!parseInstrumentSpec(text, choice, msg)) {
        std::printf("%-60s %s\n", text, msg.c_str());
        return;
    }
    auto instrument = openHostedInstrument(choice, 44100, msg);
    if (instrument == nullptr) {
        std::printf("%-60s %s\n", text, msg.c_str());
        return;
    }
    const AudioStreamConfig format{-1, -1, -1, 44100, 16, 2, -1.0f};
    std::vector<uint8_t> take;
    double best = 0.0;
    for (int pass = 0; pass < 3; ++pass) {
        double audio = 0.0;
        const auto begin = std::chrono::steady_clock::now();
        for (int note = 48; note < 72; ++note) {
            BounceNote bounce;
            bounce.note = note;
            bounce.noteLength = 3.0;
            bounce.releaseLength = 1.0;
            if (!bounceNote(*instrument, bounce, format, take, msg)) {
                std::printf("%-60s %s\n", text, msg.c_str());
                return;
            }
            audio += double(take.size()) / 4.0 / 44100.0;
        }
        const double wall =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        best = std::max(best, audio / wall);
    }
    std::printf("%-60s %8.1fx real time\n", instrument->description().c_str(), best);
}

} // namespace

int main()
{
    measure("/usr/share/sounds/sf2/FluidR3_GM.sf2?preset=0");
    measure("/usr/share/sounds/sf2/FluidR3_GM.sf2?preset=48");
    measure("lv2:http://drobilla.net/plugins/mda/EPiano");
    return 0;
}
