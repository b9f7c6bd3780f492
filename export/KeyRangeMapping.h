// Key-range mapping: gives every present Key-Sample of a Multi-Sample its low and high key.
#pragma once

#include "core/Records.h"

namespace tg {

// Sets mapLow/mapHigh of every present Key-Sample (keyState != 0) inside the key range
// KBrangeIn..KBrangeOut of one Multi-Sample. Keys outside that range are left alone.
void mapKeyRanges(TGmsl& msl);

// The same for one Multi-Sample of the Project (`mslIndex`), or for every Multi-Sample in
// use when `mslIndex` is negative. Run whenever keys or key ranges change and before export.
void mapKeyRanges(Project& project, int mslIndex);

} // namespace tg
