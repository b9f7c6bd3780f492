// A SoundFont preset played by libfluidsynth as the hosted instrument.
#pragma once

#include "devices/HostedInstrument.h"

namespace tg {

// Loads the SoundFont of `choice` and selects its bank and preset on all sixteen channels.
// Reverb and chorus stay off: a sampler adds its own, and a dry take loops cleanly.
std::unique_ptr<HostedInstrument> openSoundFontInstrument(const InstrumentSpec& choice,
                                                          int32_t sampleRate, std::string& msg);

} // namespace tg
