// The text of an SFZ file: header, one group per Multi-Sample, attack and release regions.
#pragma once

#include "core/Records.h"

#include <string>

namespace tg {

// "%g" of `value` with any decimal comma of the locale turned into '.'.
std::string sfzNumber(double value);

// The comment header naming the program and its version; every line ends in CR LF.
std::string sfzHeader();

// The group line of a Multi-Sample, its velocity lines unless it has no velocity range,
// and the empty line after them.
std::string sfzGroup(const TGmsl& msl);

// The sample file names of a Key-Sample: "<base>-<ordinal>-<note>-<note name>.wav" and
// the same with "-release" before ".wav".
std::string sfzSampleName(const std::string& baseName, int ordinal, int note);
std::string sfzReleaseName(const std::string& baseName, int ordinal, int note);

// The attack region of a Key-Sample and, when it has a release part, the release region.
std::string sfzRegions(const std::string& baseName, int ordinal, int note, int lowKey, int highKey,
                       bool hasRelease, double releaseTime, double attackTime);

} // namespace tg
