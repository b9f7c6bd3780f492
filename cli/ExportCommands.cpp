// The export command: one export of a saved Project in any format of the export menu.
#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "cli/Progress.h"
#include "cli/ProjectAccess.h"

#include "core/Message.h"
#include "core/Model.h"
#include "core/ProjectFile.h"
#include "export/ExportAllProjects.h"
#include "export/ExportAudioServices.h"
#include "export/ExportFormats.h"
#include "export/ExportProgress.h"
#include "export/ExportRunner.h"
#include "export/NamingTags.h"
#include "export/SettingsChoices.h"
#include "export/montage/MontageExport.h"

#include <csignal>
#include <filesystem>
#include <iostream>
#include <sstream>

namespace tg::cli {

namespace {

struct ExportArgs {
    std::vector<std::string> paths;
    bool allProjects = false;
    std::string format;
    std::string destination;
    std::string settings;
    std::string naming;
    std::string multisamples;
    bool loopAll = false;
    // The tagging dialog's values.
    std::string bank;
    std::string category;
    int programNumber = -1; // -1: not given
    std::string programName;
    std::string folder;
    std::string keywords;
    std::string creator;
    bool json = false;
    bool quiet = false;
};

// While an export runs, Ctrl-C sets the export's abort flag: the pipeline stops before the
// next Key-Sample with "Export aborted." and puts the Project back.
extern "C" void abortExportOnInterrupt(int)
{
    exportAbortFlag.store(true);
}

class InterruptAbortsExport {
  public:
    InterruptAbortsExport()
    {
        struct sigaction action {};
        action.sa_handler = abortExportOnInterrupt;
        sigemptyset(&action.sa_mask);
        installed_ = sigaction(SIGINT, &action, &previous_) == 0;
    }
    ~InterruptAbortsExport()
    {
        if (installed_)
            sigaction(SIGINT, &previous_, nullptr);
    }
    InterruptAbortsExport(const InterruptAbortsExport&) = delete;
    InterruptAbortsExport& operator=(const InterruptAbortsExport&) = delete;

