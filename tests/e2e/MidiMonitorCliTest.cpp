// The MIDI monitor of the command line against JACK MIDI: messages sent into the monitor's
// own port come out decoded, and SIGTERM ends it with everything printed.
#include "devices/MidiPorts.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include <signal.h>

namespace tg::test {
namespace {

// The monitor's output port as other programs see it, or -1 when it has not appeared yet.
int monitorPortIndex()
{
    std::string msg;
    const std::vector<std::string> ports = midi::listMidiOutPorts(msg);
    for (size_t i = 0; i < ports.size(); ++i)
        if (ports[i].find("Tonegrabber MIDI Monitor") != std::string::npos)
            return int(i);
    return -1;
}

TEST(SoundChainMidiMonitor, CliPrintsTheDecodedMessagesSentToItsPortUntilTerminated)
{
    TempDir dir;
    const std::string outputFile = dir.file("monitor.txt");
    const pid_t pid = startCliProcess({"midi-monitor", "--quiet"}, outputFile);
    ASSERT_GT(pid, 0);

    std::string msg;
    ASSERT_TRUE(midi::createMidiOut(msg)) << msg;
    int port = -1;
    for (int tries = 0; tries < 200 && port < 0; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        port = monitorPortIndex();
    }
    if (port >= 0) {
        EXPECT_EQ(midi::openMidiOutPort(port, msg), 1) << msg;
        sendBytes({0x90, 60, 100});
        sendBytes({0xB1, 33, 5});
        sendBytes({0xC2, 7});
        sendBytes({0x80, 60, 0});
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
    }
    kill(pid, SIGTERM);
    const int status = waitCliProcess(pid);
    midi::destroyMidi();
    ASSERT_GE(port, 0) << "the monitor's port did not appear";
    EXPECT_EQ(status, 0);
    EXPECT_EQ(readFileBytes(outputFile), "0x90\t60\t100\tnote 60 on, vel=100 channel=1\n"
                                         "0xB1\t33\t5\tControl 33: LSB(for Ctrl1)=5 channel=2\n"
                                         "0xC2\t7\t0\tprogram change: ID=7 channel=3\n"
                                         "0x80\t60\t0\tnote 60 off, vel=0 channel=1\n");
}

} // namespace
} // namespace tg::test
