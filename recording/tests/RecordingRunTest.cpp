// The recording run against a fake clock and a fake synth: timing of arming and notes, the
// order of keys across Multi-Samples, skipping, stopping, failures. That every finished take is
// saved at once is checked by killing real runs (KillSafety in tests/e2e).
#include "recording/RecordingRun.h"

#include "core/Model.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "recording/tests/FakeTakeSource.h"
#include "tests/support/ProjectFileAccess.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <tuple>

namespace tg::test {
namespace {

using Bytes = std::vector<uint8_t>;

// A saved Project "Piano" with `layers` Multi-Samples, no key selected yet.
class RunFixture : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::filesystem::create_directories(data());
        ASSERT_TRUE(model.newProject().ok());
        Project& p = project();
        copyText(p.name, "Piano");
        copyText(p.dataPath, data().c_str());
    }

    // A Multi-Sample on MIDI channel `channel` with `keys` selected.
    void addLayer(const char* name, int channel = 0, std::initializer_list<int> keys = {})
    {
        ASSERT_TRUE(model.addMultiSample().ok());
        TGmsl& m = project().msl[project().mslCount - 1];
        copyText(m.name, name);
        m.MIDIoutChannel = uint16_t(channel);
        m.MIDIoutAttackVelocity = 100;
        m.MIDIoutReleaseVelocity = 40;
        m.recordsettings.notelength1 = 2.0;
        m.recordsettings.releaselength1 = 1.0;
        m.recordsettings.recpause = 1.0;
        m.recordsettings.latency = 0;
        m.KBrangeIn = 0;
        m.KBrangeOut = 127;
        for (int note : keys)
            m.keys[note].keyState = 1;
    }

    void save()
    {
        std::string message;
        ASSERT_EQ(saveProject(project(), folder.path(), "Piano", message), 1) << message;
    }

    Project& project() { return *model.currentProject(); }
    TGmsl& layer(int i) { return project().msl[i]; }
    std::string data() const { return folder.file("samples"); }

    // Saves the Project, then opens and starts a run on `takes`.
    std::unique_ptr<RecordingRun> startRun(RunOptions options = {}, TakeSource* takes = nullptr)
    {
        save();
        options.verbose = verbose;
        auto run = std::make_unique<RecordingRun>(model, options, takes ? *takes : source, clock,
                                                  observer);
        EXPECT_TRUE(run->open().ok());
        run->start();
        return run;
    }

    // The first Multi-Sample as the saved project file holds it.
    const TGmsl& savedLayer()
    {
        reloaded = loadProjectFile(folder.file("Piano.TGprj"));
        return reloaded->project(0).msl[0];
    }

    TempDir folder;
    Model model;
    std::unique_ptr<Model> reloaded;
    FakeClock clock;
    FakeTakeSource source{clock};
    RecordingObserver observer;
    bool verbose = false;
};

TEST_F(RunFixture, TakeArmsNoteAndReleaseLengthPlusHalfASecondAndTimesTheNote)
{
    addLayer("Soft", 2, {60});
    auto run = startRun();
    EXPECT_EQ(run->state(), RecordingRun::State::Countdown);
    const int64_t startMs = clock.now;
    runUntil(*run, clock, startMs + 1000 + 400); // countdown of 1 s, then armed
    ASSERT_EQ(source.armedSeconds.size(), 1u);
    EXPECT_DOUBLE_EQ(source.armedSeconds[0], 3.5);
    const int64_t armedAt = source.armedAtMs[0];
    EXPECT_EQ(armedAt, startMs + 1000);
    EXPECT_TRUE(source.sent.empty()); // the note waits half a second into the take
    runToEnd(*run, clock);
    ASSERT_TRUE(run->finished());
    ASSERT_GE(source.history.size(), 2u);
    EXPECT_EQ(source.history[0].bytes, (Bytes{0x92, 60, 100}));
    EXPECT_EQ(source.history[0].atMs - armedAt, 500);
    // A real Note Off with the release velocity, not a Note On of velocity 0.
    EXPECT_EQ(source.history[1].bytes, (Bytes{0x82, 60, 40}));
    EXPECT_EQ(source.history[1].atMs - armedAt, 2500);
    EXPECT_DOUBLE_EQ(run->measuredNoteMs(), 2000.0);
    // The take is processed at the first poll after the armed 3.5 s. Its file, the armed
    // length in frames, and Release_In = Note_Out are checked on the real chain
    // (RecordOnTheSynth.CliRecordsEverySelectedKeyOfBothLayers).
    const TGmsl_key& key = layer(0).keys[60];
    EXPECT_EQ(key.hasAudio, 1);
    EXPECT_TRUE(observer.logged("Recording NOTE 60 (C4), rec.dur. = 3 seconds"));
    EXPECT_FALSE(run->failed());
    // The measured 2 s after Note_In (latency setting 0 here).
    EXPECT_NEAR(key.Note_In, 22050 + 441, 10);
    EXPECT_EQ(key.Note_Out, key.Note_In + 2 * 44100);
    EXPECT_EQ(key.releaseOn, 0);
}

