// Loading a project file for a command, with the same load operation as the GUI's open.
#include "cli/ProjectAccess.h"

#include "audiofile/KeySampleAudio.h"
#include "core/Model.h"
#include "core/ProjectFile.h"

#include <filesystem>
#include <iostream>

namespace tg::cli {

int openProjectFile(Model& model, const std::string& path, std::string& message)
{
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

} // namespace tg::cli
