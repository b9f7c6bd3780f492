// Naming tags: file names of exported Key-Samples built from a template such as
// "<#prj#>-<#msi#>-<#ms#>-<#mn#>-<#kn#>-<#n#>".
#pragma once

#include "core/Records.h"

#include <string>

namespace tg {

// The two templates of the naming dialog's buttons.
constexpr const char* kLongNamingDefault = "<#prj#>-<#msi#>-<#ms#>-<#mn#>-<#kn#>-<#n#>";
constexpr const char* kShortNamingDefault = "noname-<#msi#>-<#mn#>";

// Copies `pattern` to the result, replacing each tag where it starts: "<#prj#>" the Project
// name, "<#ms#>" the name of `msl`, "<#msi#>" `mslIndex` as "%02ld", "<#mn#>" `note` as
// "%03ld", "<#kn#>" the Key-Sample's name, "<#n#>" the note name (Latin-1 bytes).
// A '<' that starts no tag is copied as it is. `mslIndex` is the Multi-Sample's ordinal
// in the export, which is not always its place in the Project.
std::string expandNamingTags(const Project& project, const TGmsl& msl, long mslIndex, int note,
                             const std::string& pattern);

// The naming dialog's warnings for a template, in the order it shows them; empty when none.
std::string namingSchemeWarnings(const std::string& pattern);

} // namespace tg
