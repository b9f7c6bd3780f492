// The commands' model and loading a project file with the same load operation as the GUI's open.
#include "cli/ProjectAccess.h"

#include "cli/CliApp.h"

#include "audiofile/KeySampleAudio.h"
#include "core/Model.h"
#include "core/Preferences.h"
#include "core/ProjectFile.h"

#include <filesystem>
#include <iostream>

namespace tg::cli {

Model& commandModel()
{
    Model& model = Model::instance();
    model.reset();
    loadPreferences(model.preferences());
    return model;
}

int checkPathArgument(const std::string& path, const std::string& what, std::string& message)
{
    if (path.empty()) {
        message = "No " + what + " given: the path is empty.";
        return 0;
    }
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        message = "The " + what + " '" + path + "' is a folder, not a file.";
        return 0;
    }
    return 1;
}

int openProjectFile(Model& model, const std::string& path, std::string& message)
{
    if (!checkPathArgument(path, "project file", message))
        return 0;
    const std::filesystem::path file = std::filesystem::absolute(path);
    ProjectLoadOptions options;
    options.wavRate = wavFileRateReader();
    ProjectLoadOutcome outcome;
    const int ok = loadProjects(model, file.parent_path().string(), {file.filename().string()},
                                options, outcome, message);
    for (const std::string& warning : outcome.warnings)
        std::cerr << warning << '\n';
    if (ok && outcome.loaded.size() == 1)
        model.selectProject(outcome.loaded[0]);
    return ok;
}

int selectMultiSampleArgument(Model& model, int index)
{
    if (index < 0)
        return kExitOk;
    if (index >= model.currentProject()->mslCount) {
        std::cerr << "Bad argument --multisample " << index << ": the project has "
                  << model.currentProject()->mslCount << " Multi-Sample(s).\n";
        return kExitBadUsage;
    }
    model.selectMultiSample(index);
    return kExitOk;
}

} // namespace tg::cli
