// `record`: the automatic recording run over real devices, with its log and progress on
// stderr; Ctrl-C (or SIGTERM) stops it with the same stop sequence as the dialog's button.
#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "cli/ProjectAccess.h"

#include "core/Model.h"
#include "core/Preferences.h"
#include "core/ProjectFile.h"
#include "devices/AudioEngine.h"
#include "devices/AudioManager.h"
#include "devices/DeviceTables.h"
#include "devices/MidiManager.h"
#include "devices/MidiPorts.h"
#include "recording/RealTimeTakeSource.h"
#include "recording/RecordingRun.h"
#include "recording/StartupWiring.h"

#include <QCoreApplication>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <iostream>
#include <memory>
#include <thread>

namespace tg::cli {

namespace {

std::atomic<int> stopSignal{0};

extern "C" void onStopSignal(int signal)
{
    stopSignal.store(signal);
}

struct RecordOptions {
    std::vector<std::string> projects;
    std::string scope = "project";
    int multisample = -1;
    bool onlyEmpty = false;
    bool keepLocked = false;
    bool verbose = false;
    bool quiet = false;
};

// The log's line breaks are the dialog's (\r\n); a terminal wants plain ones.
std::string plainLines(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

class StderrObserver : public RunObserver {
  public:
    explicit StderrObserver(bool quiet) : quiet_(quiet) {}
    void log(const std::string& text) override { std::cerr << plainLines(text) << '\n'; }
    void progress(const std::string& title, int, int) override
    {
        // The title is shown again when a key begins; a line per change is enough.
        if (!quiet_ && title != lastTitle_)
            std::cerr << title << '\n';
        lastTitle_ = title;
    }
    void message(const std::string&, const std::string& text) override { failure = text; }
    std::string failure;

  private:
    bool quiet_;
    std::string lastTitle_;
};

// Waits on the run's timers in small steps, so a stop signal is seen quickly.
void drive(RecordingRun& run, const RunClock& clock)
{
    while (!run.finished()) {
        if (stopSignal.load() != 0) {
            run.stop();
            return;
        }
        const int64_t next = run.nextDueMs();
        if (next < 0)
            return; // nothing is running: a state that waits for a user, not for a timer
        const int64_t wait = std::clamp<int64_t>(next - clock.nowMs(), 0, 20);
        if (wait > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(wait));
        run.service();
    }
}

// Loads the project files into `model` and selects the first one (and the Multi-Sample).
// Returns kExitOk, or the status of the failure (reported).
int openProjects(Model& model, const RecordOptions& options)
{
    std::string message;
    int first = -1;
    for (const std::string& path : options.projects) {
        if (!openProjectFile(model, path, message))
            return fail(message, false);
        if (first < 0)
            first = model.currentProjectIndex();
    }
    model.selectProject(first);
    if (options.multisample >= 0) {
        if (options.multisample >= model.currentProject()->mslCount) {
            std::cerr << "Bad argument --multisample " << options.multisample
                      << ": the project has " << model.currentProject()->mslCount
                      << " Multi-Sample(s).\n";
            return kExitBadUsage;
        }
        model.selectMultiSample(options.multisample);
    }
    return kExitOk;
}

// The refusals of the record list need no device: they come before the devices are opened,
// as quickly as the user can read them.
int checkBeforeDevices(const RecordOptions& options, int command)
{
    auto model = std::make_unique<Model>();
    loadPreferences(model->preferences());
    if (const int status = openProjects(*model, options); status != kExitOk)
        return status;
    RecordList list;
    Result result = buildRecordList(*model, command, list);
    std::string title;
    if (result.ok())
        result = checkRecordList(list, kNoAudioOutEntry, title);
    return result.ok() ? kExitOk : fail(result.message, false);
}

int runRecord(const RecordOptions& options)
{
    int command = kRecordSelectedProject;
    if (options.scope == "multisample")
        command = kRecordSelectedMultiSample;
    else if (options.scope == "all")
        command = kRecordAllProjects;
    if (command != kRecordAllProjects && options.projects.size() > 1) {
        std::cerr << "Bad argument: several project files need --scope all.\n";
        return kExitBadUsage;
    }

    if (const int status = checkBeforeDevices(options, command); status != kExitOk)
        return status;

    int argc = 1;
    char name[] = "tonegrabber-cli";
    char* argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);

    auto model = std::make_unique<Model>();
    std::string message;
    if (!initializeWithDevices(*model, determineCoreFolders(), message))
        return fail(message, false);
    if (const int status = openProjects(*model, options); status != kExitOk)
        return status;

    AudioManager audioManager;
    // Nothing is played back here; without an output the hosted instrument cannot be
    // sampled in real time, and the run says so.
    audioManager.setOutputDeviceName(kNoAudioOutEntry);
    MidiManager midiManager;
    RealTimeTakeSource source(audioManager, midiManager);
    SteadyRunClock clock;
    StderrObserver observer(options.quiet);
    RunOptions runOptions;
    runOptions.command = command;
    runOptions.automatic = true;
    runOptions.recordOnlyEmptyKeys = options.onlyEmpty;
    runOptions.keepLockedKeys = options.keepLocked;
    runOptions.verbose = options.verbose;
    runOptions.audioOutputDevice = kNoAudioOutEntry;
    RecordingRun run(*model, runOptions, source, clock, observer);

    stopSignal.store(0);
    std::signal(SIGINT, onStopSignal);
    std::signal(SIGTERM, onStopSignal);
    int status = kExitOk;
    if (!run.open().ok()) {
        status = fail(observer.failure, false);
    } else {
        run.start();
        drive(run, clock);
        if (run.failed()) {
            status = fail(observer.failure, false);
        } else if (stopSignal.load() != 0 || !run.finished()) {
            status = fail("Recording stopped.", false);
        }
        // Every take was saved as it was made; this saves what the stop changed.
        for (const RecordEntry& entry : run.recordList().entries)
            if (!saveProjectAgain(*entry.project, message))
                status = fail(message, false);
    }
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    audio::closeStreams(message);
    audio::terminate();
    midi::destroyMidi();
    return status;
}

} // namespace

void addRecordCommands(CliApp& app)
{
    auto options = std::make_shared<RecordOptions>();
    CLI::App* record = app.addCommand(
        "record", "Records every selected key (automatic mode) over the Multi-Sample's devices.",
        [options] { return runRecord(*options); });
    record->add_option("project", options->projects, "PATH.TGprj (several with --scope all)")
        ->required();
    record->add_option("--scope", options->scope, "multisample, project (default) or all")
        ->check(CLI::IsMember({"multisample", "project", "all"}));
    record
        ->add_option("--multisample", options->multisample,
                     "Multi-Sample index for --scope multisample (default: the current one)")
        ->check(CLI::Range(0, kMaxMultiSamples - 1));
    record->add_flag("--only-empty", options->onlyEmpty, "Record only empty Key-Samples");
    record->add_flag("--keep-locked", options->keepLocked,
                     "Skip keys that have audio and are locked");
    record->add_flag("--verbose", options->verbose, "Write the detailed steps to the log");
    record->add_flag("--quiet", options->quiet, "No progress lines");
}

} // namespace tg::cli