TEST_F(RunFixture, CountdownIsAnnouncedSecondBySecond)
{
    addLayer("Soft", 0, {60});
    layer(0).recordsettings.recpause = 3.5;
    auto run = startRun();
    runUntil(*run, clock, clock.now + 3400);
    EXPECT_EQ(observer.lines,
              (std::vector<std::string>{
                  "Press 'Start'", "init PROJECT \"Piano\"", "init MULTI-SAMPLE \"Soft\"",
                  "recording starts in 3.5 second(s)", "recording starts in 3 second(s)",
                  "recording starts in 2 second(s)", "recording starts in 1 second(s)"}));
    EXPECT_TRUE(source.armedSeconds.empty());
    runUntil(*run, clock, clock.now + 100);
    EXPECT_EQ(source.armedSeconds.size(), 1u);
}

TEST_F(RunFixture, TakeWithoutANoteKeepsTheWholeRecording)
{
    addLayer("Soft", 0, {60});
    layer(0).recordsettings.releaselength1 = 0.0;
    source.silent = true;
    auto run = startRun();
    runToEnd(*run, clock);
    const TGmsl_key& key = layer(0).keys[60];
    EXPECT_EQ(key.Note_In, 0);
    EXPECT_EQ(key.Note_Out, 2 * 44100 + 22050 - 1);
    EXPECT_EQ(key.hasAudio, 1);
}

TEST_F(RunFixture, KeyAfter127IsKeyZeroOfTheNextMultiSample)
{
    addLayer("Soft", 0, {127});
    addLayer("Loud", 1, {0});
    RunOptions options;
    options.command = kRecordSelectedProject;
    auto run = startRun(options);
    EXPECT_EQ(run->totalKeys(), 2);
    runToEnd(*run, clock);
    ASSERT_TRUE(run->finished());
    std::vector<Bytes> noteOns;
    for (const SentMessage& m : source.history)
        if ((m.bytes[0] & 0xF0) == 0x90)
            noteOns.push_back(m.bytes);
    EXPECT_EQ(noteOns, (std::vector<Bytes>{{0x90, 127, 100}, {0x91, 0, 100}}));
    EXPECT_EQ(layer(0).keys[127].hasAudio, 1);
    EXPECT_EQ(layer(1).keys[0].hasAudio, 1);
    EXPECT_EQ(run->keysDone(), 2);
    // Each Multi-Sample's devices were prepared once, when its first key came up.
    EXPECT_EQ(source.prepareCount, 2);
}

TEST_F(RunFixture, KeysWithAudioAreSkippedWhenOnlyEmptyKeysAreRecorded)
{
    addLayer("Soft", 0, {48, 60});
    layer(0).keys[48].hasAudio = 1;
    auto run = startRun();
    runToEnd(*run, clock);
    EXPECT_TRUE(observer.logged("Skipping NOTE 48 (C3)"));
    EXPECT_EQ(source.armedSeconds.size(), 1u);
    EXPECT_EQ(run->keysDone(), 1);
    EXPECT_EQ(observer.lastDone, 1);
    EXPECT_FALSE(std::filesystem::exists(keySampleFileName(project(), layer(0), 48)));
}

TEST_F(RunFixture, LockedKeysAreKeptOnlyWithTheLockOption)
{
    addLayer("Soft", 0, {48, 60});
    layer(0).keys[48].hasAudio = 1;
    layer(0).keys[48].locked = 1;
    layer(0).keys[60].hasAudio = 1;
    RunOptions options;
    options.recordOnlyEmptyKeys = false;
    options.keepLockedKeys = true;
    auto run = startRun(options);
    runToEnd(*run, clock);
    EXPECT_TRUE(observer.logged("Skipping NOTE 48 (C3)"));
    EXPECT_FALSE(observer.logged("Skipping NOTE 60 (C4)"));
    EXPECT_EQ(run->keysDone(), 1);
    EXPECT_EQ(layer(0).keys[48].locked, 1);
}

