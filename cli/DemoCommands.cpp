// `demo [OUTDIR]`: the main job on the embedded default. Two Projects sampled offline from
// the General MIDI SoundFont through the hosted instrument, auto-noted and auto-looped,
// exported as SFZ, SoundFont 2 and Bitwig, with a table of what was made and how long each
// step took.
#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "cli/ProjectAccess.h"

#include "analysis/BatchAuto.h"
#include "core/Message.h"
#include "core/Model.h"
#include "core/ProjectFile.h"
#include "export/ExportAudioServices.h"
#include "export/ExportFormats.h"
#include "export/ExportRunner.h"
#include "recording/OfflineTakeSource.h"
#include "recording/ProjectSetup.h"
#include "recording/RecordingRun.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>

namespace tg::cli {

namespace {

constexpr const char* kDemoSoundFont = "/usr/share/sounds/sf2/FluidR3_GM.sf2";

// One Project of the demo: a name and the General MIDI program it samples.
struct DemoInstrument {
    const char* name;
    int preset;
};
constexpr DemoInstrument kDemoInstruments[] = {{"DemoPiano", 0}, {"DemoStrings", 48}};

// One row of the closing table.
struct DemoStep {
    std::string project;
    std::string step;
    double seconds = 0.0;
    std::string made;
};

class Stopwatch {
  public:
    double seconds() const
    {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    }

  private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// The run's log is for a dialog; the demo shows one progress line per take: a live line on a
// terminal, plain lines otherwise.
class DemoObserver : public RunObserver {
  public:
    explicit DemoObserver(bool quiet) : quiet_(quiet), terminal_(isatty(STDERR_FILENO) != 0) {}
    ~DemoObserver() override
    {
        if (terminal_ && drawn_)
            std::cerr << '\n';
    }
    void progress(const std::string& title, int done, int total) override
    {
        if (quiet_ || done == lastDone_)
            return;
        lastDone_ = done;
        const int percent = total > 0 ? done * 100 / total : 100;
        if (terminal_) {
            std::cerr << '\r' << percent << " % " << title << "\x1b[K" << std::flush;
            drawn_ = true;
        } else {
            std::cerr << percent << " % " << title << '\n';
        }
    }

