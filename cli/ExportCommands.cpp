// The export command: one export of a saved Project in any format of the export menu.
#include "cli/CliApp.h"
#include "cli/Commands.h"
#include "cli/ProjectAccess.h"

#include "core/Message.h"
#include "core/Model.h"
#include "core/ProjectFile.h"
#include "export/ExportAudioServices.h"
#include "export/ExportFormats.h"
#include "export/ExportProgress.h"
#include "export/ExportRunner.h"

#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <sstream>

namespace tg::cli {

namespace {

struct ExportArgs {
    std::string path;
    std::string format;
    std::string destination;
    std::string settings;
    std::string naming;
    std::string multisamples;
    bool loopAll = false;
    bool json = false;
    bool quiet = false;
};

// Progress on stderr: one live line on a terminal, a line per change of percent otherwise.
class ExportProgressPrinter {
  public:
    explicit ExportProgressPrinter(bool quiet)
        : quiet_(quiet), terminal_(isatty(STDERR_FILENO) != 0)
    {
    }
    ~ExportProgressPrinter()
    {
        if (terminal_ && drawn_)
            std::cerr << '\n';
    }
    void operator()(double fraction, const std::string& text)
    {
        if (quiet_ || text.empty())
            return;
        // The exporters' texts have line breaks for the dialog; one line here.
        std::string line;
        for (char c : text)
            if (c != '\r')
                line += c == '\n' ? ' ' : c;
        while (line.find("  ") != std::string::npos)
            line.erase(line.find("  "), 1);
        const int percent = static_cast<int>(fraction * 100.0);
        if (terminal_) {
            std::cerr << '\r' << percent << " % " << line << "\x1b[K" << std::flush;
            drawn_ = true;
        } else if (percent != lastPercent_ || line != lastLine_) {
            std::cerr << percent << " % " << line << '\n';
        }
        lastPercent_ = percent;
        lastLine_ = line;
    }

  private:
    bool quiet_;
    bool terminal_;
    bool drawn_ = false;
    int lastPercent_ = -1;
    std::string lastLine_;
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

int runExportCommand(const ExportArgs& args)
{
    ExportRequest request;
    request.menuText = menuTextForShortKey(args.format);
    if (findExportFormat(request.menuText) == nullptr) {
        std::cerr << "--format: \"" << args.format << "\" is no export format\n";
        return kExitBadUsage;
    }
    if (!args.settings.empty()) {
        if (!parseWord(args.settings, request.settings)) {
            std::cerr << "--settings: \"" << args.settings << "\" is no 32-bit word\n";
            return kExitBadUsage;
        }
        request.hasSettings = true;
    }
    if (!args.multisamples.empty() && !parseIndices(args.multisamples, request.mslIndices)) {
        std::cerr << "--multisamples: expected indices like 0,2, got \"" << args.multisamples
                  << "\"\n";
        return kExitBadUsage;
    }
    if (std::filesystem::path(args.path).extension() != std::string(".") + kProjectExtension) {
        std::cerr << "project: expected a ." << kProjectExtension << " file, got \"" << args.path
                  << "\"\n";
        return kExitBadUsage;
    }
    request.destination = args.destination;
    request.nameTemplate = args.naming;
    request.loopAll = args.loopAll;

    Model& model = Model::instance();
    std::string message;
    if (!openProjectFile(model, args.path, message) || model.currentProject() == nullptr)
        return fail(message, args.json);
    Project& project = *model.currentProject();
    for (int index : request.mslIndices)
        if (index >= project.mslCount) {
            std::cerr << "--multisamples: the project has " << project.mslCount
                      << " Multi-Samples\n";
            return kExitBadUsage;
        }

    ExportProgressPrinter printer(args.quiet);
    setExportProgressCallback(
        [&printer](double fraction, const std::string& text) { printer(fraction, text); });
    exportAbortFlag = false;
    const int ok = runExport(project, request, defaultExportServices(), message);
    setExportProgressCallback({});
    if (!ok)
        return fail(message, args.json);

    const uint32_t word = requestSettingsWord(request);
    if (args.json)
        printJson({{"format", request.menuText},
                   {"destination", request.destination},
                   {"settings", formatText("0x%08X", word)}});
    else
        std::cout << "Exported \"" << project.name << "\" as " << request.menuText << " to "
                  << request.destination << '\n';
    return kExitOk;
}

} // namespace

void addExportCommands(CliApp& app)
{
    auto args = std::make_shared<ExportArgs>();
    CLI::App* command =
        app.addCommand("export", "export the project in a format of the export menu",
                       [args] { return runExportCommand(*args); });
    command->add_option("project", args->path, "the .TGprj file")->required();
    command
        ->add_option("--format", args->format,
                     "a menu text (\"SoundFont2 (*.sf2)\") or a short key (wav, wav-loop, aiff, "
                     "aiff-loop, sfz, sf2, bitwig, deluge, prophetx, quantum, kronos)")
        ->required();
    command
        ->add_option("--dest", args->destination,
                     "destination folder (WAV/AIFF sets) or file (other formats)")
        ->required();
    command->add_option("--settings", args->settings, "Export Settings word, e.g. 0x80020408");
    command->add_option("--naming", args->naming, "naming template of WAV/AIFF sets");
    command->add_option("--multisamples", args->multisamples, "Multi-Sample indices, e.g. 0,2");
    command->add_flag("--loop-all", args->loopAll, "loop all samples (formats that offer it)");
    command->add_flag("--json", args->json, "print one JSON document on stdout");
    command->add_flag("--quiet", args->quiet, "no progress on stderr");
}

} // namespace tg::cli
