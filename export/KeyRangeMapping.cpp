// Three passes over the present keys: clamp to the neighbours, cut overlapping manual
// ranges, then fill the automatic ends by splitting the distance to the neighbour.
#include "export/KeyRangeMapping.h"

#include <algorithm>
#include <vector>

namespace tg {
namespace {

uint8_t toKey(int value)
{
    return static_cast<uint8_t>(std::clamp(value, 0, 127));
}

} // namespace

void mapKeyRanges(TGmsl& msl)
{
    const int lo = std::max(0, static_cast<int>(msl.KBrangeIn));
    const int hi = std::min(127, static_cast<int>(msl.KBrangeOut));
    std::vector<int> present;
    for (int key = lo; key <= hi; ++key)
        if (msl.keys[key].keyState != 0)
            present.push_back(key);
    const int count = static_cast<int>(present.size());

    // Pass 1: no range may reach past its neighbours' own keys.
    for (int i = 0; i < count; ++i) {
        TGmsl_key& k = msl.keys[present[i]];
        const int key = present[i];
        int low = std::min<int>(k.mapLow, key);
        low = std::max(low, i > 0 ? present[i - 1] + 1 : 0);
        int high = std::max<int>(k.mapHigh, key);
        high = std::min(high, i + 1 < count ? present[i + 1] - 1 : 127);
        k.mapLow = toKey(low);
        k.mapHigh = toKey(high);
    }

    // Pass 2: two manual ends that meet are cut so they no longer overlap.
    for (int i = 0; i < count; ++i) {
        TGmsl_key& k = msl.keys[present[i]];
        if (i > 0) {
            const TGmsl_key& prev = msl.keys[present[i - 1]];
            if (k.mapLowFlag == 0 && prev.mapHighFlag == 0)
                k.mapLow = toKey(std::max<int>(k.mapLow, prev.mapHigh + 1));
        }
        if (i + 1 < count) {
            const TGmsl_key& next = msl.keys[present[i + 1]];
            if (k.mapHighFlag == 0 && next.mapLowFlag == 0)
                k.mapHigh = toKey(std::min<int>(k.mapHigh, next.mapLow - 1));
        }
    }

    // Pass 3: automatic ends. Integer division truncates, so with an odd distance the
    // upper Key-Sample takes the extra key (60/63 split as 60-61 and 62-63).
    for (int i = 0; i < count; ++i) {
        const int key = present[i];
        TGmsl_key& k = msl.keys[key];
        if (k.mapLowFlag != 0) {
            if (i == 0) {
                k.mapLow = toKey(lo);
            } else {
                const int prevKey = present[i - 1];
                const TGmsl_key& prev = msl.keys[prevKey];
                k.mapLow = toKey(prev.mapHighFlag != 0 ? prevKey + (key - prevKey) / 2 + 1
                                                       : prev.mapHigh + 1);
            }
        }
        if (k.mapHighFlag != 0) {
            if (i + 1 == count) {
                k.mapHigh = toKey(hi);
            } else {
                const int nextKey = present[i + 1];
                const TGmsl_key& next = msl.keys[nextKey];
                k.mapHigh =
                    toKey(next.mapLowFlag != 0 ? key + (nextKey - key) / 2 : next.mapLow - 1);
            }
        }
    }
}

void mapKeyRanges(Project& project, int mslIndex)
{
    const int count = std::clamp(project.mslCount, 0, kMaxMultiSamples);
    if (mslIndex >= 0) {
        if (mslIndex < count)
            mapKeyRanges(project.msl[mslIndex]);
        return;
    }
    for (int i = 0; i < count; ++i)
        mapKeyRanges(project.msl[i]);
}

VelocityRange layerVelocities(const TGmsl& msl, int lowest)
{
    if (msl.mapTo != 0)
        return {lowest, 127};
    return {std::clamp(int(msl.range_start), lowest, 127),
            std::clamp(int(msl.range_end), lowest, 127)};
}

} // namespace tg
