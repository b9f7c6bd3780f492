// `msl` and `keys`: what the list panels do to a project file's Multi-Samples and keys,
// through the same list operations, saved back in place.
#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "cli/ProjectAccess.h"

#include "core/ListEditing.h"
#include "core/Model.h"
#include "core/Names.h"
#include "core/Preferences.h"
#include "core/ProjectFile.h"

#include <filesystem>
#include <iostream>
#include <memory>

namespace tg::cli {

namespace {

struct ListOptions {
    std::string action;
    std::vector<std::string> words; // the project(s) and the action's arguments
    int multisample = -1;           // -1: the project's current Multi-Sample
    int from = -1;                  // paste: the Multi-Sample copied, -1: the source's current
    bool withKeys = false;
    bool yes = false;
    bool dryRun = false;
};

int badUsage(const std::string& message)
{
    std::cerr << message << '\n';
    return kExitBadUsage;
}

// The overwrite question has no one to ask here: --yes answers it.
OverwriteConfirmation answeredBy(bool yes)
{
    return [yes] {
        if (!yes)
            std::cerr << kOverwriteQuestion << "\nRun again with --yes to overwrite them.\n";
        return yes;
    };
}

// Opens `path` as the current Project and selects Multi-Sample `index` (-1: its current one).
int openAt(Model& model, const std::string& path, int index, std::string& message)
{
    if (!openProjectFile(model, path, message))
        return kExitFailed;
    Project& project = *model.currentProject();
    const int chosen = index < 0 ? project.currentMsl : index;
    if (chosen >= project.mslCount) {
        message = "Bad argument '--multisample " + std::to_string(chosen) + "': the project has " +
                  std::to_string(project.mslCount) + " Multi-Sample(s).";
        return kExitBadUsage;
    }
    if (project.mslCount > 0)
        model.selectMultiSample(chosen);
    return kExitOk;
}

int finish(Model& model, const Result& result, const ListOptions& options, const std::string& done)
{
    if (!result.ok())
        return fail(result.message.empty() ? "Nothing was changed." : result.message, false);
    if (!options.dryRun) {
        std::string message;
        if (!saveProjectAgain(*model.currentProject(), message))
            return fail(message, false);
    }
    std::cout << done << '\n';
    return kExitOk;
}

int runMsl(const ListOptions& options)
{
    const std::vector<std::string>& w = options.words;
    const std::string& action = options.action;
    const size_t wanted = action == "rename" || action == "move" || action == "paste" ? 2 : 1;
    if (w.size() != wanted)
        return badUsage("msl " + action + " takes " + std::to_string(wanted) + " argument(s)" +
                        (action == "rename"  ? ": PATH.TGprj NAME"
                         : action == "move"  ? ": PATH.TGprj up|down"
                         : action == "paste" ? ": FROM.TGprj TO.TGprj"
                                             : ": PATH.TGprj"));
    if (action == "move" && w[1] != "up" && w[1] != "down")
        return badUsage("Bad argument '" + w[1] + "': expected up or down.");

    auto model = std::make_unique<Model>();
    loadPreferences(model->preferences());
    std::string message;
    MultiSampleCopy copy;
    if (action == "paste") {
        const bool sameFile =
            std::filesystem::weakly_canonical(w[0]) == std::filesystem::weakly_canonical(w[1]);
        if (int status = openAt(*model, w[0], options.from, message))
            return status == kExitBadUsage ? badUsage(message) : fail(message, false);
        const Project& source = *model->currentProject();
        if (source.mslCount == 0)
            return fail("There is no Multi-Sample to copy.", false);
        copyMultiSample(source, source.currentMsl, options.withKeys, copy);
        if (!sameFile) {
            model->deleteProject();
            if (int status = openAt(*model, w[1], options.multisample, message))
                return status == kExitBadUsage ? badUsage(message) : fail(message, false);
        } else {
            model->selectMultiSample(options.multisample < 0 ? model->currentProject()->currentMsl
                                                             : options.multisample);
        }
    } else if (int status = openAt(*model, w[0], options.multisample, message)) {
        return status == kExitBadUsage ? badUsage(message) : fail(message, false);
    }

    Project& project = *model->currentProject();
    if (project.mslCount == 0)
        return fail("There is no Multi-Sample selected.", false);
    const int index = project.currentMsl;
    const std::string name = project.msl[index].name;
    if (action == "rename") {
        const Result r = renameMultiSample(*model, index, w[1], answeredBy(options.yes));
        return finish(*model, r, options,
                      "Multi-Sample " + std::to_string(index) + " \"" + name + "\" is now \"" +
                          project.msl[index].name + "\".");
    }
    if (action == "duplicate") {
        const Result r = duplicateMultiSampleNamed(*model, answeredBy(options.yes));
        return finish(*model, r, options,
                      "\"" + name + "\" duplicated as \"" + project.msl[project.currentMsl].name +
                          "\" (Multi-Sample " + std::to_string(project.currentMsl) + ").");
    }
    if (action == "delete") {
        const Result r = model->deleteMultiSample();
        return finish(*model, r, options,
                      "Multi-Sample " + std::to_string(index) + " \"" + name + "\" deleted.");
    }
    if (action == "move") {
        const Result r = w[1] == "up" ? model->moveMultiSampleUp() : model->moveMultiSampleDown();
        return finish(*model, r, options,
                      "\"" + name + "\" is Multi-Sample " + std::to_string(project.currentMsl) +
                          ".");
    }
    const Result r = pasteMultiSample(*model, copy, answeredBy(options.yes));
    return finish(*model, r, options,
                  std::string(options.withKeys ? "Multi-Sample with its keys" : "Settings") +
                      " pasted into \"" + name + "\".");
}

int runKeys(const ListOptions& options)
{
    const std::vector<std::string>& w = options.words;
    if (w.size() != 2)
        return badUsage("keys " + options.action + " takes PATH.TGprj NOTES (e.g. 60,62,64-72)");
    std::vector<int> notes;
    std::string message;
    if (!parseNoteList(w[1], notes, message))
        return badUsage("Bad argument '" + w[1] + "': " + message);
    auto model = std::make_unique<Model>();
    if (int status = openAt(*model, w[0], options.multisample, message))
        return status == kExitBadUsage ? badUsage(message) : fail(message, false);
    const std::string& action = options.action;
    const Result r = action == "lock" || action == "unlock"
                         ? setKeysLocked(*model, notes, action == "lock")
                         : setKeysSelected(*model, notes, action == "select");
    return finish(*model, r, options, std::to_string(notes.size()) + " key(s): " + action + "ed.");
}

int runRelocate(const ListOptions& options)
{
    const std::vector<std::string>& w = options.words;
    auto model = std::make_unique<Model>();
    std::string message;
    if (int status = openAt(*model, w[0], -1, message))
        return status == kExitBadUsage ? badUsage(message) : fail(message, false);
    const std::string folder = std::filesystem::absolute(w[1]).lexically_normal().string();
    const Result r = relocateKeySamples(*model, model->currentProjectIndex(), folder);
    int found = 0;
    const Project& project = *model->currentProject();
    for (int m = 0; m < project.mslCount; ++m)
        for (const TGmsl_key& key : project.msl[m].keys)
            found += key.hasAudio;
    return finish(*model, r, options,
                  "Data path is now \"" + folder + "\"; " + std::to_string(found) +
                      " Key-Sample file(s) found there.");
}

void addCommonOptions(CLI::App* command, ListOptions& options)
{
    command
        ->add_option("--multisample", options.multisample,
                     "Index of the Multi-Sample (0-based; default the project's current)")
        ->check(CLI::Range(0, 127));
    command->add_flag("--dry-run", options.dryRun, "Change nothing on disk");
}

} // namespace

void addListCommands(CliApp& app)
{
    auto msl = std::make_shared<ListOptions>();
    CLI::App* command = app.addCommand(
        "msl",
        "Renames, duplicates, deletes or moves a Multi-Sample, or pastes one over another "
        "(settings only, or --with-keys); the project is saved back",
        [msl] { return runMsl(*msl); });
    command->add_option("action", msl->action, "rename | duplicate | delete | move | paste")
        ->required()
        ->check(CLI::IsMember({"rename", "duplicate", "delete", "move", "paste"}));
    command->add_option("arguments", msl->words,
                        "rename PATH NAME | duplicate PATH | delete PATH | move PATH up|down | "
                        "paste FROM.TGprj TO.TGprj");
    addCommonOptions(command, *msl);
    command->add_option("--from", msl->from, "paste: the Multi-Sample copied (default current)")
        ->check(CLI::Range(0, 127));
    command->add_flag("--with-keys", msl->withKeys, "paste: the keys and their audio too");
    command->add_flag("--yes", msl->yes, "Overwrite Key-Sample files of the new name");

    auto keys = std::make_shared<ListOptions>();
    command = app.addCommand("keys",
                             "Locks or unlocks keys, or selects or deselects them for recording; "
                             "the project is saved back",
                             [keys] { return runKeys(*keys); });
    command->add_option("action", keys->action, "lock | unlock | select | deselect")
        ->required()
        ->check(CLI::IsMember({"lock", "unlock", "select", "deselect"}));
    command->add_option("arguments", keys->words, "PATH.TGprj NOTES, e.g. 60,62,64-72 or all");
    addCommonOptions(command, *keys);

    auto relocate = std::make_shared<ListOptions>();
    command = app.addCommand(
        "relocate",
        "Points a project at the folder that now holds its Key-Sample files (they are not "
        "moved); the project is saved back",
        [relocate] { return runRelocate(*relocate); });
    command->add_option("arguments", relocate->words, "PATH.TGprj FOLDER")->required()->expected(2);
    command->add_flag("--dry-run", relocate->dryRun, "Change nothing on disk");
}

} // namespace tg::cli
