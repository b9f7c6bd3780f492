// Pitch class plus octave (note / 12 - 1).
#include "core/NoteNames.h"

namespace tg {

std::string noteName(int note)
{
    static const char* const kPitchClasses[12] = {"C",  "C#", "D",  "D#", "E",  "F",
                                                  "F#", "G",  "G#", "A",  "A#", "B"};
    if (note < 0 || note > 127)
        return {};
    return std::string(kPitchClasses[note % 12]) + std::to_string(note / 12 - 1);
}

} // namespace tg
