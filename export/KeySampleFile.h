// Where a Key-Sample's recording lies: "<data path>/<Project> - <Multi-Sample> - NNN - <note>.wav".
#pragma once

#include "core/Records.h"

#include <string>

namespace tg {

// The path of the WAV file of key `note` of `msl` in the Project's data folder.
std::string keySampleFilePath(const Project& project, const TGmsl& msl, int note);

// Present (slot in use) and recorded (has audio): the Key-Samples an export writes.
inline bool isExportable(const TGmsl_key& key)
{
    return key.keyState != 0 && key.hasAudio != 0;
}

} // namespace tg
