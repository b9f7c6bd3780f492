// Choosing the MIDI API, and what the layer does with no port open.
#include "devices/MidiPorts.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <unistd.h>

namespace tg {
namespace {

TEST(MidiPorts, ForcedAlsaIsTheOnlyApiTried)
{
    ::setenv("TONEGRABBER_MIDI_API", "alsa", 1);
    std::string msg;
    const int created = midi::createMidiOut(msg);
    if (::access("/dev/snd/seq", F_OK) == 0) {
        ASSERT_EQ(created, 1) << msg;
        EXPECT_EQ(midi::midiOutApiName(), "alsa");
    } else {
        // No sequencer (a container): ALSA fails with RtMidi's reason and JACK is not tried.
        EXPECT_EQ(created, 0);
        EXPECT_FALSE(msg.empty());
        EXPECT_FALSE(midi::midiOutCreated());
        EXPECT_EQ(midi::midiOutApiName(), "");
    }
    midi::destroyMidi();
    ::unsetenv("TONEGRABBER_MIDI_API");
}

TEST(MidiPorts, NothingOpenMeansNothingSentAndClearMessages)
{
    midi::destroyMidi();
    const uint8_t noteOn[3] = {0x90, 60, 100};
    midi::sendMidiMessage(noteOn, 3); // must be harmless
    EXPECT_FALSE(midi::midiOutPortOpen());
    std::string msg;
    EXPECT_EQ(midi::openMidiOutPort(0, msg), 0);
    EXPECT_FALSE(msg.empty());
    msg.clear();
    EXPECT_TRUE(midi::listMidiInPorts(msg).empty());
    EXPECT_FALSE(msg.empty());
}

} // namespace
} // namespace tg
