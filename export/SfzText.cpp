// SFZ text, byte for byte as samplers have always been given it: CR LF line ends, the
// double blank after "trigger=attack", and '.' as decimal point whatever the locale.
#include "export/SfzText.h"

#include "core/Message.h"
#include "core/NoteNames.h"

#include <algorithm>
#include <cstring>

namespace tg {
namespace {
constexpr double kSfzVersion = 6.01;
}

std::string sfzNumber(double value)
{
    std::string text = formatText("%g", value);
    std::replace(text.begin(), text.end(), ',', '.');
    return text;
}

std::string sfzHeader()
{
    const std::string dashes = "//" + std::string(83, '-') + "\r\n";
    return dashes + "// sfz Definition File\r\n" + "// \r\n" +
           "// this file was created with Corvane's Tonegrabber\xCE\xA0Version " +
           sfzNumber(kSfzVersion) + "\r\n" +
           "// for Cakewalk's virtual sampler \"Dimension\".\r\n" + dashes;
}

std::string sfzGroup(const TGmsl& msl)
{
    const std::string name(msl.name, strnlen(msl.name, sizeof msl.name));
    std::string text =
        formatText("\r\n\r\n<group> // parameters for the multi-sample \"%s\"\r\n", name.c_str());
    if (msl.mapTo == 0)
        text +=
            formatText("lovel=%ld\r\nhivel=%ld\r\n", long(msl.range_start), long(msl.range_end));
    text += "\r\n";
    return text;
}

std::string sfzSampleName(const std::string& baseName, int ordinal, int note)
{
    return formatText("%s-%03d-%03d-%s.wav", baseName.c_str(), ordinal, note,
                      noteName(note).c_str());
}

std::string sfzReleaseName(const std::string& baseName, int ordinal, int note)
{
    return formatText("%s-%03d-%03d-%s-release.wav", baseName.c_str(), ordinal, note,
                      noteName(note).c_str());
}

std::string sfzRegions(const std::string& baseName, int ordinal, int note, int lowKey, int highKey,
                       bool hasRelease, double releaseTime, double attackTime)
{
    std::string text = "<region>";
    text += " trigger=attack ";
    text += formatText(" pitch_keycenter=%ld", long(note));
    text += formatText(" lokey=%d hikey=%d", lowKey, highKey);
    if (hasRelease)
        text += " ampeg_release=" + sfzNumber(releaseTime);
    text += " sample=" + sfzSampleName(baseName, ordinal, note);
    text += "\r\n";
    if (hasRelease) {
        text += "<region>";
        text += " trigger=release";
        text += formatText(" pitch_keycenter=%ld", long(note));
        text += formatText(" lokey=%d hikey=%d", lowKey, highKey);
        text += " ampeg_attack=" + sfzNumber(attackTime);
        text += " sample=" + sfzReleaseName(baseName, ordinal, note);
        text += "\r\n";
    }
    return text;
}

} // namespace tg
