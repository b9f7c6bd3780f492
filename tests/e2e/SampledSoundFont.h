// A General MIDI preset sampled the way a user would: a Project over the hosted SoundFont
// instrument, recorded offline, auto-noted, auto-looped and exported as SoundFont 2; and
// instruments, such as the exported bank, played offline.
#pragma once

#include "core/Model.h"
#include "devices/HostedInstrument.h"
#include "devices/OfflineBouncer.h"
#include "devices/tests/InstrumentTestSupport.h" // kGeneralMidiFont, openInstrument

#include <memory>
#include <string>
#include <vector>

namespace tg::test {

struct SampledPreset {
    std::string name; // of the Project and of the exported "<folder>/<name>.sf2"
    int preset = 0;   // of the General MIDI font
    int keyStep = 6;  // keys 48..84, every `keyStep`
    float releaseLength = 0.5f;
};

// Fills `model` with the recorded Project in `folder` and writes "<folder>/<name>.sf2".
// Fails the calling test (check HasFatalFailure) when a step fails.
void sampleIntoSoundFont(Model& model, const std::string& folder, const SampledPreset& what);

// The instrument `text` names (a SoundFont path with its options) hosted at 44.1 kHz; null
// after a test failure.
std::unique_ptr<HostedInstrument> openInstrument(const std::string& text);
// `note` played offline on `instrument`: 44.1 kHz 16-bit frames of `channels` channels.
std::vector<uint8_t> bounceTake(HostedInstrument& instrument, const BounceNote& note,
                                uint16_t channels);

} // namespace tg::test
