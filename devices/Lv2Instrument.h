// An LV2 instrument plug-in run through lilv as the hosted instrument.
#pragma once

#include "devices/HostedInstrument.h"

namespace tg {

// Finds the plug-in of `choice.uri` among the installed LV2 bundles (LV2_PATH when set),
// instantiates it at `sampleRate`, sets the control inputs named in `choice.controls` (the
// others keep their defaults) and activates it. It needs one MIDI event input and one or
// two audio outputs; a mono output is heard on both sides.
std::unique_ptr<HostedInstrument> openLv2Instrument(const InstrumentSpec& choice,
                                                    int32_t sampleRate, std::string& msg);

} // namespace tg
