// `record`: the recording run over real devices or bounced from the hosted instrument,
// automatic or semi-automatic (asking about every take in the terminal), with its log and
// progress on stderr; Ctrl-C (or SIGTERM) stops it with the same stop sequence as the
// dialog's button.
#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "cli/InputChannelsArgument.h"
#include "cli/ProjectAccess.h"
#include "cli/RecordingMode.h"
#include "cli/SemiAutomaticSession.h"

#include "core/IniKeys.h"
#include "core/Model.h"
#include "core/NoteNames.h"
#include "core/Preferences.h"
#include "core/ProjectFile.h"
#include "devices/AudioEngine.h"
#include "devices/AudioManager.h"
#include "devices/DeviceTables.h"
#include "devices/InstrumentSpec.h"
#include "devices/MidiManager.h"
#include "devices/MidiPorts.h"
#include "recording/OfflineTakeSource.h"
#include "recording/PluginTakeSource.h"
#include "recording/RealTimeTakeSource.h"
#include "recording/RecordingRun.h"
#include "recording/StartupWiring.h"

#include <QCoreApplication>
#include <QSettings>

#include <unistd.h>

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
    bool json = false;      // one JSON document on stdout: the takes and their health
    bool offline = false;   // bounce from the hosted instrument, no audio device
    std::string instrument; // instrument choice; empty: the one stored for the user
    bool semi = false;      // semi-automatic, also when the project was made with `new --semi`
    bool yes = false;       // semi-automatic without questions: every take is kept
    int maxRecLength = 20;  // seconds: the longest semi-automatic take
    // "LEFT[,RIGHT]": 1-based device channels for this run; empty: the stored choice
    std::string inputChannels;
};

// --input-channels: the device channels every Multi-Sample of the run records from. They
// are chosen for the session only (project files do not keep them), so they are given here.
int chooseRunInputChannels(Model& model, const std::string& text, bool json)
{
    std::string message;
    for (int p = 0; p < model.projectCount(); ++p)
        for (int m = 0; m < model.project(p).mslCount; ++m)
            if (!chooseChannelsFromArgument(deviceTables(), model.project(p).msl[m], text,
                                            message)) {
                fail(message, json);
                return kExitBadUsage;
            }
    return kExitOk;
}

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
    void takeRecorded(const TakeReport& report) override { takes.push_back(report); }
    std::string failure;
    std::vector<TakeReport> takes;

  private:
    bool quiet_;
    std::string lastTitle_;
};

nlohmann::json takeJson(const TakeReport& take)
{
    return {{"project", take.project},
            {"multisample", take.multiSample},
            {"note", take.note},
            {"noteName", noteName(take.note)},
            {"kept", take.kept},
            {"file", take.file},
            {"frames", take.frames},
            {"framesExpected", take.health.framesExpected},
            {"framesReceived", take.health.framesReceived},
            {"framesMissing", take.health.framesMissing()},
            {"inputOverflows", take.health.inputOverflows},
            {"outputUnderflows", take.health.outputUnderflows}};
}

// The end of a run that got as far as recording: the reason it failed (empty: it did not)
// on stderr, or with --json one document with every take, kept or refused, and the reason.
int reportRun(const RecordOptions& options, const StderrObserver& observer,
              const std::string& failure)
{
    if (!options.json) {
        if (failure.empty())
            return kExitOk;
        std::cerr << failure << '\n';
        return kExitFailed;
    }
    nlohmann::json document;
    if (!failure.empty())
        document["error"] = failure;
    nlohmann::json takes = nlohmann::json::array();
    int kept = 0;
    for (const TakeReport& take : observer.takes) {
        takes.push_back(takeJson(take));
        kept += take.kept ? 1 : 0;
    }
    document["keysDone"] = kept;
    document["takes"] = std::move(takes);
    printJson(document);
    return failure.empty() ? kExitOk : kExitFailed;
}

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

// Runs the semi-automatic session over `run` (not yet opened) and returns why the run did
// not get through every key (empty when it did).
std::string recordSemiAutomatic(RecordingRun& run, const RunClock& clock,
                                SkippingRunClock* skipping, bool yes,
                                const StderrObserver& observer)
{
    if (!run.open().ok())
        return observer.failure;
    const bool completed = driveSemiAutomatic({run, clock, skipping, yes, &stopSignal});
    if (run.failed())
        return observer.failure;
    return completed && run.finished() ? std::string() : std::string("Recording stopped.");
}

// Semi-automatic when asked for, or when a project was made for it.
bool semiAutomaticRun(const RecordOptions& options)
{
    return options.semi ||
           std::any_of(options.projects.begin(), options.projects.end(),
                       [](const std::string& path) { return madeForSemiAutomatic(path); });
}

