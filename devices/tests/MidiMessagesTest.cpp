// The monitor decoder, row by row, and the order of the bulk controller send. Program
// changes, resets and the copy of a Multi-Sample's settings are checked on the MIDI manager
// (ManagersTest), note messages on the recording run.
#include "devices/MidiMessages.h"

#include <gtest/gtest.h>

#include <vector>

namespace tg {
namespace {

// Each kind of message the monitor tells apart, at the edges of its ranges: channels count
// from 1, controllers 0..31 are MSBs and 32..63 their LSBs, 121..127 are channel mode
// messages, system messages have no channel, and missing data bytes count as 0.
TEST(MidiDecoder, EveryKindOfMessageAtTheEdgesOfItsRange)
{
    const std::pair<std::vector<uint8_t>, const char*> rows[] = {
        {{0x80, 60, 64}, "note 60 off, vel=64 channel=1"},
        {{0x9F, 62, 0}, "note 62 on, vel=0 (=off) channel=16"},
        {{0xA1, 40, 77}, "after touch, n=40, p=77 channel=2"},
        {{0xC2, 19}, "program change: ID=19 channel=3"},
        {{0xD0, 90}, "channel pressure = 90 channel=1"},
        {{0xE0, 1, 64}, "pitch bend: LSB=1 MSB=64 channel=1"},
        {{0xB0, 31, 127}, "Control 31: MSB=127 channel=1"},
        {{0xB0, 33, 5}, "Control 33: LSB(for Ctrl1)=5 channel=1"},
        {{0xB5, 63, 9}, "Control 63: LSB(for Ctrl31)=9 channel=6"},
        {{0xB0, 120, 0}, "control 120: value=0 channel=1"},
        {{0xB0, 121, 0}, "chnl mode msg: reset all controllers channel=1"},
        {{0xB0, 122, 0}, "chnl mode msg: local control off channel=1"},
        {{0xB9, 127, 0}, "chnl mode msg: poly mode on channel=10"},
        {{0xF1, 3}, "common msg: MTC quarter-frame"},
        {{0xF7}, "common msg: end of exclusive"},
        {{0xF8}, "real-time msg: timing clock"},
        {{0xFD}, "real-time msg: undefined"},
        {{0xFF}, "real-time msg: system reset"},
        {{0xF0, 0x7E, 1}, "'unknown' byte1=240 byte2=126"},
        {{0x45, 7}, "'unknown' byte1=69 byte2=7"},
        {{0x90, 60}, "note 60 on, vel=0 (=off) channel=1"},
        {{0xB0}, "Control 0: MSB=0 channel=1"},
    };
    for (const auto& [bytes, text] : rows)
        EXPECT_EQ(midiMessageText(bytes.data(), bytes.size()), text);
    EXPECT_EQ(midiMessageText(nullptr, 0), "'unknown' byte1=0 byte2=0");
}

using Bytes = std::vector<int>;

// The bytes a message sends (as many as its count says).
Bytes sent(const MidiMessage& message)
{
    return Bytes(message.bytes, message.bytes + message.count);
}

TEST(MidiSend, BulkControllersAscendLeavingOut120)
{
    MidiOutSettings settings;
    settings.controllerTable[7][0] = 1; // MSB 7
    settings.controllerTable[7][1] = 90;
    settings.controllerTable[1][2] = 1; // LSB 33
    settings.controllerTable[1][3] = 5;
    settings.controllerTable[2][1] = 44; // value but not active: not sent
    settings.parameterTable[0][0] = 1;   // 64
    settings.parameterTable[0][1] = 127;
    settings.parameterTable[55][0] = 1; // 119
    settings.parameterTable[55][1] = 3;
    settings.parameterTable[56][0] = 1; // 120: only singly
    settings.parameterTable[56][1] = 1;
    std::vector<Bytes> bulk;
    for (const MidiMessage& message : allControllerMessages(settings))
        bulk.push_back(sent(message));
    EXPECT_EQ(bulk,
              (std::vector<Bytes>{{0xB0, 7, 90}, {0xB0, 33, 5}, {0xB0, 64, 127}, {0xB0, 119, 3}}));
    MidiMessage single;
    ASSERT_TRUE(controllerMessage(settings, 120, single));
    EXPECT_EQ(single.bytes[1], 120);
    EXPECT_FALSE(controllerMessage(settings, 121, single));
    EXPECT_FALSE(controllerMessage(settings, 2, single));
}

} // namespace
} // namespace tg
