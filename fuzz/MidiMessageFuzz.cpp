// Feeds arbitrary bytes, as a MIDI input port could deliver them, to the monitor's decoder.
#include "devices/MidiMessages.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // RtMidi hands on messages of any length (sysex included); the decoder looks at most at
    // three bytes and must never read past the ones it is given.
    for (size_t length = 0; length <= size && length <= 4; ++length)
        tg::midiMessageText(data, length);
    tg::midiMessageText(data, size);
    return 0;
}
