// Which Key-Samples an export writes, and where their recordings lie.
#pragma once

#include "core/Names.h"
#include "core/Records.h"

#include <algorithm>
#include <string>
#include <vector>

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

// The keys every exporter writes for one Multi-Sample, ascending: the exportable Key-Samples
// inside its key range (clamped to 0..127, since the range fields are signed).
inline std::vector<int> exportedKeys(const TGmsl& msl)
{
    std::vector<int> keys;
    const int low = std::max(0, int(msl.KBrangeIn));
    const int high = std::min(kKeyCount - 1, int(msl.KBrangeOut));
    for (int note = low; note <= high; ++note)
        if (isExportable(msl.keys[note]))
            keys.push_back(note);
    return keys;
}

// One Key-Sample of an export: key `note` of the selection's `ordinal`-th Multi-Sample.
struct SelectedKey {
    int ordinal = 0;
    int note = 0;
};

} // namespace tg
