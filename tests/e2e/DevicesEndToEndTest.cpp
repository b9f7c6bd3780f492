// The device layer against the real chain: FluidSynth on a dummy JACK server, driven over
// JACK MIDI and recorded through PortAudio's JACK host API.
#include "devices/AudioEngine.h"
#include "devices/MidiPorts.h"
#include "tests/e2e/AudioThreadChecks.h"
#include "tests/e2e/SoundChainClient.h"
#include "tests/support/ShellCommand.h"
#include "tests/support/ToneAnalysis.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

namespace tg::test {
namespace {

constexpr double kRate = 44100.0;
// The dummy backend's period (jackd's default) bounds how far a MIDI event or an armed
// recording can be from the wall-clock time it was sent at.
constexpr int64_t kJackPeriod = 1024;

TEST(SoundChainDevices, CliListsTheSynthAsAudioInputAndMidiOutput)
{
    std::string output;
    runCliProcess("devices --json 2>/dev/null", &output);
    const nlohmann::json document = nlohmann::json::parse(output, nullptr, false);
    ASSERT_FALSE(document.is_discarded()) << output;
    for (const auto& [list, device] :
         {std::pair{"audioIn", kSynthAudioDevice}, std::pair{"midiOut", kSynthMidiPort}})
        EXPECT_EQ(std::count(document[list].begin(), document[list].end(), device), 1) << output;
}

// Opens the synth's audio as the input at "44.1KHz, Stereo, 16bit" and its MIDI port.
class SynthRecording : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::string msg;
        ASSERT_TRUE(openMidiOutByName(kSynthMidiPort, msg)) << msg;
        // Whatever an earlier test left sounding is cut before this one listens.
        sendBytes({0xB0, 120, 0});
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        audio::addLevelListener(&peaks);
        ASSERT_TRUE(openSynthInput(msg)) << msg;
    }

    void TearDown() override
    {
        sendBytes({0xB0, 123, 0});
        std::string msg;
        audio::removeLevelListener(&peaks);
        EXPECT_EQ(audio::closeStreams(msg), 1) << msg;
        audio::terminate();
        midi::destroyMidi();
    }

    PeakRecorder peaks;
};

TEST_F(SynthRecording, NoteOnAfterHalfASecondRecordsMiddleC)
{
    std::string msg;
    // Square lead: a steady synthetic tone whose pitch does not wander as a piano's attack
    // does; middle C from 0.5 s to 1.5 s.
    ASSERT_TRUE(recordWithActions(
        2.0, {sendAt(0.5, {0xC0, 80}), sendAt(0.5, {0x90, 60, 100}), sendAt(1.5, {0x80, 60, 0})},
        msg))
        << msg;
    RecordedTake take = audio::recordBuffer();
    ASSERT_EQ(take.frames, 88200);
    EXPECT_EQ(take.format.channels, 2);
    EXPECT_EQ(take.format.bits, 16);
    const std::vector<double> left = firstChannel(*take.data, 2, take.frames);

    // Silent up to half a second less one period; the tone starts within a period of it
    // (plus one period for JACK to deliver the MIDI event to the synth).
    EXPECT_LT(peakBetween(left, 0, 22050 - kJackPeriod), 2.0) << "silence before the note";
    const int64_t onset = firstFrameAbove(left, 8.0);
    std::fprintf(stderr, "onset frame %lld (%.4f s)\n", (long long)onset, onset / kRate);
    ASSERT_GT(onset, 0);
    EXPECT_GE(onset, 22050 - kJackPeriod);
    EXPECT_LE(onset, 22050 + 2 * kJackPeriod);

    const double pitch = pitchHz(left, onset + 2205, onset + 2205 + 16384, kRate, 200.0, 330.0);
    std::fprintf(stderr, "pitch %.3f Hz, peak level %.4f\n", pitch, double(peaks.highest()));
    EXPECT_NEAR(pitch, 261.63, 261.63 * 0.01);
    EXPECT_GT(peaks.highest(), 0.0f);
    // The meter ran inside the record callback; nothing on that thread allocated.
    EXPECT_TRUE(audioThreadMarked());
    EXPECT_EQ(audioThreadAllocations(), 0);
    // No lock but the record flag's QMutex (a futex, not counted) was taken there either.
    EXPECT_EQ(audioThreadMutexLocks(), 0);
}

// The recorder's health counts on the real chain: a clean take gets every frame the server's
// clock let pass, even when the server is read late in its periods on a busy machine. A take
// during which another client stalls the server carries the xrun JACK reports to every
// client and still fills to its length. Whether the stall shows as a hole depends on the
// server: its frame counter does not advance over periods it skipped, only its estimate
// within a period may jump, so the hole is printed and only checked to agree with the verdict.
TEST_F(SynthRecording, TakeHealthCountsTheXrunsOfTheServer)
{
    std::string msg;
    StallingClient staller;
    ASSERT_TRUE(staller.ok());
    // A take during which the server itself kept every period (a busy machine makes the
    // dummy server miss some on its own) must come out whole.
    TakeHealth health;
    for (int attempt = 0; attempt < 5; ++attempt) {
        const int xrunsBefore = staller.xruns();
        ASSERT_TRUE(recordWithActions(1.0, {}, msg)) << msg;
        health = audio::recordBuffer().health;
        std::fprintf(stderr, "clean take: %lld of %lld frames, %d overflow(s), server xruns %d\n",
                     (long long)health.framesReceived, (long long)health.framesExpected,
                     health.inputOverflows, staller.xruns() - xrunsBefore);
        if (staller.xruns() == xrunsBefore)
            break;
    }
    EXPECT_EQ(health.framesReceived, 44100);
    EXPECT_TRUE(health.clocked);
    EXPECT_FALSE(health.droppedFrames()) << health.framesMissing() << " frames missing";

    ASSERT_TRUE(recordWithActions(1.0, {{0.4, [&] { staller.stallOnce(60); }}}, msg)) << msg;
    health = audio::recordBuffer().health;
    std::fprintf(stderr, "stalled take: %lld of %lld frames, %d overflow(s), server xruns %d\n",
                 (long long)health.framesReceived, (long long)health.framesExpected,
                 health.inputOverflows, staller.xruns());
    EXPECT_GE(staller.xruns(), 1);
    EXPECT_GE(health.inputOverflows, 1);
    EXPECT_EQ(health.framesReceived, 44100);
    EXPECT_TRUE(health.clocked);
    EXPECT_EQ(health.droppedFrames(), health.framesMissing() > 0);
}

// A 10 ms latency asks for 441 frames per buffer; the engine asks PortAudio for 512 and the
// stream records as usual.
TEST(SoundChainStreams, TenMillisecondLatencyUsesFiveHundredTwelveFrames)
{
    std::string msg;
    ASSERT_TRUE(openSynthInput(msg, 0.01f)) << msg;
    EXPECT_EQ(audio::inputFramesPerBuffer(), 512u);
    ASSERT_TRUE(recordWithActions(0.5, {}, msg)) << msg;
    EXPECT_EQ(audio::recordBuffer().frames, 22050);
    EXPECT_EQ(audio::closeStreams(msg), 1) << msg;
    audio::terminate();
}

} // namespace
} // namespace tg::test
