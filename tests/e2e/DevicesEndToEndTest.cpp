// The device layer against the real chain: FluidSynth on a dummy JACK server, driven over
// JACK MIDI and recorded through PortAudio's JACK host API.
#include "devices/AudioEngine.h"
#include "devices/DeviceTables.h"
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

#include <unistd.h>

namespace tg::test {
namespace {

constexpr double kRate = 44100.0;
// The dummy backend's period (jackd's default) bounds how far a MIDI event or an armed
// recording can be from the wall-clock time it was sent at.
constexpr int64_t kJackPeriod = 1024;

bool contains(const nlohmann::json& list, const std::string& name)
{
    return std::find(list.begin(), list.end(), name) != list.end();
}

TEST(SoundChainDevices, CliListsTheSynthAsAudioInputAndMidiOutput)
{
    std::string output;
    runCliProcess("devices --json 2>/dev/null", &output);
    const nlohmann::json document = nlohmann::json::parse(output, nullptr, false);
    ASSERT_FALSE(document.is_discarded()) << output;
    EXPECT_TRUE(contains(document["audioIn"], kSynthAudioDevice)) << output;
    EXPECT_TRUE(contains(document["midiOut"], kSynthMidiPort)) << output;
    EXPECT_EQ(document["audioIn"].back(), "-No Audio In-");
    EXPECT_EQ(document["midiOut"].back(), "-No MIDI Out-");
    EXPECT_EQ(document["formats"].size(), 28u);
}

// The level check before a recording, through the CLI: the synth's output is the input.
TEST(SoundChainDevices, CliInputLevelsHearsAPlayingNoteAndNothingInSilence)
{
    std::string msg;
    ASSERT_TRUE(openMidiOutByName(kSynthMidiPort, msg)) << msg;
    const std::string command = std::string("levels --input --device ") + kSynthAudioDevice +
                                " --seconds 1.5 --json 2>/dev/null";
    sendBytes({0xB0, 120, 0}); // all sound off: whatever an earlier test left is cut
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    std::string quiet, playing;
    runCliProcess(command, &quiet);

    sendBytes({0xC0, 80}); // square lead: holds its level while the key is down
    sendBytes({0x90, 60, 100});
    runCliProcess(command, &playing);
    sendBytes({0x80, 60, 0});
    sendBytes({0xB0, 123, 0});
    midi::destroyMidi();

    const nlohmann::json silence = nlohmann::json::parse(quiet, nullptr, false);
    ASSERT_FALSE(silence.is_discarded()) << quiet;
    EXPECT_GT(silence["blocks"].get<long>(), 0) << quiet;
    EXPECT_LT(silence["left"].get<double>(), 0.001) << quiet; // below -60 dBFS
    const nlohmann::json note = nlohmann::json::parse(playing, nullptr, false);
    ASSERT_FALSE(note.is_discarded()) << playing;
    EXPECT_GT(note["left"].get<double>(), 0.05) << playing;
    EXPECT_GT(note["right"].get<double>(), 0.05) << playing;
    EXPECT_LE(note["left"].get<double>(), 1.0) << playing;
    EXPECT_GT(note["leftDb"].get<double>(), -26.0) << playing;
}

TEST(SoundChainDevices, StartUpTablesCountRealDevicesOnly)
{
    DeviceTables tables;
    std::string log;
    EXPECT_EQ(buildMidiDeviceTables(tables, log), 1);
    std::string msg;
    ASSERT_EQ(buildAudioDeviceTables(tables, msg), 1) << msg;
    EXPECT_EQ(tables.midiOutDevices, long(tables.midiOut.size()) - 2);
    EXPECT_EQ(tables.midiInDevices, long(tables.midiIn.size()) - 1);
    EXPECT_GE(tables.midiOutDevices, 1);
    if (::access("/dev/snd/seq", F_OK) != 0) { // no sequencer here: JACK MIDI took over
        EXPECT_EQ(midi::midiOutApiName(), "jack");
    }
    EXPECT_GE(audioInTableIndex(tables, kSynthAudioDevice), 0);
    const AudioInputEntry& synth =
        tables.audioIn[size_t(audioInTableIndex(tables, kSynthAudioDevice))];
    EXPECT_EQ(synth.channels, std::vector<std::string>{"Default"}); // no ASIO on JACK
    audio::terminate();
    midi::destroyMidi();
}

// Opens the synth's audio as the input at "44.1KHz, Stereo, 16bit" and its MIDI port.
class SynthRecording : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::string msg;
        ASSERT_EQ(audio::initialize(msg), 1) << msg;
        const int32_t device = audio::inputDeviceIndex(kSynthAudioDevice, msg);
        ASSERT_GE(device, 0) << msg;
        ASSERT_TRUE(openMidiOutByName(kSynthMidiPort, msg)) << msg;
        // Whatever an earlier test left sounding is cut before this one listens.
        sendBytes({0xB0, 120, 0});
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        const AudioStreamConfig input{device, -1, -1, 44100, 16, 2, -1.0f};
        const AudioStreamConfig noOutput{-1, -1, -1, 44100, 16, 2, -1.0f};
        ASSERT_EQ(audio::openStreams(input, noOutput, msg), 1) << msg;
        audio::addLevelListener(&peaks);
        ASSERT_EQ(audio::startStreams(msg), 1) << msg;
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

    std::vector<double> recordedChannel()
    {
        RecordedTake take = audio::recordBuffer();
        return firstChannel(*take.data, take.format.channels, take.frames);
    }

