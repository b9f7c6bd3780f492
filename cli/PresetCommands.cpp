// `preset save|list|rename|delete|apply`: a Project's settings without audio kept under a name,
// and `copy-instrument`: Multi-Samples with their Key-Samples copied into another project.
#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "cli/ProjectAccess.h"

#include "core/Model.h"
#include "core/Names.h"
#include "core/ProjectFile.h"
#include "extras/InstrumentCopier.h"
#include "extras/Presets.h"
#include "recording/ProjectSetup.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <sstream>

namespace fs = std::filesystem;

namespace tg::cli {

namespace {

// True (after saying so) unless `path` names a project file.
bool isProjectPath(const std::string& path, const char* what)
{
    if (fs::path(path).extension() == std::string(".") + kProjectExtension)
        return true;
    std::cerr << what << ": expected a ." << kProjectExtension << " file, got \"" << path << "\"\n";
    return false;
}

struct PresetArgs {
    std::string name;
    std::string newName;
    std::string path;
    std::string dataPath;
    bool replace = false;
    bool json = false;
};

int runSave(const PresetArgs& args)
{
    if (!isProjectPath(args.path, "project"))
        return kExitBadUsage;
    Model& model = Model::instance();
    std::string message;
    if (!openProjectFile(model, args.path, message))
        return fail(message, args.json);
    const auto replace = [&args](const std::string&) { return args.replace; };
    if (!savePreset(*model.currentProject(), args.name, message,
                    args.replace ? OverwriteQuestion(replace) : OverwriteQuestion()))
        return fail(message, args.json);
    std::cout << "Saved the preset \"" << args.name << "\" (" << presetFilePath(args.name) << ")\n";
    return kExitOk;
}

int runList(const PresetArgs& args)
{
    const std::vector<std::string> names = listPresets();
    if (args.json)
        printJson({{"folder", presetsFolder()}, {"presets", names}});
    else
        for (const std::string& name : names)
            std::cout << name << '\n';
    return kExitOk;
}

int runApply(const PresetArgs& args)
{
    if (!isProjectPath(args.path, "project"))
        return kExitBadUsage;
    const fs::path file = fs::absolute(args.path);
    std::error_code error;
    if (fs::exists(file, error))
        return fail("The project file '" + file.string() + "' already exists.", false);
    const Result folder = checkSetupDataPath(args.dataPath);
    if (!folder.ok())
        return fail(folder.message, false);
    Model& model = Model::instance();
    loadPreferences(model.preferences());
    std::string message;
    const std::string dataPath = fs::absolute(args.dataPath).lexically_normal().string();
    if (!applyPreset(model, args.name, file.stem().string(), dataPath, message) ||
        !saveProject(*model.currentProject(), file.parent_path().string(), file.stem().string(),
                     message))
        return fail(message, false);
    std::cout << "Created " << file.string() << " from the preset \"" << args.name << "\"\n";
    return kExitOk;
}

void addPresetCommands(CliApp& app)
{
    using Runner = int (*)(const PresetArgs&);
    auto args = std::make_shared<PresetArgs>();
    auto subcommands = std::make_shared<std::vector<std::pair<CLI::App*, Runner>>>();
    CLI::App* preset = app.addCommand(
        "preset", "Presets: a Project's settings without audio, kept by name", [args, subcommands] {
            for (const auto& [command, run] : *subcommands)
                if (command->parsed())
                    return run(*args);
            return kExitBadUsage;
        });
    preset->require_subcommand(1);
    const auto sub = [&](const char* name, const char* description, Runner run) {
        CLI::App* command = preset->add_subcommand(name, description);
        subcommands->emplace_back(command, run);
        return command;
    };

    CLI::App* save = sub("save", "Stores the project's settings as a preset", runSave);
    save->add_option("name", args->name, "preset name")->required();
    save->add_option("project", args->path, "PATH.TGprj")->required();
    save->add_flag("--replace", args->replace, "replace a preset of that name");

    CLI::App* list = sub("list", "Names the stored presets", runList);
    list->add_flag("--json", args->json, "print one JSON document on stdout");

    CLI::App* apply = sub("apply", "A new project from a preset, ready to record", runApply);
    apply->add_option("name", args->name, "preset name")->required();
    apply->add_option("project", args->path, "NEW.TGprj (its base name names the Project)")
        ->required();
    apply->add_option("--data-path", args->dataPath, "existing folder for the Key-Sample files")
        ->required();

    CLI::App* rename = sub("rename", "Renames a preset", [](const PresetArgs& a) {
        std::string message;
        return renamePreset(a.name, a.newName, message) ? kExitOk : fail(message, false);
    });
    rename->add_option("name", args->name, "preset name")->required();
    rename->add_option("new-name", args->newName, "its new name")->required();

    CLI::App* remove = sub("delete", "Deletes a preset", [](const PresetArgs& a) {
        std::string message;
        return deletePreset(a.name, message) ? kExitOk : fail(message, false);
    });
    remove->add_option("name", args->name, "preset name")->required();
}

struct CopyArgs {
    std::string from;
    std::string to;
    std::vector<int> multisamples;
    bool yes = false;
};

int runCopy(const CopyArgs& args)
{
    if (!isProjectPath(args.from, "from") || !isProjectPath(args.to, "to"))
        return kExitBadUsage;
    const fs::path target = fs::absolute(args.to);
    Model& model = Model::instance();
    std::string message;
    if (!openProjectFile(model, args.from, message))
        return fail(message, false);
    const int source = model.currentProjectIndex();
    std::error_code error;
    const bool existing = fs::exists(target, error);
    if (existing) {
        ProjectLoadOptions options;
        options.skipNameCheck = true; // two projects of one name may well swap instruments
        ProjectLoadOutcome loaded;
        if (!loadProjects(model, target.parent_path().string(), {target.filename().string()},
                          options, loaded, message))
            return fail(message, false);
    } else {
        // A new project with its data folder beside it, as "Save as" makes it.
        const Result made = model.newProject();
        if (!made.ok())
            return fail(made.message, false);
        Project& created = *model.currentProject();
        copyText(created.name, target.stem().string().c_str());
        const std::string data =
            projectDataFolder(target.parent_path().string(), target.stem().string());
        fs::create_directories(data, error);
        copyText(created.dataPath, data.c_str());
    }
    Project& from = model.project(source);
    Project& to = *model.currentProject();
    const auto ask = [&args](const std::string& name) {
        if (!args.yes)
            std::cerr << "Left out \"" << name << "\": Key-Sample files of that name exist in the "
                      << "target's data folder (--yes overwrites them)\n";
        return args.yes;
    };
    CopyOutcome outcome;
    const int copied = copyInstruments(from, args.multisamples, to, ask, outcome, message);
    std::string saveMessage;
    if (!outcome.names.empty() && !saveProject(to, target.parent_path().string(),
                                               target.stem().string(), saveMessage, !existing))
        return fail(saveMessage, false);
    if (!copied)
        return fail(message, false);
    std::ostringstream names;
    for (size_t i = 0; i < outcome.names.size(); ++i)
        names << (i ? ", " : "") << '"' << outcome.names[i] << '"';
    std::cout << "Copied " << outcome.names.size() << " Multi-Sample(s) (" << names.str()
              << ") with " << outcome.files << " Key-Sample file(s) into " << target.string()
              << '\n';
    return kExitOk;
}

void addCopyCommand(CliApp& app)
{
    auto args = std::make_shared<CopyArgs>();
    CLI::App* c = app.addCommand(
        "copy-instrument",
        "Copies Multi-Samples with their Key-Samples into another project (made when missing)",
        [args] { return runCopy(*args); });
    c->add_option("from", args->from, "FROM.TGprj")->required();
    c->add_option("to", args->to, "TO.TGprj")->required();
    c->add_option("--multisamples", args->multisamples, "indexes (0-based) to copy; default all")
        ->delimiter(',');
    c->add_flag("--yes", args->yes,
                "overwrite Key-Sample files of a copy's name already in the target's data folder");
}

} // namespace

void addPresetAndCopyCommands(CliApp& app)
{
    addPresetCommands(app);
    addCopyCommand(app);
}

} // namespace tg::cli