// Loads the project files into `model` and selects the first one (and the Multi-Sample).
// Returns kExitOk, or the status of the failure (reported).
int openProjects(Model& model, const RecordOptions& options)
{
    std::string message;
    int first = -1;
    for (const std::string& path : options.projects) {
        if (!openProjectFile(model, path, message))
            return fail(message, options.json);
        if (first < 0)
            first = model.currentProjectIndex();
    }
    model.selectProject(first);
    return selectMultiSampleArgument(model, options.multisample);
}

// The refusals of the record list need no device: they come before the devices are opened,
// as quickly as the user can read them.
int checkBeforeDevices(const RecordOptions& options, int command, const std::string& output)
{
    Model& model = commandModel();
    if (const int status = openProjects(model, options); status != kExitOk)
        return status;
    RecordList list;
    Result result = buildRecordList(model, command, list);
    std::string title;
    if (result.ok())
        result = checkRecordList(list, output, title);
    return result.ok() ? kExitOk : fail(result.message, options.json);
}

// The audio output the hosted instrument is heard on in real time (the user's choice in
// Tonegrabber.ini), or "-No Audio Out-".
std::string hostedOutputDevice()
{
    const QSettings ini(QString::fromStdString(ini::iniFilePath()), QSettings::IniFormat);
    const std::string output = ini.value(ini::kOutputAudioDeviceName).toString().toStdString();
    return output.empty() ? std::string(kNoAudioOutEntry) : output;
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
    const bool semi = semiAutomaticRun(options);
    if (semi && !options.yes && isatty(STDIN_FILENO) == 0) {
        std::cerr << "Bad argument" << (options.semi ? " --semi" : "") << ": the semi-automatic run"
                  << (options.semi ? "" : " (the project was made with new --semi)")
                  << " asks on standard input about every take, and standard input is not a "
                     "terminal; give --yes to keep every take without asking.\n";
        return kExitBadUsage;
    }

    // The hosted instrument: given here (and kept for the user), or the one kept last time.
    InstrumentSpec choice;
    const bool hosted = options.offline || !options.instrument.empty();
    if (hosted) {
        std::string text = options.instrument.empty() ? storedInstrumentSpec() : options.instrument;
        std::string choiceMessage;
        if (text.empty()) {
            std::cerr << "Bad argument --offline: no instrument was chosen yet; give --instrument "
                         "SPEC (a .sf2 path or lv2:URI).\n";
            return kExitBadUsage;
        }
        if (!parseInstrumentSpec(text, choice, choiceMessage)) {
            std::cerr << "Bad argument --instrument '" << text << "': " << choiceMessage << "\n";
            return kExitBadUsage;
        }
        if (!options.instrument.empty() && !storeInstrumentSpec(options.instrument, choiceMessage))
            return fail(choiceMessage, options.json);
    }
    // Bouncing needs no output: the instrument itself stands in for it (as the offline run
    // does). In real time the hosted instrument is taken from the user's output.
    const std::string output = options.offline ? std::string(kVstPluginEntry)
                               : hosted        ? hostedOutputDevice()
                                               : std::string(kNoAudioOutEntry);
    if (const int status = checkBeforeDevices(options, command, output); status != kExitOk)
        return status;

    int argc = 1;
    char name[] = "tonegrabber-cli";
    char* argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);

    Model& model = commandModel();
    std::string message;
    // Offline bouncing needs no device at all: the core starts without the device steps.
    const int initialized =
        options.offline ? initializeCore(model, determineCoreFolders(), StartupHooks{}, message)
                        : initializeWithDevices(model, determineCoreFolders(), message);
    if (!initialized)
        return fail(message, options.json);
    if (const int status = openProjects(model, options); status != kExitOk)
        return status;
    if (!options.inputChannels.empty()) {
        if (hosted) {
            std::cerr << "Bad argument --input-channels: the hosted instrument is recorded "
                         "without an audio input device.\n";
            return kExitBadUsage;
        }
        if (const int status = chooseRunInputChannels(model, options.inputChannels, options.json);
            status != kExitOk)
            return status;
    }

    StderrObserver observer(options.quiet);
    RunOptions runOptions;
    runOptions.command = command;
    runOptions.automatic = !semi;
    runOptions.maxRecLength = options.maxRecLength;
    runOptions.recordOnlyEmptyKeys = options.onlyEmpty;
    runOptions.keepLockedKeys = options.keepLocked;
    runOptions.verbose = options.verbose;
    runOptions.audioOutputDevice = output;

    if (options.offline) {
        OfflineTakeSource offline(choice);
        const auto begin = std::chrono::steady_clock::now();
        std::string failure;
        if (semi) {
            SkippingRunClock clock;
            RecordingRun run(model, runOptions, offline, clock, observer);
            stopSignal.store(0);
            std::signal(SIGINT, onStopSignal);
            std::signal(SIGTERM, onStopSignal);
            failure = recordSemiAutomatic(run, clock, &clock, options.yes, observer);
            std::signal(SIGINT, SIG_DFL);
            std::signal(SIGTERM, SIG_DFL);
            if (!offline.lastError().empty())
                failure = offline.lastError();
        } else if (!runOfflineRecording(model, runOptions, offline, observer, message)) {
            failure = message;
        }
        const double wall =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        // Every take was saved as it was made; this saves what a failure left changed.
        for (int i = 0; i < model.projectCount(); ++i)
            if (!saveProjectAgain(model.project(i), message) && failure.empty())
                failure = message;
        if (failure.empty() && !options.quiet)
            std::cerr << "Bounced " << offline.secondsRendered() << " s of audio from "
                      << offline.description() << " in " << wall << " s\n";
        return reportRun(options, observer, failure);
    }

    AudioManager audioManager;
    MidiManager midiManager;
    std::unique_ptr<TakeSource> source;
    if (hosted) {
        // The hosted instrument in real time is heard on the user's audio output, and it is
        // from that output that the recorder takes it.
        audioManager.setOutputDeviceName(output);
        source = std::make_unique<PluginTakeSource>(audioManager, choice);
    } else {
        // Nothing is played back here; without an output the hosted instrument cannot be
        // sampled in real time, and the run says so.
        audioManager.setOutputDeviceName(kNoAudioOutEntry);
        source = std::make_unique<RealTimeTakeSource>(audioManager, midiManager);
    }
    SteadyRunClock clock;
    RecordingRun run(model, runOptions, *source, clock, observer);

    stopSignal.store(0);
    std::signal(SIGINT, onStopSignal);
    std::signal(SIGTERM, onStopSignal);
    std::string failure;
    if (semi) {
        failure = recordSemiAutomatic(run, clock, nullptr, options.yes, observer);
        for (const RecordEntry& entry : run.recordList().entries)
            if (!saveProjectAgain(*entry.project, message) && failure.empty())
                failure = message;
    } else if (!run.open().ok()) {
        failure = observer.failure;
    } else {
        run.start();
        drive(run, clock);
        if (run.failed())
            failure = observer.failure;
        else if (stopSignal.load() != 0 || !run.finished())
            failure = "Recording stopped.";
        // Every take was saved as it was made; this saves what the stop changed.
        for (const RecordEntry& entry : run.recordList().entries)
            if (!saveProjectAgain(*entry.project, message) && failure.empty())
                failure = message;
    }
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    audio::closeStreams(message);
    audio::terminate();
    midi::destroyMidi();
    return reportRun(options, observer, failure);
}

} // namespace

