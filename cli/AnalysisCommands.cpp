// The analysis commands: auto (batch auto-note/auto-loop), loops, normalize, gain, levels,
// estimate.
#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "cli/InputLevels.h"
#include "cli/Progress.h"
#include "cli/ProjectAccess.h"

#include "analysis/BatchAuto.h"
#include "analysis/Estimate.h"
#include "analysis/LevelOperations.h"
#include "analysis/LoopQuality.h"
#include "analysis/LoopSpeed.h"
#include "analysis/MarkerMoves.h"
#include "audiofile/KeySampleAudio.h"
#include "core/Model.h"
#include "core/NoteNames.h"
#include "core/Preferences.h"
#include "core/ProjectFile.h"

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>

namespace tg::cli {

namespace {

// Options every project command shares.
struct ProjectArgs {
    std::string path;
    int multisample = -1; // -1: the project's current Multi-Sample
    int key = -1;
    std::string scope = "multisample";
    bool json = false;
    bool quiet = false;
};

void addProjectOptions(CLI::App* command, ProjectArgs& args, bool withKey,
                       const std::vector<std::string>& scopes)
{
    command->add_option("project", args.path, "the .TGprj file")->required();
    command->add_option("--multisample", args.multisample, "Multi-Sample index (0-based)")
        ->check(CLI::Range(0, kMaxMultiSamples - 1));
    command->add_option("--scope", args.scope, "which Key-Samples")->check(CLI::IsMember(scopes));
    if (withKey)
        command->add_option("--key", args.key, "the selected (loaded) key")
            ->check(CLI::Range(0, 127));
    command->add_flag("--json", args.json, "print one JSON document on stdout");
    command->add_flag("--quiet", args.quiet, "no progress on stderr");
}

// True (after saying so) when the sample scope is chosen without its key.
bool needsKey(const ProjectArgs& args)
{
    if (args.scope == "sample" && args.key < 0) {
        std::cerr << "--key: the sample scope needs the key number\n";
        return true;
    }
    return false;
}

// Checks the project arguments and loads the project file into the model. Returns the
// Project, or nullptr after reporting with `status` set.
Project* loadProject(const ProjectArgs& args, int& status)
{
    if (needsKey(args)) {
        status = kExitBadUsage;
        return nullptr;
    }
    if (std::filesystem::path(args.path).extension() != std::string(".") + kProjectExtension) {
        std::cerr << "project: expected a ." << kProjectExtension << " file, got \"" << args.path
                  << "\"\n";
        status = kExitBadUsage;
        return nullptr;
    }
    Model& model = commandModel();
    std::string message;
    if (!openProjectFile(model, args.path, message) || model.currentProject() == nullptr) {
        status = fail(message, args.json);
        return nullptr;
    }
    Project& project = *model.currentProject();
    if (args.multisample >= project.mslCount) {
        std::cerr << "--multisample: the project has " << project.mslCount << " Multi-Samples\n";
        status = kExitBadUsage;
        return nullptr;
    }
    return &project;
}

int chosenMultiSample(const Project& project, const ProjectArgs& args)
{
    return args.multisample >= 0 ? args.multisample : project.currentMsl;
}

KeyScope scopeOf(const std::string& name)
{
    return name == "sample"    ? KeyScope::Sample
           : name == "project" ? KeyScope::Project
                               : KeyScope::MultiSample;
}

// Prints a job's closing message; a failure goes through fail().
int finish(int result, const std::string& message, const ProjectArgs& args)
{
    if (result == kJobCancelled)
        return fail("cancelled", args.json);
    if (result != 1)
        return fail(message, args.json);
    if (args.json)
        printJson({{"message", message}});
    else
        std::cout << message << '\n';
    return kExitOk;
}

// "Key 60 (C4)" and, in a project of several Multi-Samples, which one.
std::string keyLabel(const Project& project, const KeyLoopQuality& entry)
{
    std::string label = "Key " + std::to_string(entry.note) + " (" + noteName(entry.note) + ")";
    if (project.mslCount > 1)
        label += " of Multi-Sample \"" + std::string(project.msl[entry.msl].name) + "\"";
    return label;
}

nlohmann::json loopJson(const KeyLoopQuality& entry)
{
    nlohmann::json j = {{"multisample", entry.msl},
                        {"key", entry.note},
                        {"noteName", noteName(entry.note)},
                        {"looped", entry.looped}};
    if (!entry.looped)
        return j;
    const LoopQuality& q = entry.quality;
    j.update({{"length", q.length},
              {"crossfade", q.crossfade},
              {"channel", q.channel},
              {"wrapStep", q.wrapStep},
              {"seamStep", q.seamStep},
              {"medianStep", q.medianStep},
              {"stepRatio", q.stepRatio()},
              {"peak", q.peak},
              {"levelStepDb", q.levelStepDb},
              {"seamError", q.seamError},
              {"click", q.click}});
    return j;
}

std::string loopLine(const Project& project, const KeyLoopQuality& entry)
{
    if (!entry.looped)
        return keyLabel(project, entry) + ": no loop";
    const LoopQuality& q = entry.quality;
    char figures[256];
    std::snprintf(figures, sizeof figures,
                  ": loop %lld frames, crossfade %lld, wrap step %.0f (%.0f of it the seam's) "
                  "against a median step of %.0f (%.1fx), level step %+.2f dB, seam error "
                  "%.4f%s",
                  static_cast<long long>(q.length), static_cast<long long>(q.crossfade), q.wrapStep,
                  q.seamStep, q.medianStep, q.stepRatio(), q.levelStepDb, q.seamError,
                  q.click ? "  CLICK" : "");
    return keyLabel(project, entry) + figures;
}

void addAuto(CliApp& app)
{
    struct Args : ProjectArgs {
        bool note = false, loop = false, equalLength = false, silence = false, releaseOff = false;
        bool dryRun = false;
        std::string loopSource = "settings";
    };
    auto args = std::make_shared<Args>();
    CLI::App* c =
        app.addCommand("auto", "Finds notes and loops of the recorded Key-Samples", [args]() {
            if (!args->note && !args->loop) {
                std::cerr << "auto: give --note, --loop or both\n";
                return kExitBadUsage;
            }
            int status = kExitOk;
            Project* project = loadProject(*args, status);
            if (project == nullptr)
                return status;
            const int msl = chosenMultiSample(*project, *args);
            BatchAutoOptions options;
            options.autoNote = args->note;
            options.autoLoop = args->loop;
            options.loopSource =
                args->loopSource == "loaded" ? LoopSource::LoadedKey : LoopSource::Settings;
            options.equalNoteLength = args->equalLength;
            options.equalSilence = args->silence;
            options.releaseOff = args->releaseOff;
            options.loadedMsl = msl;
            options.loadedNote = args->key;
            if ((options.loopSource == LoopSource::LoadedKey || args->equalLength ||
                 args->silence) &&
                args->key < 0) {
                std::cerr
                    << "--key: the options taken from the loaded Key-Sample need its key number\n";
                return kExitBadUsage;
            }
            ProgressPrinter printer(args->quiet);
            std::string message;
            const int result = batchAutoNoteLoop(*project, scopeOf(args->scope), msl, options,
                                                 std::ref(printer), message);
            if (result != 1)
                return finish(result, message, *args);
            if (!args->dryRun && !saveProjectAgain(*project, message))
                return fail(message, args->json);
            const size_t keys = keysInScope(*project, scopeOf(args->scope), msl, 0).size();
            // Loops that click are worth knowing about before anyone exports them.
            nlohmann::json clicking = nlohmann::json::array();
            if (args->loop) {
                std::vector<KeyLoopQuality> loops;
                if (!measureLoops(*project, scopeOf(args->scope), msl, 0, loops, message))
                    return fail(message, args->json);
                for (const KeyLoopQuality& entry : loops) {
                    if (!entry.looped || !entry.quality.click)
                        continue;
                    clicking.push_back(entry.note);
                    std::cerr << "warning: " << loopLine(*project, entry) << '\n';
                }
            }
            if (args->json)
                printJson({{"keys", keys}, {"saved", !args->dryRun}, {"clickingLoops", clicking}});
            else
                std::cout << "Auto-Note/Auto-Loop: " << keys << " Key-Samples"
                          << (args->dryRun ? " (not saved)" : ", project saved") << '\n';
            return kExitOk;
        });
    addProjectOptions(c, *args, true, {"multisample", "project"});
    c->add_flag("--note", args->note, "Auto-Note (using the Multi-Sample Record Settings)");
    c->add_flag("--loop", args->loop, "Auto-Loop");
    c->add_option("--loop-source", args->loopSource,
                  "loop percentages from the record settings or the loaded key")
        ->check(CLI::IsMember({"settings", "loaded"}));
    c->add_flag("--equal-length", args->equalLength, "all note lengths equal the loaded key's");
    c->add_flag("--silence", args->silence, "all silence markers equal the loaded key's");
    c->add_flag("--release-off", args->releaseOff, "Turn Release off");
    c->add_flag("--dry-run", args->dryRun, "do not save the project");
}

void addLoops(CliApp& app)
{
    auto args = std::make_shared<ProjectArgs>();
    CLI::App* c = app.addCommand(
        "loops", "Measures how the loops of the Key-Samples join (wrap step, level, seam)",
        [args]() {
            int status = kExitOk;
            Project* project = loadProject(*args, status);
            if (project == nullptr)
                return status;
            std::vector<KeyLoopQuality> loops;
            std::string message;
            if (!measureLoops(*project, scopeOf(args->scope), chosenMultiSample(*project, *args),
                              args->key, loops, message))
                return fail(message, args->json);
            int clicks = 0;
            nlohmann::json list = nlohmann::json::array();
            for (const KeyLoopQuality& entry : loops) {
                clicks += entry.looped && entry.quality.click;
                if (args->json)
                    list.push_back(loopJson(entry));
                else
                    std::cout << loopLine(*project, entry) << '\n';
            }
            if (args->json)
                printJson({{"loops", list}, {"clicks", clicks}});
            else
                std::cout << loops.size() << " Key-Samples, " << clicks << " clicking loops\n";
            return kExitOk;
        });
    addProjectOptions(c, *args, true, {"sample", "multisample", "project"});
}

void addNormalize(CliApp& app)
{
    struct Args : ProjectArgs {
        double db = 0.0;
        bool max = false, equalLr = false, noteRelease = false;
        CLI::Option* dbOption = nullptr;
    };
    auto args = std::make_shared<Args>();
    CLI::App* c = app.addCommand(
        "normalize", "Normalizes Key-Samples to a level or to the Multi-Sample maximum", [args]() {
            if (args->dbOption->count() == 0 && !args->max) {
                std::cerr << "normalize: give --db X or --multisample-max\n";
                return kExitBadUsage;
            }
            int status = kExitOk;
            Project* project = loadProject(*args, status);
            if (project == nullptr)
                return status;
            NormalizeOptions options;
            options.toMultiSampleMaximum = args->max;
            options.targetDb = args->db;
            options.equalLeftRight = args->equalLr;
            options.noteAndRelease = args->noteRelease;
            ProgressPrinter printer(args->quiet);
            std::string message;
            const int result = normalizeKeySamples(*project, scopeOf(args->scope),
                                                   chosenMultiSample(*project, *args), args->key,
                                                   options, std::ref(printer), message);
            return finish(result, message, *args);
        });
    addProjectOptions(c, *args, true, {"sample", "multisample", "project"});
    CLI::Option* db =
        c->add_option("--db", args->db, "target level in dB")->check(CLI::Range(-72.0, 0.0));
    CLI::Option* max =
        c->add_flag("--multisample-max", args->max, "to the maximum level of each Multi-Sample");
    db->excludes(max);
    args->dbOption = db;
    c->add_flag("--equal-lr", args->equalLr, "Normalize Left/Right equally");
    c->add_flag("--note-release-only", args->noteRelease, "Normalize only Note and Release");
}

void addGain(CliApp& app)
{
    struct Args : ProjectArgs {
        double db = 0.0;
        std::string channels = "both";
        bool noteRelease = false, noClipWarning = false, yes = false;
    };
    auto args = std::make_shared<Args>();
    CLI::App* c = app.addCommand("gain", "Changes the gain of Key-Samples", [args]() {
        int status = kExitOk;
        Project* project = loadProject(*args, status);
        if (project == nullptr)
            return status;
        GainOptions options;
        options.gainDb = args->db;
        options.channels = args->channels == "left"    ? GainChannels::Left
                           : args->channels == "right" ? GainChannels::Right
                                                       : GainChannels::Both;
        options.noteAndRelease = args->noteRelease;
        options.warnClipping = !args->noClipWarning;
        const bool yes = args->yes;
        ProgressPrinter printer(args->quiet);
        std::string message;
        const int result = changeGainOfKeySamples(
            *project, scopeOf(args->scope), chosenMultiSample(*project, *args), args->key, options,
            [yes](const std::string&) { return yes; }, std::ref(printer), message);
        return finish(result, message, *args);
    });
    addProjectOptions(c, *args, true, {"sample", "multisample", "project"});
    c->add_option("--db", args->db, "gain in dB")->required();
    c->add_option("--channels", args->channels, "which channels")
        ->check(CLI::IsMember({"both", "left", "right"}));
    c->add_flag("--note-release-only", args->noteRelease, "Gain Change only Note and Release");
    c->add_flag("--no-clip-warning", args->noClipWarning, "do not check for clipping first");
    c->add_flag("--yes", args->yes, "continue even when clipping will occur");
}

// The input `levels --input` listens to: --device with --format, else the chosen
// Multi-Sample's input when a project is given, else the preferences' input.
// False, with `status` set, when the project cannot be loaded.
bool inputLevelSource(const ProjectArgs& args, const std::string& device, const std::string& format,
                      const std::string& channels, InputLevelSource& source, int& status)
{
    if (!device.empty()) {
        source = {device, format, channels};
        return true;
    }
    if (!args.path.empty()) {
        Project* project = loadProject(args, status);
        if (project == nullptr)
            return false;
        const TGmsl& msl = project->msl[chosenMultiSample(*project, args)];
        source = {msl.AudioInDevice, msl.AudioInFormat, channels};
        return true;
    }
    Preferences prefs = defaultPreferences();
    loadPreferences(prefs);
    source = {prefs.AudioInDevice, prefs.AudioInFormat, channels};
    return true;
}

void addLevels(CliApp& app)
{
    struct Args : ProjectArgs {
        bool noteRelease = false;
        bool input = false;
        double seconds = 3.0;
        std::string device;
        std::string format = "44.1KHz, Stereo, 16bit";
        std::string channels;
    };
    auto args = std::make_shared<Args>();
    CLI::App* c = app.addCommand("levels", "Prints the highest level of the Key-Samples", [args]() {
        int status = kExitOk;
        if (args->input) {
            InputLevelSource source;
            if (!inputLevelSource(*args, args->device, args->format, args->channels, source,
                                  status))
                return status;
            return runInputLevels(source, args->seconds, args->json, args->quiet);
        }
        if (args->path.empty()) {
            std::cerr << "levels: the project file is needed (or --input)\n";
            return kExitBadUsage;
        }
        Project* project = loadProject(*args, status);
        if (project == nullptr)
            return status;
        ProgressPrinter printer(args->quiet);
        ChannelLevels levels;
        std::string message;
        const int result =
            findHighestLevel(*project, scopeOf(args->scope), chosenMultiSample(*project, *args),
                             args->key, args->noteRelease, std::ref(printer), levels, message);
        if (result == 1 && args->json) {
            const double peak = std::max(levels.left, levels.right);
            printJson({{"message", message},
                       {"left", levels.left},
                       {"right", levels.right},
                       {"peak", peak},
                       {"dB", levelInDb(peak)}});
            return kExitOk;
        }
        return finish(result, message, *args);
    });
    addProjectOptions(c, *args, true, {"sample", "multisample", "project"});
    c->add_flag("--note-release-only", args->noteRelease, "measure only Note and Release");
    // The live input needs no project: the device comes from --device, the project or the
    // preferences.
    c->get_option("project")->required(false);
    c->add_flag("--input", args->input, "live peak of the audio input instead of the files");
    c->add_option("--seconds", args->seconds, "how long to listen (--input)")
        ->check(CLI::Range(0.1, 3600.0));
    c->add_option("--device", args->device, "audio input device name (--input)");
    c->add_option("--format", args->format, "recording format with --device (--input)");
    c->add_option("--input-channels", args->channels,
                  "LEFT[,RIGHT]: the input device's channels to measure (from 1; see "
                  "`devices`), for devices with more than two channels (--input)");
}

void addEstimate(CliApp& app)
{
    struct Args : ProjectArgs {
        bool onlyEmpty = false, keepLocked = false;
    };
    auto args = std::make_shared<Args>();
    CLI::App* c =
        app.addCommand("estimate", "Estimates the time and size of a recording run", [args]() {
            int status = kExitOk;
            Project* project = loadProject(*args, status);
            if (project == nullptr)
                return status;
            // The command loads one project, so "all" open projects is that one.
            const KeyScope scope =
                args->scope == "multisample" ? KeyScope::MultiSample : KeyScope::Project;
            const std::vector<int> msls =
                multiSamplesInScope(*project, scope, chosenMultiSample(*project, *args));
            bool searches = false;
            for (int m : msls)
                searches = searches || project->msl[m].recordsettings.autoloop == 1;
            if (searches && !args->quiet)
                std::cerr << "measuring the loop-search speed...\n";
            const LoopSpeedTable speeds =
                searches ? measureLoopSearchSpeeds() : cachedLoopSearchSpeeds();
            EstimateOptions options;
            options.onlyEmpty = args->onlyEmpty;
            options.keepLocked = args->keepLocked;
            RecordingEstimate estimate;
            for (int m : msls)
                addMultiSampleEstimate(project->msl[m], options, speeds, estimate);
            const std::string time = formatEstimateTime(estimate.seconds);
            const std::string size = formatEstimateSize(estimate.bytes);
            if (args->json)
                printJson({{"seconds", estimate.seconds},
                           {"bytes", estimate.bytes},
                           {"time", time},
                           {"size", size}});
            else
                std::cout << time << '\n' << size << '\n';
            return kExitOk;
        });
    addProjectOptions(c, *args, false, {"multisample", "project", "all"});
    c->add_flag("--only-empty", args->onlyEmpty, "Record only empty Key-Samples");
    c->add_flag("--keep-locked", args->keepLocked, "Keep locked Key-Samples");
}

} // namespace

// marker: moves markers of one Key-Sample as the waveform editor does, and saves the project.
void addMarker(CliApp& app)
{
    struct Args : ProjectArgs {
        std::vector<std::string> assignments;
        bool dryRun = false;
    };
    auto args = std::make_shared<Args>();
    CLI::App* c = app.addCommand(
        "marker",
        "Moves markers of a Key-Sample (NAME=FRAME), onto zero crossings when it keeps them there",
        [args]() {
            std::vector<std::pair<MarkerId, int32_t>> moves;
            for (const std::string& a : args->assignments) {
                const size_t eq = a.find('=');
                MarkerId id = MarkerId::NoteIn;
                char* end = nullptr;
                const long long frame =
                    eq == std::string::npos ? 0 : std::strtoll(a.c_str() + eq + 1, &end, 10);
                if (eq == std::string::npos || !markerByName(a.substr(0, eq), id) ||
                    end == a.c_str() + eq + 1 || *end != '\0' || frame < INT32_MIN ||
                    frame > INT32_MAX) {
                    std::cerr << "marker: expected NAME=FRAME with NAME one of";
                    for (MarkerId known : allMarkers())
                        std::cerr << ' ' << markerName(known);
                    std::cerr << ", got \"" << a << "\"\n";
                    return kExitBadUsage;
                }
                moves.emplace_back(id, static_cast<int32_t>(frame));
            }
            int status = kExitOk;
            Project* project = loadProject(*args, status);
            if (project == nullptr)
                return status;
            Model& model = Model::instance();
            model.selectMultiSample(chosenMultiSample(*project, *args));
            WaveFormat format;
            std::vector<uint8_t> data;
            const Result loaded =
                loadKeySampleAudio(*project, *model.currentMultiSample(), args->key, format, data);
            if (!loaded.ok())
                return fail(loaded.message, args->json);
            nlohmann::json placedFrames = nlohmann::json::object();
            for (const auto& [id, frame] : moves) {
                int32_t placed = frame;
                const Result moved = moveMarkerOnAudio(model, args->key, id, frame, 0, format,
                                                       data.data(), data.size(), placed);
                if (!moved.ok())
                    return fail(moved.message, args->json);
                placedFrames[markerName(id)] = placed;
            }
            std::string message;
            if (!args->dryRun && !saveProjectAgain(*project, message))
                return fail(message, args->json);
            if (args->json)
                printJson(placedFrames);
            else
                for (const auto& [name, frame] : placedFrames.items())
                    std::cout << name << ' ' << frame.get<int32_t>() << '\n';
            return kExitOk;
        });
    addProjectOptions(c, *args, true, {"sample"});
    c->get_option("--key")->required();
    c->add_option("markers", args->assignments, "NAME=FRAME, e.g. Loop_In=12000")->required();
    c->add_flag("--dry-run", args->dryRun, "do not save the project");
}

void addAnalysisCommands(CliApp& app)
{
    addMarker(app);
    addAuto(app);
    addLoops(app);
    addNormalize(app);
    addGain(app);
    addLevels(app);
    addEstimate(app);
}

} // namespace tg::cli
