// Korg names are printf formats whose precision cuts long names; fields are cut to width.
#include "export/korg/KorgNames.h"

#include "core/Message.h"

namespace tg {

namespace {
std::string cut(std::string text, size_t width)
{
    if (text.size() > width)
        text.resize(width);
    return text;
}

char side(int channel)
{
    return channel == 1 ? 'R' : 'L';
}
} // namespace

std::string kronosFolderName(const char* projectName, int projectNumber)
{
    return formatText("%.6s%02d", projectName, projectNumber);
}

std::string kmpBaseName(const char* multiSampleName, int ordinal, int channel)
{
    return formatText("%.5s%02d%d", multiSampleName, ordinal, channel);
}

std::string kmpNameField(const char* multiSampleName, int channel)
{
    return cut(formatText("%-14s-%c", multiSampleName, side(channel)), 16);
}

std::string kmpNameChunk(const char* multiSampleName, int channel)
{
    return cut(formatText("%-22s-%c", multiSampleName, side(channel)), 24);
}

std::string ksfFileName(int kmpNumber, int sampleNumber)
{
    return formatText("MS%03d%03d.KSF", kmpNumber, sampleNumber);
}

std::string ksfSampleName(const char* multiSampleName, int note, bool stereo, int channel)
{
    if (!stereo)
        return cut(formatText("%-16s", formatText("%.12s-%03d", multiSampleName, note).c_str()), 16);
    const std::string base = formatText("%.10s-%03d", multiSampleName, note);
    return cut(formatText("%-14s-%c", base.c_str(), side(channel)), 16);
}

std::string ksfNameChunk(const char* multiSampleName, int note, bool stereo, int channel)
{
    if (!stereo)
        return cut(formatText("%-24s", formatText("%.20s-%03d", multiSampleName, note).c_str()), 24);
    const std::string base = formatText("%.18s-%03d", multiSampleName, note);
    return cut(formatText("%-22s-%c", base.c_str(), side(channel)), 24);
}

} // namespace tg
