// `import`: WAV and AIFF files, or a folder of them, become Key-Samples of a project, or (with
// --sound-library) a folder of one-shots becomes a new Multi-Sample.
#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "cli/Progress.h"
#include "cli/ProjectAccess.h"

#include "core/Model.h"
#include "core/NoteNames.h"
#include "core/ProjectFile.h"
#include "extras/AudioImport.h"

#include <filesystem>
#include <iostream>
#include <memory>

namespace tg::cli {

namespace {

struct ImportArgs {
    std::string path;
    std::vector<std::string> files;
    int key = -1;
    int multisample = -1;
    int layer = 0;
    bool replace = false;
    bool skip = false;
    bool soundLibrary = false;
    std::string type = "audio";
    bool dryRun = false;
    bool json = false;
    bool quiet = false;
};

const char* sourceName(KeySource source)
{
    switch (source) {
    case KeySource::FileChunk:
        return "file";
    case KeySource::FileName:
        return "name";
    case KeySource::Chosen:
        return "chosen";
    case KeySource::Unknown:
        break;
    }
    return "unknown";
}

nlohmann::json planJson(const Project& project, const std::vector<ImportItem>& plan)
{
    nlohmann::json items = nlohmann::json::array();
    for (const ImportItem& item : plan)
        items.push_back(
            {{"file", item.path},
             {"key", item.note},
             {"noteName", noteName(item.note)},
             {"keyFrom", sourceName(item.source)},
             {"layer", item.layer},
             {"multisample", item.multiSample},
             {"multisampleName",
              item.multiSample < project.mslCount ? project.msl[item.multiSample].name : ""},
             {"occupied", item.occupied}});
    return items;
}

void printPlan(const Project& project, const std::vector<ImportItem>& plan)
{
    for (const ImportItem& item : plan) {
        const std::string target =
            item.multiSample < project.mslCount
                ? std::string("\"") + project.msl[item.multiSample].name + "\""
                : "new layer " + std::to_string(item.layer);
        std::cout << std::filesystem::path(item.path).filename().string() << " -> " << target
                  << ", key " << noteName(item.note) << " (" << item.note << ", from "
                  << sourceName(item.source) << ")" << (item.occupied ? ", occupied" : "") << '\n';
    }
}

ImportFileTypes typesOf(const std::string& type)
{
    return type == "wav"    ? ImportFileTypes::Wav
           : type == "aiff" ? ImportFileTypes::Aiff
                            : ImportFileTypes::Audio;
}

// Imports into the loaded current Project; 1 done, 0 failed with `message`.
int importInto(Model& model, const ImportArgs& args, ImportOutcome& outcome,
               std::vector<ImportItem>& plan, std::string& message)
{
    ProgressPrinter progress(args.quiet || args.json);
    ImportRun run;
    run.policy = args.replace ? ConflictPolicy::Replace
                 : args.skip  ? ConflictPolicy::Skip
                              : ConflictPolicy::Refuse;
    run.progress = [&progress](const std::string& text, double fraction) {
        progress.report(fraction, text);
        return true;
    };
    if (args.soundLibrary) {
        if (args.files.size() != 1)
            return setMessage(message, "--sound-library takes one folder.");
        return importSoundLibrary(model, args.files[0], args.key < 0 ? 36 : args.key, run, outcome,
                                  message);
    }
    std::vector<std::string> files;
    if (!collectImportFiles(args.files, typesOf(args.type), files, message))
        return 0;
    ImportRequest request;
    request.multiSample = args.multisample;
    request.firstChosenKey = args.key;
    request.layer = args.layer;
    Project& project = *model.currentProject();
    if (!planImport(project, files, request, plan, message) ||
        !checkImportPlan(project, plan, message))
        return 0;
    if (args.dryRun)
        return 1;
    return runImport(model, plan, run, outcome, message);
}

int runImportCommand(const ImportArgs& args)
{
    if (std::filesystem::path(args.path).extension() != std::string(".") + kProjectExtension) {
        std::cerr << "project: expected a ." << kProjectExtension << " file, got \"" << args.path
                  << "\"\n";
        return kExitBadUsage;
    }
    if (args.replace && args.skip) {
        std::cerr << "--replace and --skip exclude each other\n";
        return kExitBadUsage;
    }
    Model& model = Model::instance();
    std::string message;
    if (!openProjectFile(model, args.path, message) || model.currentProject() == nullptr)
        return fail(message, args.json);
    Project& project = *model.currentProject();
    if (args.multisample >= project.mslCount) {
        std::cerr << "--multisample: the project has " << project.mslCount << " Multi-Samples\n";
        return kExitBadUsage;
    }

    ImportOutcome outcome;
    std::vector<ImportItem> plan;
    const int ok = importInto(model, args, outcome, plan, message);
    if (!ok && outcome.refusedOccupied)
        message += " (--replace or --skip)";
    // Keys imported before a failure have their files written: the project keeps them.
    std::string saveMessage;
    if (!args.dryRun && (ok || outcome.imported > 0) && !saveProjectAgain(project, saveMessage))
        return fail(saveMessage, args.json);
    if (!ok)
        return fail(message, args.json);
    if (args.json) {
        printJson({{"imported", outcome.imported},
                   {"skipped", outcome.skipped},
                   {"layersAdded", outcome.layersAdded},
                   {"files", planJson(project, plan)},
                   {"saved", !args.dryRun}});
    } else {
        printPlan(project, plan);
        if (!args.dryRun)
            std::cout << "Imported " << outcome.imported << " file(s), skipped " << outcome.skipped
                      << ", added " << outcome.layersAdded << " layer(s); project saved\n";
    }
    return kExitOk;
}

} // namespace

void addImportCommands(CliApp& app)
{
    auto args = std::make_shared<ImportArgs>();
    CLI::App* c = app.addCommand(
        "import", "WAV/AIFF files or a folder of them become Key-Samples of the project",
        [args] { return runImportCommand(*args); });
    c->add_option("project", args->path, "the .TGprj file")->required();
    c->add_option("files", args->files, "WAV or AIFF files, or folders holding them")->required();
    c->add_option("--key", args->key,
                  "key of a file whose root key its file and name do not give (the next such "
                  "file takes the next key); with --sound-library the first key (default 36)")
        ->check(CLI::Range(0, 127));
    c->add_option("--multisample", args->multisample,
                  "Multi-Sample index (0-based) of layer 1; default the project's current one")
        ->check(CLI::Range(0, kMaxMultiSamples - 1));
    c->add_option("--layer", args->layer,
                  "velocity layer of every file (1 = the chosen Multi-Sample, 2 the next, ...); "
                  "default from layer tags in the names (\"v2\", \"vel2\", \"layer2\")")
        ->check(CLI::Range(1, kMaxMultiSamples));
    c->add_flag("--replace", args->replace, "files replace Key-Samples already there");
    c->add_flag("--skip", args->skip, "files for keys that hold a Key-Sample are left out");
    c->add_flag("--sound-library", args->soundLibrary,
                "one folder of one-shots becomes a new Multi-Sample, one key each");
    c->add_option("--type", args->type, "which files a folder gives: audio, wav or aiff")
        ->check(CLI::IsMember({"audio", "wav", "aiff"}));
    c->add_flag("--dry-run", args->dryRun, "only show where the files would go");
    c->add_flag("--json", args->json, "print one JSON document on stdout");
    c->add_flag("--quiet", args->quiet, "no progress on stderr");
}

} // namespace tg::cli
