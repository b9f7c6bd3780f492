// The exporters behind the menu's formats, one row each.
#include "export/ExportRunner.h"

#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "export/ExportFormats.h"
#include "export/ExportSettings.h"
#include "export/ExportSfz.h"
#include "export/ExportSoundFont2.h"
#include "export/ExportWavFiles.h"
#include "export/FreeSpace.h"
#include "export/NamingTags.h"

#include <filesystem>

namespace tg {
namespace {

struct Target {
    std::string folder;
    std::string baseName;
    std::string extension;
};

// Splits "<folder>/<base>.<ext>"; a missing extension becomes `defaultExtension`.
Target fileTarget(const std::string& destination, const char* defaultExtension)
{
    const std::filesystem::path path(destination);
    Target target;
    target.folder = path.parent_path().empty() ? "." : path.parent_path().string();
    target.baseName = path.stem().string();
    target.extension =
        path.has_extension() ? path.extension().string().substr(1) : defaultExtension;
    return target;
}

using Exporter = int (*)(Project&, const ExportRequest&, uint32_t, bool, const ExportServices&,
                         std::string&);

int exportWav(Project& p, const ExportRequest& r, uint32_t word, bool loopOnly,
              const ExportServices& s, std::string& message)
{
    const std::string naming = r.nameTemplate.empty() ? kLongNamingDefault : r.nameTemplate;
    return TGexport_WavFiles(r.destination, naming, &p, r.mslIndices, word, loopOnly, message, s);
}

int exportAiff(Project& p, const ExportRequest& r, uint32_t word, bool loopOnly,
               const ExportServices& s, std::string& message)
{
    const std::string naming = r.nameTemplate.empty() ? kLongNamingDefault : r.nameTemplate;
    return TGexport_Aiff(r.destination, naming, &p, r.mslIndices, word, loopOnly, message, s);
}

int exportSfz(Project& p, const ExportRequest& r, uint32_t word, bool, const ExportServices& s,
              std::string& message)
{
    const Target t = fileTarget(r.destination, "sfz");
    // Every menu entry passes 0.0 for both envelope times.
    return TGexport_DimensionSFZ(t.folder, t.baseName, t.extension, &p, r.mslIndices, word, 0.0,
                                 0.0, message, s);
}

int exportSoundFont2(Project& p, const ExportRequest& r, uint32_t word, bool,
                     const ExportServices& s, std::string& message)
{
    const Target t = fileTarget(r.destination, "sf2");
    return TGexport_SoundFont2(t.folder, t.baseName, t.extension, &p, r.mslIndices, word, message,
                               s);
}

const struct {
    ExportFormat format;
    Exporter exporter;
} kExporters[] = {
    {ExportFormat::WavFiles, exportWav},
    {ExportFormat::SamplerWav, exportWav},
    {ExportFormat::Aiff, exportAiff},
    {ExportFormat::Sfz, exportSfz},
    {ExportFormat::SoundFont2, exportSoundFont2},
};

std::string checkFolder(const ExportRequest& request, ExportFormat format)
{
    const bool sampleSet = format == ExportFormat::WavFiles || format == ExportFormat::SamplerWav ||
                           format == ExportFormat::Aiff;
    if (sampleSet)
        return request.destination;
    const std::filesystem::path parent = std::filesystem::path(request.destination).parent_path();
    return parent.empty() ? "." : parent.string();
}

} // namespace

uint32_t requestSettingsWord(const ExportRequest& request)
{
    if (request.hasSettings)
        return request.settings;
    const ExportFormatInfo* info = findExportFormat(request.menuText);
    return info ? correctedSettingsWord(*info, false, 0) : 0;
}

int runExport(Project& project, const ExportRequest& request, const ExportServices& services,
              std::string& message)
{
    const ExportFormatInfo* info = findExportFormat(request.menuText);
    if (info == nullptr)
        return setMessage(message, "unknown export format \"%s\"", request.menuText.c_str());
    Exporter exporter = nullptr;
    for (const auto& row : kExporters)
        if (row.format == info->format)
            exporter = row.exporter;
    if (exporter == nullptr)
        return setMessage(message, "no exporter for \"%s\"", request.menuText.c_str());
    if (request.destination.empty())
        return setMessage(message, "Please enter a valid export directory!");

    const uint32_t word = requestSettingsWord(request);
    const WaveFormatProbe probe = [](const std::string& path, WaveFormat& format) {
        int32_t loopStart, loopEnd, rootKey, frames;
        std::string ignored;
        return readWavHeader(path, format, loopStart, loopEnd, rootKey, frames, ignored) == 1;
    };
    if (!checkFreeSpace(project, word, checkFolder(request, info->format), probe, message))
        return 0;

    ExportRequest resolved = request;
    if (resolved.mslIndices.empty())
        for (int i = 0; i < project.mslCount && i < kMaxMultiSamples; ++i)
            resolved.mslIndices.push_back(i);
    const bool loopOnly = isLoopOnlyMenuText(request.menuText) || wantsLoopOnly(word);
    return exporter(project, resolved, word, loopOnly, services, message);
}

} // namespace tg