void addRecordCommands(CliApp& app)
{
    auto options = std::make_shared<RecordOptions>();
    CLI::App* record = app.addCommand("record",
                                      "Records every selected key, from the Multi-Sample's devices "
                                      "or offline from the hosted instrument",
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
    record->add_flag("--json", options->json,
                     "Print one JSON document: every take with its frames, xruns and dropped "
                     "frames");
    record->add_flag(
        "--offline", options->offline,
        "Bounce from the hosted instrument as fast as the CPU allows (no audio device)");
    record->add_option("--instrument", options->instrument,
                       "Hosted instrument: PATH.sf2[?bank=B&preset=P&gain=G] or "
                       "lv2:URI[?symbol=value&...]; kept for the next time");
    record->add_flag("--semi", options->semi,
                     "Semi-automatic: Enter starts each countdown and stops the take, then keep "
                     "(k), discard (d), name (n NAME) or prehear (p) it; also the mode of a "
                     "project made with new --semi");
    record->add_flag("--yes", options->yes,
                     "Semi-automatic without questions: every countdown starts at once and every "
                     "take is kept (standard input need not be a terminal)");
    record->add_option("--input-channels", options->inputChannels,
                       "LEFT[,RIGHT]: the audio input device's channels to record (from 1; "
                       "see `devices`), for devices with more than two channels");
    record
        ->add_option("--max-rec-length", options->maxRecLength,
                     "Max Rec Length: seconds after which a semi-automatic take stops by itself "
                     "(default 20)")
        ->check(CLI::Range(0, 1000));
}

} // namespace tg::cli