TEST_F(RunFixture, StoppingMidNoteSendsNoteOffAndAllNotesOffOnTheChannel)
{
    addLayer("Soft", 5, {60, 62});
    auto run = startRun();
    runUntil(*run, clock, clock.now + 1000 + 1500); // one second into the note
    ASSERT_EQ(run->state(), RecordingRun::State::NoteSounding);
    source.history.clear();
    run->stop();
    EXPECT_TRUE(run->finished());
    EXPECT_EQ(source.history.size(), 2u);
    EXPECT_EQ(source.history[0].bytes, (Bytes{0x85, 60, 40}));
    EXPECT_EQ(source.history[1].bytes, (Bytes{0xB5, 123, 0}));
    EXPECT_EQ(run->nextDueMs(), -1); // nothing fires any more
    EXPECT_EQ(layer(0).keys[60].hasAudio, 0);
    EXPECT_FALSE(std::filesystem::exists(keySampleFileName(project(), layer(0), 60)));
}

TEST_F(RunFixture, TakeWithDroppedFramesIsRecordedAgainUntilDropsPersist)
{
    addLayer("Soft", 1, {60, 62});
    source.droppingTakes = 1;
    auto run = startRun();
    while (run->keysDone() < 1 && !run->finished())
        runUntil(*run, clock, clock.now + 100);
    // The first take of key 60 was refused and the key recorded again, after its countdown.
    ASSERT_EQ(source.armedAtMs.size(), 2u);
    EXPECT_EQ(source.armedAtMs[1] - source.armedAtMs[0], 3500 + 1000); // take, countdown
    EXPECT_TRUE(observer.logged("NOTE 60 (C4): 154350 of 154862 frames received, 512 missing, 1 "
                                "input overflow(s), 1 output underflow(s)"));
    EXPECT_TRUE(observer.logged("Frames were dropped: the take is not kept, NOTE 60 (C4) is "
                                "recorded again (take 2 of 4)"));
    EXPECT_TRUE(observer.logged("NOTE 60 (C4): 154350 of 154350 frames received, 0 missing, 0 "
                                "input overflow(s), 0 output underflow(s)"));
    ASSERT_EQ(observer.takes.size(), 2u);
    EXPECT_FALSE(observer.takes[0].kept);
    EXPECT_TRUE(observer.takes[0].file.empty());
    EXPECT_TRUE(observer.takes[1].kept);
    EXPECT_EQ(observer.takes[1].file, keySampleFileName(project(), layer(0), 60));
    EXPECT_EQ(layer(0).keys[60].hasAudio, 1);

    // Key 62 drops frames in four takes in a row: nothing of it is kept and the run ends with
    // the reason.
    source.droppingTakes = 4;
    runToEnd(*run, clock);
    EXPECT_TRUE(run->failed());
    ASSERT_EQ(observer.boxes.size(), 1u);
    EXPECT_EQ(observer.boxes[0],
              "Error: Frames were dropped again while recording NOTE 62 (D4), in 4 takes in a "
              "row; the last: 512 frame(s) missing, 1 input overflow(s). The take was not kept "
              "and the recording stopped; lower the system's load or raise the audio latency, "
              "then record again.");
    EXPECT_EQ(source.armedAtMs.size(), 6u);
    EXPECT_EQ(run->keysDone(), 1);
    EXPECT_EQ(layer(0).keys[62].hasAudio, 0);
    EXPECT_FALSE(std::filesystem::exists(keySampleFileName(project(), layer(0), 62)));
    EXPECT_EQ(source.history.back().bytes, (Bytes{0xB1, 123, 0}));
}

TEST_F(RunFixture, FailedWriteEndsTheRunAndKeepsEarlierTakes)
{
    addLayer("Soft", 0, {60, 72});
    // A folder where the second take's file would go: the finished file cannot take its place.
    const std::string second = keySampleFileName(project(), layer(0), 72);
    std::filesystem::create_directories(second);
    auto run = startRun();
    runToEnd(*run, clock);
    ASSERT_TRUE(run->finished());
    EXPECT_TRUE(run->failed());
    ASSERT_EQ(observer.boxes.size(), 1u);
    EXPECT_EQ(observer.boxes[0], "Error: error writing " + second);
    EXPECT_TRUE(std::filesystem::exists(keySampleFileName(project(), layer(0), 60)));
    EXPECT_TRUE(std::filesystem::is_directory(second));
    // The stop sequence ran.
    EXPECT_EQ(source.history.back().bytes, (Bytes{0xB0, 123, 0}));
    EXPECT_EQ(savedLayer().keys[60].hasAudio, 1);
}

