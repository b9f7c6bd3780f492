// Key-range mapping: gives every present Key-Sample of a Multi-Sample its low and high key, and
// a layer its velocities.
#pragma once

#include "core/Records.h"

namespace tg {

// Sets mapLow/mapHigh of every present Key-Sample (keyState != 0) inside the key range
// KBrangeIn..KBrangeOut of one Multi-Sample. Keys outside that range are left alone.
void mapKeyRanges(TGmsl& msl);

// The same for one Multi-Sample of the Project (`mslIndex`), or for every Multi-Sample in
// use when `mslIndex` is negative. Run whenever keys or key ranges change and before export.
void mapKeyRanges(Project& project, int mslIndex);

// The velocities a layer answers: its velocity range, clamped to lowest..127, or all of
// lowest..127 for a layer without one (samplers that know no velocity 0 pass 1).
struct VelocityRange {
    int low = 0;
    int high = 127;
};
VelocityRange layerVelocities(const TGmsl& msl, int lowest);

} // namespace tg
