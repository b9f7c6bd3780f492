// Names of Projects and Multi-Samples: allowed characters, the checks of the list panels,
// the suffix rule for copies, and the file names derived from them.
#pragma once

#include "core/Message.h"
#include "core/Records.h"

#include <string>
#include <vector>

namespace tg {

class Model;

// Characters that may not stand in a name (they are not allowed in file names).
constexpr const char* kForbiddenNameChars = "\"/?\\*<>|:";
bool isAllowedNameChar(char c);
// `name` without the forbidden characters (what a name field lets through).
std::string withoutForbiddenNameChars(const std::string& name);

// Checks a name the user gave before the list panel applies it. `exceptIndex` is the row
// being renamed (its own name is no clash), or -1 for a new entry.
Result checkProjectName(const Model& model, const std::string& name, int exceptIndex);
Result checkMultiSampleName(const Project& project, const std::string& name, int exceptIndex);

// The suffix rule for copies: the name split at its last "-"; if the part after it is a
// decimal number the base is the part before and counting starts after that number,
// otherwise the base is the whole name and counting starts at 1. The first of base-(n+1) ..
// base-(n+20) that is not in `siblings` is written to `copyName`; false when all 20 are taken.
bool nextCopyName(const std::string& name, const std::vector<std::string>& siblings,
                  std::string& copyName);

// The name for a copy of the current Project / current Multi-Sample among its siblings,
// or the refusal shown under kErrorTitle when 20 candidates are taken.
Result projectCopyName(const Model& model, std::string& copyName);
Result multiSampleCopyName(const Project& project, std::string& copyName);

constexpr const char* kErrorTitle = "Error";
constexpr const char* kOverwriteTitle = "Overwrite Confirmation";
constexpr const char* kOverwriteQuestion =
    "Some key samples already exist with that name and will be overwritten. Do you want to "
    "proceed?";

// Whether Key-Sample files exist in the project's data path that would belong to the
// project if it were named `projectName` (any key of any of its Multi-Samples in use).
// When true the front end asks kOverwriteQuestion before it names a copy so.
bool projectKeySamplesExist(const Project& project, const std::string& projectName);
// The same for one Multi-Sample of `project` named `multiSampleName`.
bool multiSampleKeySamplesExist(const Project& project, const std::string& multiSampleName);

// The WAV file of key `note` (0..127): "<dataPath>/<project> - <multi-sample> - NNN - <note>.wav".
std::string keySampleFileName(const std::string& dataPath, const std::string& projectName,
                              const std::string& multiSampleName, int note);
std::string keySampleFileName(const Project& project, const TGmsl& msl, int note);

// The data folder of a saved project: "<project folder>/<project name>_data".
std::string projectDataFolder(const std::string& projectDir, const std::string& projectName);

} // namespace tg