TEST_F(RunFixture, DevicesThatCannotOpenEndTheRunWithTheirMessage)
{
    addLayer("Soft", 0, {60});
    source.failPrepare = true;
    auto run = startRun();
    EXPECT_TRUE(run->finished());
    EXPECT_EQ(observer.boxes, (std::vector<std::string>{"Error: Invalid device"}));
    EXPECT_TRUE(source.armedSeconds.empty());
}

TEST_F(RunFixture, VerboseLinesOnlyInVerboseMode)
{
    addLayer("Soft", 0, {60});
    copyText(layer(0).AudioInDevice, "fluidsynth");
    copyText(layer(0).AudioInFormat, "44.1KHz, Stereo, 16bit");
    layer(0).recordsettings.autoloop = 1;
    auto quiet = startRun();
    runToEnd(*quiet, clock);
    EXPECT_TRUE(observer.logged("Loop Detection - This may take a bit..."));
    EXPECT_FALSE(observer.logged("       setting loop-Out"));
    EXPECT_FALSE(observer.logged("Opening Audio In Device \"fluidsynth\"\r\nwith \"44.1KHz, "
                                 "Stereo, 16bit\""));

    observer.lines.clear();
    verbose = true;
    RunOptions options;
    options.recordOnlyEmptyKeys = false;
    auto loud = startRun(options);
    runToEnd(*loud, clock);
    EXPECT_TRUE(observer.logged("       setting loop-Out"));
    EXPECT_TRUE(observer.logged("Opening Audio In Device \"fluidsynth\"\r\nwith \"44.1KHz, "
                                "Stereo, 16bit\""));
    EXPECT_EQ(layer(0).keys[60].loopMode, 1); // where the loop lands: RecordOnTheSynth
}

TEST_F(RunFixture, SemiAutomaticTakeEndsAtItsLongestAndIsKeptUnderACutName)
{
    addLayer("Soft", 0, {60, 62});
    RunOptions options;
    options.automatic = false;
    options.maxRecLength = 2;
    auto run = startRun(options);
    EXPECT_EQ(run->state(), RecordingRun::State::Waiting);
    // A stop before the countdown ended just waits again.
    run->startCountdown();
    runUntil(*run, clock, clock.now + 500);
    run->stop();
    EXPECT_EQ(run->state(), RecordingRun::State::Waiting);
    EXPECT_TRUE(source.armedSeconds.empty());

    // The full 2 s end the take by themselves; it is processed and shown for checking. A take
    // the user stops is checked in SemiAutomaticTakeIsMarkedWhereTheUserPlayedTheNote, a
    // discarded one comes again in SemiAutomaticCli and RecordDialogOnTheSynth.
    run->startCountdown();
    runUntil(*run, clock, clock.now + 1200);
    ASSERT_EQ(run->state(), RecordingRun::State::Recording);
    EXPECT_DOUBLE_EQ(source.armedSeconds.back(), 2.0);
    EXPECT_TRUE(observer.logged("Recording NOTE 60 (C4), rec.dur. = manual (max. 2 seconds)"));
    runToEnd(*run, clock, 4000);
    ASSERT_EQ(run->state(), RecordingRun::State::Checking);
    EXPECT_EQ(observer.checked, (std::vector<int>{60}));
    EXPECT_EQ(layer(0).keys[60].hasAudio, 1);
    run->keepTake(std::string(60, 'x'));
    EXPECT_EQ(std::string(layer(0).keys[60].name), std::string(47, 'x'));
    EXPECT_EQ(run->currentKey(), 62);
    EXPECT_EQ(run->keysDone(), 1);
}

// In semi-automatic mode the user plays the note; the run times none, so the note's end is
// found in the take even when the Multi-Sample has a release length.
TEST_F(RunFixture, SemiAutomaticTakeIsMarkedWhereTheUserPlayedTheNote)
{
    addLayer("Soft", 0, {60});
    RunOptions options;
    options.automatic = false;
    auto run = startRun(options);
    run->startCountdown();
    runUntil(*run, clock, clock.now + 1000);
    ASSERT_EQ(run->state(), RecordingRun::State::Recording);
    const int64_t armedAt = source.armedAtMs.back();
    const uint8_t noteOn[3] = {0x90, 60, 100};
    const uint8_t noteOff[3] = {0x80, 60, 0};
    runUntil(*run, clock, armedAt + 300);
    source.sendMidi(noteOn, 3);
    runUntil(*run, clock, armedAt + 900);
    source.sendMidi(noteOff, 3);
    runUntil(*run, clock, armedAt + 1400);
    run->stop();
    ASSERT_EQ(run->state(), RecordingRun::State::Checking);

    const TGmsl_key& key = layer(0).keys[60];
    EXPECT_NEAR(key.Note_In, 13230 + 441, 10);
    // The tone fades out over the 0.2 s after the Note Off (39690 + 441).
    EXPECT_GT(key.Note_Out, 40131);
    EXPECT_LE(key.Note_Out, 40131 + 8820);
    // No release part: it would start at a Note Off the run never sent.
    EXPECT_EQ(key.Release_In, key.Release_Out);
    EXPECT_GE(key.Release_In, 44100 * 14 / 10 - 1);
}