    PeakRecorder peaks;
};

TEST_F(SynthRecording, NoteOnAfterHalfASecondRecordsMiddleC)
{
    std::string msg;
    ASSERT_TRUE(recordWithActions(2.0,
                                  {{0.5,
                                    [] {
                                        // Square lead: a steady synthetic tone whose pitch
                                        // does not wander as a piano's attack does.
                                        sendBytes({0xC0, 80});
                                        sendBytes({0x90, 60, 100}); // middle C
                                    }},
                                   {1.5,
                                    [] {
                                        sendBytes({0x80, 60, 0});
                                    }}},
                                  msg))
        << msg;
    RecordedTake take = audio::recordBuffer();
    ASSERT_EQ(take.frames, 88200);
    EXPECT_EQ(take.format.channels, 2);
    EXPECT_EQ(take.format.bits, 16);
    const std::vector<double> left = recordedChannel();

    // Silent up to half a second less one period; the tone starts within a period of it
    // (plus one period for JACK to deliver the MIDI event to the synth).
    EXPECT_LT(peakBetween(left, 0, 22050 - kJackPeriod), 2.0) << "silence before the note";
    const int64_t onset = firstFrameAbove(left, 8.0);
    std::fprintf(stderr, "onset frame %lld (%.4f s)\n", (long long)onset, onset / kRate);
    ASSERT_GT(onset, 0);
    EXPECT_GE(onset, 22050 - kJackPeriod);
    EXPECT_LE(onset, 22050 + 2 * kJackPeriod);

    const double pitch = pitchHz(left, onset + 2205, onset + 2205 + 16384, kRate, 200.0, 330.0);
    std::fprintf(stderr, "pitch %.3f Hz, peak level %.4f, %d meter calls\n", pitch,
                 double(peaks.highest()), peaks.calls());
    EXPECT_NEAR(pitch, 261.63, 261.63 * 0.01);
    EXPECT_GT(peaks.highest(), 0.0f);
    // The meter ran inside the record callback; nothing on that thread allocated.
    EXPECT_TRUE(audioThreadMarked());
    EXPECT_EQ(audioThreadAllocations(), 0);
    // No lock but the record flag's QMutex (a futex, not counted) was taken there either.
    EXPECT_EQ(audioThreadMutexLocks(), 0);
}

// The two messages that end a held note from outside, each heard on the synth: All Notes Off
// silences a held organ note, Reset All Controllers lifts the sustain pedal that holds one.
TEST_F(SynthRecording, AllNotesOffAndResetAllControllersEndAHeldNote)
{
    struct Ending {
        const char* name;
        uint8_t controller;
        bool pedal; // the key is let go at once and the sustain pedal holds the note
    };
    for (const Ending e :
         {Ending{"all notes off", 123, false}, Ending{"reset all controllers", 121, true}}) {
        SCOPED_TRACE(e.name);
        std::string msg;
        const std::vector<TimedAction> actions = {
            {0.1,
             [e] {
                 sendBytes({0xC0, 19}); // church organ: no decay
                 if (e.pedal)
                     sendBytes({0xB0, 64, 127});
                 sendBytes({0x90, 60, 100});
             }},
            {0.4,
             [e] {
                 if (e.pedal)
                     sendBytes({0x80, 60, 0});
             }},
            {1.0, [e] {
                 sendBytes({0xB0, e.controller, 0});
             }}};
        ASSERT_TRUE(recordWithActions(2.0, actions, msg)) << msg;
        const std::vector<double> left = recordedChannel();
        const double held = rmsBetween(left, int64_t(0.6 * kRate), int64_t(0.95 * kRate));
        const double after = rmsBetween(left, int64_t(1.6 * kRate), int64_t(2.0 * kRate));
        std::fprintf(stderr, "%s: held %.1f after %.1f\n", e.name, held, after);
        EXPECT_GT(held, 300.0);
        EXPECT_LT(after, held * 0.05); // what is left is the synth's reverb tail
    }
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
// stream records as usual. A take of 0 seconds ends at the first block with nothing stored.
TEST(SoundChainStreams, TenMillisecondLatencyUsesFiveHundredTwelveFrames)
{
    std::string msg;
    ASSERT_EQ(audio::initialize(msg), 1) << msg;
    const int32_t device = audio::inputDeviceIndex(kSynthAudioDevice, msg);
    ASSERT_GE(device, 0) << msg;
    const AudioStreamConfig input{device, -1, -1, 44100, 16, 2, 0.01f};
    const AudioStreamConfig noOutput{-1, -1, -1, 44100, 16, 2, -1.0f};
    ASSERT_EQ(audio::openStreams(input, noOutput, msg), 1) << msg;
    EXPECT_EQ(audio::inputFramesPerBuffer(), 512u);
    ASSERT_EQ(audio::startStreams(msg), 1) << msg;

    ASSERT_TRUE(recordWithActions(0.0, {}, msg)) << msg;
    EXPECT_EQ(audio::recordBuffer().frames, 0);
    EXPECT_TRUE(audio::recordBuffer().data->empty());

    ASSERT_TRUE(recordWithActions(0.5, {}, msg)) << msg;
    EXPECT_EQ(audio::recordBuffer().frames, 22050);

    EXPECT_EQ(audio::closeStreams(msg), 1) << msg;
    audio::terminate();
}

} // namespace
} // namespace tg::test
