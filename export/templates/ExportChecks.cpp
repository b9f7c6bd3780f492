// Pre-export checks of the layer layout and loop types.
#include "export/templates/ExportChecks.h"

#include "export/KeySampleFile.h"

#include <algorithm>
#include <string>

namespace tg {

namespace {
const char kNotCompatibleOne[] =
    "The project you are trying to export contains a setting that is not fully compatible "
    "with the Prophet-X's playback engine.\n\n";
const char kNotCompatibleSome[] =
    "The project you are trying to export contains one or more settings that are not fully "
    "compatible with the Prophet-X's playback engine.\n\n";
} // namespace

Result checkProphetXLayers(const Project& project, const std::vector<int>& selection)
{
    std::vector<const TGmsl*> layers;
    for (int index : selection)
        if (index >= 0 && index < kMaxMultiSamples)
            layers.push_back(&project.msl[index]);

    std::vector<const TGmsl*> byVelocity = layers;
    std::sort(byVelocity.begin(), byVelocity.end(),
              [](const TGmsl* a, const TGmsl* b) { return a->range_start < b->range_start; });
    for (size_t i = 1; i < byVelocity.size(); ++i)
        if (byVelocity[i]->range_start != byVelocity[i - 1]->range_end + 1)
            return Result::refused(std::string(kNotCompatibleOne) +
                                   "Velocity-overlapping is not supported. Each layer must have "
                                   "a unique velocity mapping range with no gaps in between.");

    if (!layers.empty()) {
        const TGmsl& first = *layers.front();
        const std::vector<int> keys = exportedKeys(first);
        for (const TGmsl* layer : layers) {
            bool same = exportedKeys(*layer) == keys;
            for (size_t k = 0; same && k < keys.size(); ++k) {
                const TGmsl_key& a = first.keys[keys[k]];
                const TGmsl_key& b = layer->keys[keys[k]];
                same = a.mapLow == b.mapLow && a.mapHigh == b.mapHigh;
            }
            if (!same)
                return Result::refused(
                    std::string(kNotCompatibleSome) +
                    "A) Each keysample in one multisample must be accompanied by keysamples in "
                    "all other layers on the same midi note.\n" +
                    "B) Each keysample's note range must be the same for the accompanied "
                    "keysamples in all other layers.");
        }
    }
    return Result::done();
}

bool hasMixedLoopTypes(const Project& project)
{
    bool looped = false;
    bool unlooped = false;
    const int count = std::clamp(project.mslCount, 0, kMaxMultiSamples);
    for (int m = 0; m < count; ++m)
        for (const TGmsl_key& key : project.msl[m].keys)
            if (key.keyState && key.hasAudio)
                (key.loopMode != 0 ? looped : unlooped) = true;
    return looped && unlooped;
}

Result checkLoopTypes(const Project& project, SingleLoopFormat format)
{
    if (!hasMixedLoopTypes(project))
        return Result::done();
    const char* name = format == SingleLoopFormat::Deluge     ? "Deluge"
                       : format == SingleLoopFormat::ProphetX ? "Prophet X"
                                                              : "Quantum";
    return Result::refused(
        std::string("This project contains both single shot and looped samples. The ") + name +
        " format only supports one or the other per project. Please adjust the \"Loop all "
        "samples\" setting in the following dialog.");
}

} // namespace tg
