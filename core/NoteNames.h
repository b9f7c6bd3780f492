// Names of MIDI notes as used in file names, tags and logs: 0 = "C-1", 60 = "C4", 127 = "G9".
#pragma once

#include <string>

namespace tg {

// The note name of MIDI note `note` (0..127); notes outside that range give an empty text.
std::string noteName(int note);

} // namespace tg
