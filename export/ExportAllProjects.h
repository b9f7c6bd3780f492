// "Export all Projects as ..": one choice of format, settings and destination, applied to
// every Project in turn. Each Project's request is derived here so that no Project's files
// land on another's.
#pragma once

#include "core/Records.h"
#include "export/ExportRunner.h"

#include <string>

namespace tg {

// The extension a menu text names in its "(*.ext)" part ("sf2" for "SoundFont2 (*.sf2)"),
// or "" when it names none.
std::string menuTextExtension(const std::string& menuText);

// The request for the `turn`-th Project (from 0) of an export of all Projects, made from the
// request the user gave once:
// - formats that write one file get "<destination>/<Project name>.<ext>", the destination
//   being the chosen folder;
// - the names the tagging dialog defaults to the Project's name (Prophet-X program, Deluge
//   synth, Quantum folder and map) are each Project's own;
// - Prophet-X program numbers count up from the chosen one;
// - `projectNumber` is the Project's place in the Projects list.
ExportRequest requestForProjectInTurn(const ExportRequest& once, const Project& project, int turn,
                                      int projectNumber);

// A warning for WAV/AIFF sets of several Projects whose naming scheme leaves out the Project
// name: the files of later Projects would replace those of earlier ones. Empty when the
// scheme holds "<#prj#>".
std::string allProjectsNamingWarning(const std::string& pattern);

} // namespace tg
