// Shared by the hosted-instrument tests: the instruments Debian ships, and measurements of
// a bounced 16-bit take.
#pragma once

#include "devices/HostedInstrument.h"
#include "devices/OfflineBouncer.h"

#include <memory>
#include <string>
#include <vector>

namespace tg::test {

constexpr const char* kGeneralMidiFont = "/usr/share/sounds/sf2/FluidR3_GM.sf2";
// MDA ePiano from Debian's mda-lv2, its random detuning off so that pitch can be measured.
constexpr const char* kLv2Piano = "http://drobilla.net/plugins/mda/EPiano";
constexpr const char* kLv2PianoSteady =
    "lv2:http://drobilla.net/plugins/mda/EPiano?random_tuning=0";

// Opens the instrument of `text` at 44100 Hz; null (with the reason in `msg`) otherwise.
std::unique_ptr<HostedInstrument> openInstrument(const std::string& text, std::string& msg);

// A bounced take's first channel as doubles (16-bit stereo or mono).
struct MeasuredTake {
    std::vector<uint8_t> bytes;
    std::vector<double> samples;
    int64_t frames = 0;
};
bool bounce(HostedInstrument& instrument, const BounceNote& note, MeasuredTake& take,
            std::string& msg, int channels = 2);

} // namespace tg::test
