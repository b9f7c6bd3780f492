// The soak: one project of a square lead over 21 keys, recorded pass after pass through the
// same code the record command runs, with each take's health and note-on gathered.
#include "bench/SoakRun.h"

#include "core/Message.h"
#include "core/Model.h"
#include "core/ProjectFile.h"
#include "devices/AudioEngine.h"
#include "devices/AudioManager.h"
#include "devices/DeviceTables.h"
#include "devices/MidiManager.h"
#include "devices/MidiPorts.h"
#include "recording/ProjectSetup.h"
#include "recording/RealTimeTakeSource.h"
#include "recording/RecordingRun.h"
#include "recording/StartupWiring.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <thread>

#include <unistd.h>

namespace tg {

namespace {

constexpr double kNoteSeconds = 1.0;
constexpr double kReleaseSeconds = 0.3;
constexpr double kPauseSeconds = 0.2;
constexpr double kNoteOnInTake = 0.5; // the run plays the note half a second into the take

double residentMb()
{
    std::ifstream statm("/proc/self/statm");
    long pages = 0;
    long resident = 0;
    statm >> pages >> resident;
    return double(resident) * double(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

// Gathers every take's health and, for the kept ones, where the note-on was found.
class SoakObserver : public RunObserver {
  public:
    SoakObserver(const TGmsl& msl, SoakFigures& figures) : msl_(msl), figures_(figures) {}

    void message(const std::string&, const std::string& text) override { failure = text; }
    void takeRecorded(const TakeReport& take) override
    {
        figures_.inputOverflows += take.health.inputOverflows;
        figures_.outputUnderflows += take.health.outputUnderflows;
        figures_.framesMissing += take.health.framesMissing();
        lastRefused = !take.kept;
        if (!take.kept) {
            ++figures_.takesRefused;
            return;
        }
        ++figures_.takesKept;
        ++keptThisPass;
        const double rate = 44100.0;
        noteOnsMs.push_back((double(msl_.keys[take.note].Note_In) / rate - kNoteOnInTake) * 1000.0);
    }

    std::string failure;
    bool lastRefused = false;
    int keptThisPass = 0;
    std::vector<double> noteOnsMs;

  private:
    const TGmsl& msl_;
    SoakFigures& figures_;
};

bool makeProject(Model& model, const SoakOptions& options, std::string& message)
{
    ProjectSetupRecord setup;
    setup.name = "Soak";
    setup.dataPath = (std::filesystem::path(options.folder) / "takes").string();
    std::filesystem::create_directories(setup.dataPath);
    setup.audioInDevice = options.audioDevice;
    setup.midiOutDevice = options.midiPort;
    setup.midiProgram = 80; // square lead: a sharp, steady onset
    setup.keyCount = 61;
    setup.keyStep = 3;
    setup.noteLength = kNoteSeconds;
    setup.releaseLength = float(kReleaseSeconds);
    setup.autoLoop = true;
    const Result made = createProjectFromSetup(model, setup);
    if (!made.ok()) {
        message = made.message;
        return false;
    }
    Project& project = *model.currentProject();
    for (int m = 0; m < project.mslCount; ++m)
        project.msl[m].recordsettings.recpause = kPauseSeconds;
    return saveProject(project, options.folder, setup.name, message) == 1;
}

// Drives one run until it ends or the deadline passes.
void drive(RecordingRun& run, const RunClock& clock, std::chrono::steady_clock::time_point end)
{
    while (!run.finished()) {
        if (std::chrono::steady_clock::now() >= end) {
            run.stop();
            return;
        }
        const int64_t next = run.nextDueMs();
        if (next < 0)
            return;
        const int64_t wait = std::clamp<int64_t>(next - clock.nowMs(), 0, 20);
        if (wait > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(wait));
        run.service();
    }
}

void summarizeTiming(std::vector<double> onsets, SoakFigures& figures)
{
    if (onsets.empty())
        return;
    std::sort(onsets.begin(), onsets.end());
    const double median = onsets[onsets.size() / 2];
    figures.medianLatencyMs = median;
    figures.worstTimingErrorMs =
        std::max(std::fabs(onsets.front() - median), std::fabs(onsets.back() - median));
}

} // namespace

bool runSoak(const SoakOptions& options, SoakFigures& figures,
             const std::function<void(const std::string&)>& progress)
{
    figures = SoakFigures{};
    auto model = std::make_unique<Model>();
    CoreFolders folders;
    folders.programFolder = options.folder;
    folders.userDataFolder = options.folder;
    std::string message;
    if (!initializeWithDevices(*model, folders, message) ||
        !makeProject(*model, options, message)) {
        figures.error = message;
        return false;
    }

    RunOptions runOptions;
    runOptions.command = kRecordSelectedProject;
    runOptions.recordOnlyEmptyKeys = false; // every pass records every key again
    runOptions.keepLockedKeys = false;
    runOptions.verbose = false;
    runOptions.closeAfterRecording = false;
    runOptions.audioOutputDevice = kNoAudioOutEntry;

    const auto begin = std::chrono::steady_clock::now();
    const auto end = begin + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                                 std::chrono::duration<double>(options.minutes * 60.0));
    {
        AudioManager audioManager;
        MidiManager midiManager;
        audioManager.setOutputDeviceName(kNoAudioOutEntry);
        RealTimeTakeSource source(audioManager, midiManager);
        SteadyRunClock clock;
        SoakObserver observer(model->currentProject()->msl[0], figures);
        while (std::chrono::steady_clock::now() < end && figures.error.empty()) {
            observer.failure.clear();
            observer.keptThisPass = 0;
            RecordingRun run(*model, runOptions, source, clock, observer);
            if (!run.open().ok()) {
                figures.error = observer.failure;
                break;
            }
            run.start();
            drive(run, clock, end);
            ++figures.passes;
            if (run.failed()) {
                if (!observer.lastRefused)
                    figures.error = observer.failure; // not a matter of dropped frames
                else {
                    ++figures.runsStopped;
                    figures.stopReasons.push_back(observer.failure);
                }
            }
            if (figures.passes == 1)
                figures.rssAfterFirstPassMb = residentMb();
            progress(formatText("pass %d: %d take(s) kept, %d refused so far, %d xrun(s), RSS "
                                "%.1f MB",
                                figures.passes, observer.keptThisPass, figures.takesRefused,
                                figures.inputOverflows + figures.outputUnderflows, residentMb()));
        }
        summarizeTiming(observer.noteOnsMs, figures);
        figures.rssAtEndMb = residentMb();
    }
    figures.minutes =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() / 60.0;
    audio::closeStreams(message);
    audio::terminate();
    midi::destroyMidi();
    return figures.error.empty();
}

std::string soakReport(const SoakFigures& f)
{
    std::string text = formatText(
        "soak: %.1f min, %d pass(es), %d take(s) kept, %d refused for dropped frames, %d "
        "run(s) stopped\n"
        "xruns: %d input overflow(s), %d output underflow(s)\n"
        "dropped frames: %lld\n"
        "note-on: median %.1f ms after the Note On, worst timing error %.1f ms\n"
        "memory: RSS %.1f MB after the first pass, %.1f MB at the end (%+.1f MB)\n",
        f.minutes, f.passes, f.takesKept, f.takesRefused, f.runsStopped, f.inputOverflows,
        f.outputUnderflows, f.framesMissing, f.medianLatencyMs, f.worstTimingErrorMs,
        f.rssAfterFirstPassMb, f.rssAtEndMb, f.rssAtEndMb - f.rssAfterFirstPassMb);
    // One reason says what they look like; the count is above.
    if (!f.stopReasons.empty())
        text += "last stop: " + f.stopReasons.back() + "\n";
    if (!f.error.empty())
        text += "error: " + f.error + "\n";
    return text;
}

} // namespace tg
