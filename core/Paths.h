// The folders the program works in and the one place paths are joined.
#pragma once

#include <string>

namespace tg {

// Joins two path parts with the platform separator. Formats written with a backslash
// ("%s\\%s.TGprj") are built through this on every platform.
std::string joinPath(const std::string& folder, const std::string& name);

// Turns every backslash of a path stored inside a file into the platform separator.
std::string nativePath(const std::string& storedPath);

// The user data folder: $TONEGRABBER_HOME when set, else Documents + "Corvane/Tonegrabber6".
// The folder is not created here.
std::string userDataFolder();

// The program folder: the working directory at start.
std::string programFolder();

// The Resources folder: "Resources" in the working directory, else beside the executable,
// else the installed data directory. Empty when none exists.
std::string resourcesFolder();

} // namespace tg