  private:
    struct sigaction previous_ {};
    bool installed_ = false;
};

bool parseWord(const std::string& text, uint32_t& word)
{
    try {
        size_t used = 0;
        const unsigned long value = std::stoul(text, &used, 0);
        if (used != text.size() || value > 0xFFFFFFFFul)
            return false;
        word = static_cast<uint32_t>(value);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

std::vector<std::string> splitKeywords(const std::string& text)
{
    std::vector<std::string> keywords;
    std::stringstream stream(text);
    std::string item;
    while (std::getline(stream, item, ','))
        if (!item.empty())
            keywords.push_back(item);
    return keywords;
}

bool parseIndices(const std::string& text, std::vector<int>& indices)
{
    std::stringstream stream(text);
    std::string item;
    while (std::getline(stream, item, ',')) {
        try {
            size_t used = 0;
            const int value = std::stoi(item, &used);
            if (used != item.size() || value < 0)
                return false;
            indices.push_back(value);
        } catch (const std::exception&) {
            return false;
        }
    }
    return !indices.empty();
}

// The request the options describe, before any project is loaded. Returns kExitOk, or the
// usage error or refusal after saying what is wrong.
int requestFromArgs(const ExportArgs& args, ExportRequest& request)
{
    request.menuText = menuTextForShortKey(args.format);
    const ExportFormatInfo* info = findExportFormat(request.menuText);
    if (info == nullptr) {
        std::cerr << "--format: \"" << args.format << "\" is no export format\n";
        return kExitBadUsage;
    }
    if (info->format == ExportFormat::ProphetX && (args.bank.empty() || args.category.empty())) {
        std::cerr << "--bank, --category: the Prophet-X export files the program under a user "
                     "bank and a category\n";
        return kExitBadUsage;
    }
    if (!args.settings.empty()) {
        if (!parseWord(args.settings, request.settings)) {
            std::cerr << "--settings: \"" << args.settings << "\" is no 32-bit word\n";
            return kExitBadUsage;
        }
        request.hasSettings = true;
        // Refused before any project is opened: the word alone decides.
        std::string message;
        if (!checkSettingsWord(info->allowedMask, "\"" + request.menuText + "\"", request.settings,
                               message))
            return fail(message, args.json);
    }
    if (!args.multisamples.empty() && !parseIndices(args.multisamples, request.mslIndices)) {
        std::cerr << "--multisamples: expected indices like 0,2, got \"" << args.multisamples
                  << "\"\n";
        return kExitBadUsage;
    }
    if (args.paths.size() > 1 && !args.allProjects) {
        std::cerr << "project: one project file, or several with --all-projects\n";
        return kExitBadUsage;
    }
    if (args.allProjects &&
        (!args.multisamples.empty() || !args.programName.empty() || !args.folder.empty())) {
        std::cerr << "--multisamples, --program-name, --folder: with --all-projects each "
                     "Project exports all its Multi-Samples under its own name\n";
        return kExitBadUsage;
    }
    for (const std::string& path : args.paths)
        if (std::filesystem::path(path).extension() != std::string(".") + kProjectExtension) {
            std::cerr << "project: expected a ." << kProjectExtension << " file, got \"" << path
                      << "\"\n";
            return kExitBadUsage;
        }
    request.destination = args.destination;
    request.nameTemplate = args.naming;
    request.loopAll = args.loopAll;
    request.tagging.userBank = args.bank;
    request.tagging.category = args.category;
    if (args.programNumber >= 0)
        request.tagging.programNumber = args.programNumber;
    request.tagging.programName = args.programName;
    request.tagging.folder = args.folder;
    request.tagging.creator = args.creator;
    request.tagging.keywords = splitKeywords(args.keywords);
    return kExitOk;
}

// The naming dialog's warnings, on stderr: the export goes on, as after "Yes" in the dialog.
void printNamingWarnings(const ExportRequest& request, bool allProjects)
{
    const ExportFormatInfo* info = findExportFormat(request.menuText);
    if (request.nameTemplate.empty() || !usesNamingScheme(info->format))
        return;
    std::string warnings = namingSchemeWarnings(request.nameTemplate);
    if (allProjects)
        warnings += allProjectsNamingWarning(request.nameTemplate);
    std::string text;
    for (char c : warnings)
        if (c != '\r')
            text += c;
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    if (!text.empty())
        std::cerr << text << '\n';
}

int runExportCommand(const ExportArgs& args)
{
    ExportRequest once;
    if (const int status = requestFromArgs(args, once); status != kExitOk)
        return status;

    // Every project is loaded and checked before the first file is written.
    Model& model = commandModel();
    std::vector<std::pair<int, ExportRequest>> turns; // Project index in the model, request
    std::string message;
    for (const std::string& path : args.paths) {
        if (!openProjectFile(model, path, message) || model.currentProject() == nullptr)
            return fail(message, args.json);
        const int index = model.currentProjectIndex();
        const Project& project = model.project(index);
        ExportRequest request =
            args.allProjects ? requestForProjectInTurn(once, project, int(turns.size()), index)
                             : once;
        request.projectNumber = index;
        for (int msl : request.mslIndices)
            if (msl >= project.mslCount) {
                std::cerr << "--multisamples: the project has " << project.mslCount
                          << " Multi-Samples\n";
                return kExitBadUsage;
            }
        const Result checked = checkBeforeExport(project, request);
        if (!checked.ok())
            return fail(checked.message, args.json);
        turns.emplace_back(index, request);
    }
    printNamingWarnings(once, args.allProjects);

    nlohmann::json exported = nlohmann::json::array();
    for (const auto& [index, request] : turns) {
        Project& project = model.project(index);
        int ok = 0;
        {
            ProgressPrinter printer(args.quiet);
            setExportProgressCallback([&printer](double fraction, const std::string& text) {
                printer.report(fraction, text);
            });
            exportAbortFlag = false;
            InterruptAbortsExport interrupt;
            ok = runExport(project, request, defaultExportServices(), message);
            setExportProgressCallback({});
        }
        if (!ok)
            return fail(message, args.json);
        if (args.json)
            exported.push_back(
                {{"project", std::string(project.name)}, {"destination", request.destination}});
        else {
            std::cout << "Exported \"" << project.name << "\" as " << request.menuText << " to "
                      << request.destination << '\n';
            const ExportFormatInfo* info = findExportFormat(request.menuText);
            if (info != nullptr && info->format == ExportFormat::Montage)
                std::cout << kMontageExportInformation;
        }
    }

    if (args.json) {
        nlohmann::json document = {{"format", once.menuText},
                                   {"settings", formatText("0x%08X", requestSettingsWord(once))}};
        if (args.allProjects)
            document["exported"] = exported;
        else
            document["destination"] = once.destination;
        printJson(document);
    }
    return kExitOk;
}

} // namespace

void addExportCommands(CliApp& app)
{
    auto args = std::make_shared<ExportArgs>();
    CLI::App* command =
        app.addCommand("export", "Exports the project in one of the sampler formats",
                       [args] { return runExportCommand(*args); });
    command->add_option("project", args->paths, "the .TGprj file (several with --all-projects)")
        ->required();
    command
        ->add_option("--format", args->format,
                     "a menu text (\"SoundFont2 (*.sf2)\") or a short key (wav, wav-loop, aiff, "
                     "aiff-loop, sfz, sf2, bitwig, deluge, prophetx, quantum, kronos, decent, "
                     "decent-library, op1, volca, nnxt, halion, blofeld, montage-x7u, "
                     "montage-x7l, microsampler)")
        ->required();
    command
        ->add_option("--dest", args->destination,
                     "destination: folder (WAV/AIFF sets, Kronos), card or drive root (Deluge, "
                     "Quantum, Prophet-X) or file (SFZ, SF2, Bitwig, NN-XT, Decent Sampler, "
                     "OP-1, Volca Sample, Montage)")
        ->required();
    command->add_option("--settings", args->settings, "Export Settings word, e.g. 0x80020408");
    command->add_option("--naming", args->naming, "naming template of WAV/AIFF sets");
    command->add_option("--bank", args->bank, "Prophet-X user bank");
    command->add_option("--category", args->category, "Prophet-X category; Bitwig category text");
    command->add_option("--program-number", args->programNumber, "Prophet-X program number")
        ->check(CLI::Range(0, 999));
    command->add_option("--program-name", args->programName,
                        "Prophet-X program, Deluge synth, Quantum map name (default: project)");
    command->add_option("--folder", args->folder,
                        "Quantum sample folder under samples (default: project name)");
    command->add_option("--keywords", args->keywords, "keywords, comma-separated");
    command->add_option("--creator", args->creator, "creator text");
    command->add_option("--multisamples", args->multisamples, "Multi-Sample indices, e.g. 0,2");
    command->add_flag("--loop-all", args->loopAll, "loop all samples (formats that offer it)");
    command->add_flag("--all-projects", args->allProjects,
                      "export every project file given, each in turn; single-file formats "
                      "write <dest>/<project name>.<ext>");
    command->add_flag("--json", args->json, "print one JSON document on stdout");
    command->add_flag("--quiet", args->quiet, "no progress on stderr");
}

} // namespace tg::cli
