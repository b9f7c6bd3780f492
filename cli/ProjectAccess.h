// The model a command works on, and opening a project file named on the command line.
#pragma once

#include <string>

namespace tg {
class Model;
}

namespace tg::cli {

// The program's one model, emptied, with the user's preferences loaded: every command that
// needs a model takes it from here, so that whatever reads the preferences (the renderer's
// click/pop fades, a new Multi-Sample's defaults, the exporters) sees the user's settings.
Model& commandModel();

// Refuses an empty path and a folder given where a file is wanted, with a message naming
// `what` ("project file"...); a file that cannot be opened is left to its reader's message.
// Returns 1, or 0 with `message`.
int checkPathArgument(const std::string& path, const std::string& what, std::string& message);

// Loads PATH.TGprj into `model` as its current Project. The load's warnings go to stderr.
// Returns 1, or 0 with the load's message.
int openProjectFile(Model& model, const std::string& path, std::string& message);

// Makes Multi-Sample `index` of the current Project current (nothing for a negative index,
// the option not given). kExitOk, or kExitBadUsage after saying on stderr that the Project
// has fewer.
int selectMultiSampleArgument(Model& model, int index);

} // namespace tg::cli
