// Which Key-Samples an export writes, and where their recordings lie.
#pragma once

#include "core/Names.h"
#include "core/Records.h"

#include <string>

namespace tg {

// The path of the WAV file of key `note` of `msl` in the Project's data folder.
inline std::string keySampleFilePath(const Project& project, const TGmsl& msl, int note)
{
    return keySampleFileName(project, msl, note);
}

// Present (slot in use) and recorded (has audio): the Key-Samples an export writes.
inline bool isExportable(const TGmsl_key& key)
{
    return key.keyState != 0 && key.hasAudio != 0;
}

} // namespace tg