// The fake keeps recording for ever: the run must not poll for ever.
class StalledSource : public FakeTakeSource {
  public:
    using FakeTakeSource::FakeTakeSource;
    bool isRecording() override { return true; }
};

TEST_F(RunFixture, RunEndsWhenTheTakeNeverCompletes)
{
    addLayer("Soft", 0, {60});
    StalledSource stalled(clock);
    auto run = startRun({}, &stalled);
    runToEnd(*run, clock, 60 * 1000);
    EXPECT_TRUE(run->finished());
    EXPECT_TRUE(run->failed());
    EXPECT_EQ(observer.boxes, (std::vector<std::string>{
                                  "Error: The audio input stopped delivering audio before the "
                                  "take was complete."}));
}

// An instrument that renders each note at once: the take is complete as soon as it is
// handed over, and its sound starts exactly at the lead-in.
class OfflineSource : public FakeTakeSource, public OfflineNoteRenderer {
  public:
    using FakeTakeSource::FakeTakeSource;
    OfflineNoteRenderer* offlineRenderer() override { return this; }
    bool isRecording() override { return false; }
    void renderNote(const OfflineNote& note) override
    {
        notes.push_back(note);
        // The fake synth places the tone by the times of these messages.
        const int64_t armedAt = armedAtMs.back();
        sent.push_back({armedAt + int64_t(note.leadIn * 1000), {0x90, 0, 0}});
        sent.push_back({armedAt + int64_t((note.leadIn + note.noteLength) * 1000), {0x80, 0, 0}});
    }
    void resetNoteState() override { ++resets; }

    std::vector<OfflineNote> notes;
    int resets = 0;
};

TEST_F(RunFixture, OfflineNotesAreRenderedWithoutCountdownOrMidiAndTimedByTheNoteLength)
{
    addLayer("Soft", 3, {64});
    TGmsl& msl = layer(0);
    msl.MIDIoutAttackVelocity = 90;
    msl.MIDIoutReleaseVelocity = 30;
    msl.recordsettings.notelength1 = 1.0;
    msl.recordsettings.releaselength1 = 0.5;
    msl.recordsettings.recpause = 3.5; // no pause when bouncing
    msl.recordsettings.latency = 21;
    OfflineSource offline(clock);
    offline.latencyFrames = 0;
    const int64_t start = clock.now;
    auto run = startRun({}, &offline);
    runToEnd(*run, clock);
    ASSERT_TRUE(run->finished());
    EXPECT_FALSE(run->failed());
    EXPECT_TRUE(observer.logged("recording starts in 0 second(s)"));
    ASSERT_EQ(offline.armedAtMs.size(), 1u);
    EXPECT_EQ(offline.armedAtMs[0], start + 50); // the first countdown tick
    ASSERT_EQ(offline.notes.size(), 1u);
    const OfflineNote& note = offline.notes[0];
    EXPECT_EQ(std::tie(note.note, note.attackVelocity, note.releaseVelocity, note.channel,
                       note.noteLength, note.releaseLength, note.leadIn),
              std::make_tuple(64, 90, 30, 3, 1.0, 0.5, 0.5));
    // Only the stop sequence went out as MIDI; the renderer's note state was reset.
    EXPECT_EQ(offline.history.size(), 1u);
    EXPECT_EQ(offline.history[0].bytes, (std::vector<uint8_t>{0xB3, 123, 0}));
    EXPECT_EQ(offline.resets, 1);
    // The note end comes from the note length itself, less the latency setting.
    const TGmsl_key& key = msl.keys[64];
    EXPECT_NEAR(key.Note_In, 22050, 3);
    EXPECT_EQ(key.Note_Out - key.Note_In, 43173); // floor(44100 x 0.979)
}

} // namespace
} // namespace tg::test
