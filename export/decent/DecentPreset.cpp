// Writing the preset text: a fixed header, then groups of sample zones.
#include "export/decent/DecentPreset.h"

#include "core/Message.h"
#include "export/xml/XmlText.h"

namespace tg {
namespace {

std::string zoneLine(const DecentGroup& group, const DecentZone& zone)
{
    std::string line =
        formatText("      <sample path=\"%s\" rootNote=\"%d\" loNote=\"%d\" hiNote=\"%d\"",
                   xmlAttribute(zone.path).c_str(), zone.rootNote, zone.loNote, zone.hiNote);
    if (group.hasVelocity)
        line += formatText(" loVel=\"%d\" hiVel=\"%d\"", group.loVel, group.hiVel);
    if (zone.release)
        line += " trigger=\"release\"";
    if (zone.loop)
        // The crossfade is already rendered into the audio, so the sampler must not fade the
        // seam a second time: its own crossfade stays off.
        line +=
            formatText(" loopEnabled=\"true\" loopStart=\"%d\" loopEnd=\"%d\" loopCrossfade=\"0\"",
                       zone.loopStart, zone.loopEnd);
    else
        line += " loopEnabled=\"false\"";
    return line + "/>\n";
}

} // namespace

std::string decentPresetXml(const std::vector<DecentGroup>& groups)
{
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<DecentSampler minVersion=\"1.0.0\">\n"
                      "  <groups>\n";
    for (const DecentGroup& group : groups) {
        xml += formatText("    <group name=\"%s\">\n", xmlAttribute(group.name).c_str());
        for (const DecentZone& zone : group.zones)
            xml += zoneLine(group, zone);
        xml += "    </group>\n";
    }
    xml += "  </groups>\n"
           "</DecentSampler>\n";
    return xml;
}

} // namespace tg
