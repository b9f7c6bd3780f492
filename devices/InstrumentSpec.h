// What names a hosted instrument: a SoundFont preset or an LV2 plug-in with control values,
// written as one line of text so that it fits the user's settings and a command line.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace tg {

// The text forms are
//   [sf2:]PATH.sf2[?bank=B&preset=P&gain=G]   a SoundFont preset (bank 0, preset 0 by default)
//   lv2:URI[?symbol=value&symbol=value...]    an LV2 instrument and its control input values
// Only the first '?' splits the options off, so a plug-in URI may hold '#' and ':'.
struct InstrumentSpec {
    enum class Kind { SoundFont, Lv2 };
    Kind kind = Kind::SoundFont;
    std::string path;                                    // SoundFont file
    int bank = 0;                                        // SoundFont bank, 0..16383
    int preset = 0;                                      // SoundFont program, 0..127
    double gain = 0.5;                                   // SoundFont synth gain, 0..10
    std::string uri;                                     // LV2 plug-in URI
    std::vector<std::pair<std::string, float>> controls; // LV2 control port symbol, value
};

// Reads the text form; 0 with a message naming the fault when it cannot be read.
int parseInstrumentSpec(const std::string& text, InstrumentSpec& choice, std::string& msg);

// The text form of `choice`, read back by parseInstrumentSpec to the same record.
std::string instrumentSpecText(const InstrumentSpec& choice);

// The instrument the user chose last, kept in Tonegrabber.ini under "VstHostWidget/PluginPath";
// empty when none was stored.
std::string storedInstrumentSpec();
// Stores the text form for the next session; 0 with a message when the file cannot be written.
int storeInstrumentSpec(const std::string& text, std::string& msg);

} // namespace tg
