// The markers and regions drawn over a Key-Sample.
#include "shell/editor/MarkerScene.h"

#include <algorithm>

namespace tg::shell {

QColor markerColor(MarkerId id)
{
    switch (id) {
    case MarkerId::SilenceIn:
    case MarkerId::SilenceOut:
        return QColor(160, 160, 170);
    case MarkerId::NoteIn:
    case MarkerId::NoteOut:
        return QColor(240, 200, 60);
    case MarkerId::LoopIn:
    case MarkerId::LoopOut:
        return QColor(240, 90, 80);
    case MarkerId::LoopSearchIn:
    case MarkerId::LoopSearchOut:
        return QColor(90, 160, 250);
    case MarkerId::ReleaseIn:
    case MarkerId::ReleaseOut:
        break;
    }
    return QColor(200, 120, 240);
}

ShadedRegion crossfadeRegion(const TGmsl_key& key)
{
    ShadedRegion region{0, -1, QColor(255, 150, 40, 90)};
    if (key.loopMode == 0 || key.Loop_Out <= key.Loop_In)
        return region;
    const int32_t turn = key.loopMode == 2 ? key.Loop_Out - key.bfxfadeLen : key.Loop_Out;
    region.end = turn;
    region.begin = std::max(key.Loop_In, turn - key.xfadeLen + 1);
    if (key.xfadeLen <= 0)
        region.end = region.begin - 1;
    return region;
}

WaveScene markerScene(const TGmsl_key& key, std::optional<MarkerId> selected)
{
    WaveScene scene;
    scene.regions.push_back({key.Silence_In, key.Silence_Out, QColor(160, 160, 170, 35)});
    scene.regions.push_back({key.LoopSearch_In, key.LoopSearch_Out, QColor(90, 160, 250, 40)});
    if (key.loopMode != 0)
        scene.regions.push_back({key.Loop_In, key.Loop_Out, QColor(240, 90, 80, 30)});
    scene.regions.push_back(crossfadeRegion(key));
    if (key.loopMode == 2 && key.bfxfadeLen > 0 && key.Loop_Out > key.Loop_In)
        scene.regions.push_back({std::max(key.Loop_In, key.Loop_Out - key.bfxfadeLen + 1),
                                 key.Loop_Out, QColor(255, 220, 40, 70)});
    for (MarkerId id : allMarkers()) {
        MarkerMark mark;
        mark.name = QString::fromLatin1(markerName(id));
        mark.frame = markerValue(key, id);
        mark.color = markerColor(id);
        mark.selected = selected && *selected == id;
        scene.markers.push_back(mark);
    }
    return scene;
}

} // namespace tg::shell