  private:
    bool quiet_;
    bool terminal_;
    bool drawn_ = false;
    int lastDone_ = -1;
};

ProjectSetupRecord demoSetup(const DemoInstrument& instrument, const std::string& dataPath)
{
    ProjectSetupRecord setup;
    setup.name = instrument.name;
    setup.dataPath = dataPath;
    setup.audioInDevice = kPluginDeviceName;
    setup.midiOutDevice = kPluginDeviceName;
    setup.pluginRecording = true;
    setup.sampleFormat = "44.1KHz, Stereo, 16bit";
    setup.keyCount = 61;
    setup.velocityLayers = 3;
    setup.keyStep = 3;
    setup.noteLength = 3.0;
    setup.releaseLength = 1.0f;
    setup.autoLoop = true;
    setup.complexity = LoopComplexity::Intermediate;
    return setup;
}

int bounceProject(Model& model, OfflineTakeSource& source, bool quiet, std::string& message)
{
    DemoObserver observer(quiet);
    RunOptions options;
    options.command = kRecordSelectedProject;
    options.recordOnlyEmptyKeys = false;
    options.keepLockedKeys = false;
    options.verbose = false;
    return runOfflineRecording(model, options, source, observer, message);
}

int exportAs(Project& project, const char* key, const std::string& destination,
             std::string& message)
{
    ExportRequest request;
    request.menuText = menuTextForShortKey(key);
    request.destination = destination;
    return runExport(project, request, defaultExportServices(), message);
}

std::string sizeText(const std::string& path)
{
    std::error_code error;
    const auto bytes = std::filesystem::file_size(path, error);
    return error ? std::string("?") : formatText("%.1f MB", double(bytes) / 1.0e6);
}

void printTable(const std::vector<DemoStep>& steps, double audioSeconds, double renderSeconds,
                double bounceSeconds)
{
    std::printf("%-12s %-22s %9s  %s\n", "project", "step", "seconds", "made");
    for (const DemoStep& row : steps)
        std::printf("%-12s %-22s %9.2f  %s\n", row.project.c_str(), row.step.c_str(), row.seconds,
                    row.made.c_str());
    if (renderSeconds > 0.0 && bounceSeconds > 0.0) {
        std::printf("offline bouncing: %.1f s of audio rendered in %.2f s = %.0fx real time\n",
                    audioSeconds, renderSeconds, audioSeconds / renderSeconds);
        std::printf("whole recording runs (rendering, markers, loops, files): %.2f s = %.0fx "
                    "real time\n",
                    bounceSeconds, audioSeconds / bounceSeconds);
    }
}

// The names the demo makes in its folder; nothing else may be there when it starts, so that
// running it again replaces only what it made before.
bool madeByTheDemo(const std::string& name)
{
    if (name == "sfz" || name == "sf2" || name == "bitwig")
        return true;
    for (const DemoInstrument& instrument : kDemoInstruments) {
        const std::string project = instrument.name;
        if (name == project + ".TGprj" || name == project + "_data")
            return true;
    }
    return false;
}

// The demo works in an empty or new folder, or in one an earlier demo made; it never replaces
// or deletes files it did not make. Returns 1, or 0 with `message`.
int prepareDemoFolder(const std::string& folder, std::string& message)
{
    std::error_code error;
    if (std::filesystem::exists(folder, error)) {
        if (!std::filesystem::is_directory(folder, error)) {
            message = "The demo's folder '" + folder + "' is a file.";
            return 0;
        }
        bool ours = true;
        for (const auto& entry : std::filesystem::directory_iterator(folder, error))
            ours = ours && madeByTheDemo(entry.path().filename().string());
        if (error) {
            message = "The folder '" + folder + "' cannot be read: " + error.message() + ".";
            return 0;
        }
        if (!ours) {
            message = "The folder '" + folder +
                      "' holds files the demo did not make; name a new or empty folder.";
            return 0;
        }
    }
    std::filesystem::create_directories(folder, error);
    if (error || !std::filesystem::is_directory(folder, error)) {
        message = "The folder '" + folder + "' cannot be made.";
        return 0;
    }
    return 1;
}

int runDemo(const std::string& outDir, bool quiet)
{
    std::string message;
    if (outDir.empty())
        return fail("No folder given for the demo: the path is empty.", false);
    const std::string folder = std::filesystem::absolute(outDir).lexically_normal().string();
    if (!prepareDemoFolder(folder, message))
        return fail(message, false);
    if (!std::filesystem::exists(kDemoSoundFont))
        return fail(std::string("The General MIDI SoundFont '") + kDemoSoundFont +
                        "' is missing (scripts/install-deps.sh installs it).",
                    false);

    std::vector<DemoStep> steps;
    double audioSeconds = 0.0;
    double bounceSeconds = 0.0;
    double renderSeconds = 0.0;
    std::error_code error;
    for (const DemoInstrument& instrument : kDemoInstruments) {
        Model& model = commandModel();
        const std::string name = instrument.name;
        const std::string dataPath = folder + "/" + name + "_data";
        std::filesystem::create_directories(dataPath, error);

        Stopwatch create;
        const Result made = createProjectFromSetup(model, demoSetup(instrument, dataPath));
        if (!made.ok())
            return fail(made.message, false);
        Project& project = *model.currentProject();
        const std::string projectFile = folder + "/" + name + ".TGprj";
        if (!saveProject(project, folder, name, message))
            return fail(message, false);
        steps.push_back({name, "create Project", create.seconds(), projectFile});

        InstrumentSpec choice;
        choice.path = kDemoSoundFont;
        choice.preset = instrument.preset;
        OfflineTakeSource source(choice);
        Stopwatch bounce;
        if (!bounceProject(model, source, quiet, message))
            return fail(message, false);
        const double bounced = bounce.seconds();
        audioSeconds += source.secondsRendered();
        bounceSeconds += bounced;
        renderSeconds += source.renderWallSeconds();
        steps.push_back({name, "bounce offline", bounced,
                         formatText("%.0f s of audio, %s", source.secondsRendered(),
                                    source.description().c_str())});

        Stopwatch autoStep;
        BatchAutoOptions options;
        options.autoNote = true;
        options.autoLoop = true;
        const JobProgress progress = [](const std::string&, double) { return true; };
        if (batchAutoNoteLoop(project, KeyScope::Project, 0, options, progress, message) != 1)
            return fail(message, false);
        if (!saveProjectAgain(project, message))
            return fail(message, false);
        steps.push_back({name, "auto-note + auto-loop", autoStep.seconds(), projectFile});

        // Each format in a folder of its own: the SFZ brings its WAV files along.
        const struct {
            const char* key;
            const char* extension;
            const char* step;
        } exports[] = {{"sfz", ".sfz", "export SFZ"},
                       {"sf2", ".sf2", "export SoundFont 2"},
                       {"bitwig", ".multisample", "export Bitwig"}};
        for (const auto& target : exports) {
            Stopwatch exportStep;
            const std::string formatFolder = folder + "/" + target.key;
            std::filesystem::create_directories(formatFolder, error);
            const std::string file = formatFolder + "/" + name + target.extension;
            if (!exportAs(project, target.key, file, message))
                return fail(message, false);
            steps.push_back(
                {name, target.step, exportStep.seconds(), file + " (" + sizeText(file) + ")"});
        }
    }
    printTable(steps, audioSeconds, renderSeconds, bounceSeconds);
    return kExitOk;
}

} // namespace

void addDemoCommands(CliApp& app)
{
    auto outDir = std::make_shared<std::string>("tonegrabber-demo");
    auto quiet = std::make_shared<bool>(false);
    CLI::App* demo = app.addCommand(
        "demo",
        "The main job: samples a piano and strings from the General MIDI SoundFont through the "
        "hosted instrument (offline), finds notes and loops, exports SFZ, SF2 and Bitwig",
        [outDir, quiet] { return runDemo(*outDir, *quiet); });
    demo->add_option("outdir", *outDir, "folder for everything made (default tonegrabber-demo)");
    demo->add_flag("--quiet", *quiet, "no progress on stderr");
}

} // namespace tg::cli
