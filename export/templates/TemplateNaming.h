// File names of the template exporters, built from the naming tags.
#pragma once

#include "core/Records.h"

#include <string>

namespace tg {

// Expands the naming tags "<#prj#>", "<#ms#>", "<#msi#>" ("%02ld"), "<#mn#>" ("%03ld"),
// "<#kn#>" and "<#n#>" of `nameTemplate` for Multi-Sample `mslIndex` (its ordinal `ordinal`
// is what "<#msi#>" shows) and MIDI note `note`. A '<' that starts no tag is copied as it is.
std::string expandNameTemplate(const Project& project, int mslIndex, int ordinal, int note,
                               const std::string& nameTemplate);

} // namespace tg
