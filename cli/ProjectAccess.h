// Opening a project file named on the command line, for the commands that work on one.
#pragma once

#include <string>

namespace tg {
class Model;
}

namespace tg::cli {

// Loads PATH.TGprj into `model` (its preferences loaded first) as its current Project. The
// load's warnings go to stderr. Returns 1, or 0 with the load's message.
int openProjectFile(Model& model, const std::string& path, std::string& message);

} // namespace tg::cli
