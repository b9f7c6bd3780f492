// What the about box tells: the program's version and build, and the libraries it runs on with
// the versions actually loaded and their licences.
#pragma once

#include <string>
#include <vector>

namespace tg {

struct LibraryInfo {
    std::string name;
    std::string version; // as the loaded library reports it
    std::string licence; // SPDX identifier
    std::string use;     // what the program uses it for
};

// The libraries linked into the program, in the order the about box lists them.
std::vector<LibraryInfo> usedLibraries();

// "6.0.0"
std::string programVersion();

// Compiler, build type and build date, e.g. "GCC 12.2.0, Debug, built Nov 23 2026".
std::string buildDescription();

} // namespace tg
