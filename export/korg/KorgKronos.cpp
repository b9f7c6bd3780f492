// The Kronos export: folder, script, KMPs with gap zones and KSFs per zone and channel.
#include "export/korg/KorgKronos.h"

#include "core/AtomicFile.h"
#include "core/Message.h"
#include "core/Paths.h"
#include "export/korg/KorgFiles.h"
#include "export/korg/KorgNames.h"

#include <cerrno>
#include <cstdio>
#include <sys/stat.h>

namespace tg {

namespace {

const char kNameLine[] = "TGexport_KORGKRONOS():\n\n";
constexpr uint32_t kChannelBits = 0x001F0000;
constexpr uint32_t kStereo = 0x20000;
constexpr uint32_t kDepthBits = 0x00000F00;
constexpr uint32_t kDepth8 = 0x200;

// Writes a whole byte image, whole or not at all; false when it could not be written.
bool writeBytes(const std::string& path, const std::vector<uint8_t>& bytes)
{
    return replaceFileContents(path, bytes.data(), bytes.size());
}

} // namespace

bool kronosIsStereo(uint32_t settings)
{
    return (settings & kChannelBits) == kStereo;
}

int TGexport_KORGKRONOS(const std::string& destination, const Project& project,
                        const std::vector<int>& selection, uint32_t settings, int projectNumber,
                        KeySampleSource& source, std::string& message)
{
    const bool stereo = kronosIsStereo(settings);
    const int bits = (settings & kDepthBits) == kDepth8 ? 8 : 16;
    const int channelCount = stereo ? 2 : 1;

    const std::string folder = joinPath(destination, kronosFolderName(project.name, projectNumber));
    struct stat existing {};
    if (mkdir(folder.c_str(), 0777) != 0 &&
        !(errno == EEXIST && stat(folder.c_str(), &existing) == 0 && S_ISDIR(existing.st_mode)))
        return setMessage(message, "%sunable to create directory \"%s\"", kNameLine,
                          folder.c_str());

    const std::string scriptPath = formatText("%s.KSC", folder.c_str());
    // The script lists every KMP; it replaces an earlier one only when the export completes.
    AtomicFile scriptFile(scriptPath);
    if (!scriptFile.open())
        return setMessage(message, "%sunable to open \"%s\"", kNameLine, scriptPath.c_str());
    std::FILE* script = scriptFile.stream();
    if (std::fprintf(script, "#KORG Script Version 1.0\r\n") != 26)
        return setMessage(message, "%sksc file write error \"%s\"", kNameLine, scriptPath.c_str());

    // Every zone's key is asked for once per channel, layer by layer.
    std::vector<SelectedKey> order;
    for (size_t ordinal = 0; ordinal < selection.size(); ++ordinal) {
        if (selection[ordinal] < 0 || selection[ordinal] >= kMaxMultiSamples)
            continue;
        const std::vector<KmpZone> zones = kmpZones(project.msl[selection[ordinal]]);
        for (int channel = 0; channel < channelCount; ++channel)
            for (const KmpZone& zone : zones)
                if (!zone.gap)
                    order.push_back({static_cast<int>(ordinal), zone.originalKey});
    }
    source.willRender(order);

    uint32_t kmpNumber = 0;
    uint32_t sampleNumber = 0;
    for (size_t ordinal = 0; ordinal < selection.size(); ++ordinal) {
        const int mslIndex = selection[ordinal];
        if (mslIndex < 0 || mslIndex >= kMaxMultiSamples)
            continue;
        const TGmsl& msl = project.msl[mslIndex];
        for (int channel = 0; channel < channelCount; ++channel) {
            ++kmpNumber;
            const std::string base = kmpBaseName(msl.name, static_cast<int>(ordinal), channel);
            const int written = std::fprintf(script, "%s.KMP\r\n", base.c_str());
            if (written != static_cast<int>(base.size()) + 6)
                return setMessage(message, "%sksc file write error \"%s\"", kNameLine,
                                  scriptPath.c_str());

            // The KSF names are known before any audio is rendered, so the KMP goes first.
            std::vector<KmpZone> zones = kmpZones(msl);
            uint32_t nextSample = sampleNumber;
            for (KmpZone& zone : zones)
                if (!zone.gap)
                    zone.sampleFile =
                        ksfFileName(static_cast<int>(kmpNumber), static_cast<int>(++nextSample));
            const std::string kmpPath = joinPath(folder, base + ".KMP");
            if (!writeBytes(kmpPath, buildKmp(kmpNameField(msl.name, channel),
                                              kmpNameChunk(msl.name, channel), zones, kmpNumber)))
                return setMessage(message, "%skmp file write error \"%s\"", kNameLine,
                                  kmpPath.c_str());

            for (const KmpZone& zone : zones) {
                if (zone.gap)
                    continue;
                ++sampleNumber;
                RenderedSample sample;
                std::string error;
                if (!source.render(mslIndex, static_cast<int>(ordinal), zone.originalKey, sample,
                                   error))
                    return setMessage(message, "%s%s", kNameLine, error.c_str());
                const std::string ksfPath = joinPath(folder, zone.sampleFile);
                const std::vector<uint8_t> ksf =
                    buildKsf(ksfSampleName(msl.name, zone.originalKey, stereo, channel),
                             ksfNameChunk(msl.name, zone.originalKey, stereo, channel), sample,
                             channel, bits, sampleNumber);
                if (!writeBytes(ksfPath, ksf))
                    return setMessage(message, "%sksf file write error \"%s\"", kNameLine,
                                      ksfPath.c_str());
            }
        }
    }
    if (!scriptFile.commit())
        return setMessage(message, "%sksc file write error \"%s\"", kNameLine, scriptPath.c_str());
    return 1;
}

} // namespace tg
