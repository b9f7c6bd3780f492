// The exporters behind the menu's formats, one row each.
#include "export/ExportRunner.h"

#include "audiofile/WavFile.h"
#include "core/FolderSyncBatch.h"
#include "core/Message.h"
#include "core/Paths.h"
#include "export/ExportFormats.h"
#include "export/ExportPipeline.h"
#include "export/ExportSettings.h"
#include "export/ExportSfz.h"
#include "export/ExportSoundFont2.h"
#include "export/ExportWavFiles.h"
#include "export/FreeSpace.h"
#include "export/FurtherFormatsRunner.h"
#include "export/NamingTags.h"
#include "export/SettingsChoices.h"
#include "export/UnavailableFormats.h"
#include "export/templates/BitwigExporter.h"
#include "export/templates/DelugeExporter.h"
#include "export/templates/ExportChecks.h"
#include "export/templates/ProphetXExporter.h"
#include "export/templates/QuantumExporter.h"
#include "export/templates/TemporaryFolder.h"

#include <algorithm>
#include <cstring>
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

ExportJob templateJob(const char* nameLine, Project& p, const ExportRequest& r, uint32_t word,
                      bool loopOnly, const ExportServices& s)
{
    return ExportJob{nameLine, &p, r.mslIndices, word, loopOnly, s.renderThreads};
}

// The tagging dialog's name, or the Project's name when none was given.
std::string nameOr(const std::string& name, const Project& p)
{
    return name.empty() ? std::string(p.name, strnlen(p.name, sizeof p.name)) : name;
}

int exportBitwig(Project& p, const ExportRequest& r, uint32_t word, bool loopOnly,
                 const ExportServices& s, std::string& message)
{
    const Target t = fileTarget(r.destination, "multisample");
    BitwigExporter exporter(p, r.mslIndices, joinPath(t.folder, t.baseName + "." + t.extension),
                            word);
    applyTagging(exporter, r.tagging, r.loopAll);
    return runTemplateExport(templateJob("BitwigExporter:\n\n", p, r, word, loopOnly, s), exporter,
                             s, message);
}

int exportDeluge(Project& p, const ExportRequest& r, uint32_t word, bool loopOnly,
                 const ExportServices& s, std::string& message)
{
    // One layer only: the first of the selection.
    ExportRequest layer = r;
    layer.mslIndices.resize(1);
    DelugeExporter exporter(p, layer.mslIndices, r.destination, word,
                            nameOr(r.tagging.programName, p));
    applyTagging(exporter, r.tagging, r.loopAll);
    return runTemplateExport(templateJob("DelugeExporter:\n\n", p, layer, word, loopOnly, s),
                             exporter, s, message);
}

int exportQuantum(Project& p, const ExportRequest& r, uint32_t word, bool loopOnly,
                  const ExportServices& s, std::string& message)
{
    QuantumExporter exporter(p, r.mslIndices, r.destination, word, nameOr(r.tagging.folder, p),
                             nameOr(r.tagging.programName, p));
    applyTagging(exporter, r.tagging, r.loopAll);
    return runTemplateExport(templateJob("QuantumExporter:\n\n", p, r, word, loopOnly, s), exporter,
                             s, message);
}

int exportProphetX(Project& p, const ExportRequest& r, uint32_t word, bool loopOnly,
                   const ExportServices& s, std::string& message)
{
    if (r.tagging.userBank.empty() || r.tagging.category.empty())
        return setMessage(message,
                          "ProphetXExporter:\n\na user bank and a category are needed to place "
                          "the program");
    ProphetXTarget target;
    target.userBank = r.tagging.userBank;
    target.category = r.tagging.category;
    target.programNumber = r.tagging.programNumber;
    target.programName = nameOr(r.tagging.programName, p);
    ProphetXExporter exporter(p, r.mslIndices, r.destination, word, target);
    applyTagging(exporter, r.tagging, r.loopAll);
    return runTemplateExport(templateJob("ProphetXExporter:\n\n", p, r, word, loopOnly, s),
                             exporter, s, message);
}

int exportKronos(Project& p, const ExportRequest& r, uint32_t word, bool loopOnly,
                 const ExportServices& s, std::string& message)
{
    // The chosen folder may not exist yet; the export folder goes inside it.
    std::string error;
    if (!createFolders(r.destination, error))
        return setMessage(message, "TGexport_KORGKRONOS():\n\n%s", error.c_str());
    return runKronosExport(templateJob("TGexport_KORGKRONOS():\n\n", p, r, word, loopOnly, s),
                           r.destination, r.projectNumber, s, message);
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
    {ExportFormat::Bitwig, exportBitwig},
    {ExportFormat::Deluge, exportDeluge},
    {ExportFormat::Quantum, exportQuantum},
    {ExportFormat::ProphetX, exportProphetX},
    {ExportFormat::Kronos, exportKronos},
    {ExportFormat::DecentPreset, exportDecentPreset},
    {ExportFormat::DecentLibrary, exportDecentLibrary},
    {ExportFormat::OP1, exportOp1},
    {ExportFormat::Volca, exportVolca},
    {ExportFormat::HALion, exportHALion},
    {ExportFormat::Blofeld, exportBlofeld},
    {ExportFormat::NNXT, exportNNXT},
    {ExportFormat::Montage, exportMontage},
    {ExportFormat::Microsampler, exportMicrosampler},
};

} // namespace

bool hasExporter(ExportFormat format)
{
    if (exportUnavailableReason(format) != nullptr)
        return false;
    for (const auto& row : kExporters)
        if (row.format == format)
            return true;
    return false;
}

bool exportsIntoFolder(ExportFormat format)
{
    switch (format) {
    case ExportFormat::WavFiles:
    case ExportFormat::SamplerWav:
    case ExportFormat::Aiff:
    case ExportFormat::Deluge:
    case ExportFormat::Quantum:
    case ExportFormat::ProphetX:
    case ExportFormat::Kronos:
        return true;
    default:
        return false;
    }
}

bool usesNamingScheme(ExportFormat format)
{
    return format == ExportFormat::WavFiles || format == ExportFormat::SamplerWav ||
           format == ExportFormat::Aiff;
}

namespace {

// Indices the pipeline accepts; a bad one is left for the exporter to report.
bool validSelection(const Project& project, const std::vector<int>& mslIndices)
{
    return std::all_of(mslIndices.begin(), mslIndices.end(), [&](int index) {
        return index >= 0 && index < project.mslCount && index < kMaxMultiSamples;
    });
}

std::string checkFolder(const ExportRequest& request, ExportFormat format)
{
    if (exportsIntoFolder(format))
        return request.destination;
    const std::filesystem::path parent = std::filesystem::path(request.destination).parent_path();
    return parent.empty() ? "." : parent.string();
}

} // namespace

Result checkBeforeExport(const Project& project, const ExportRequest& request)
{
    const ExportFormatInfo* info = findExportFormat(request.menuText);
    if (info == nullptr)
        return Result::done();
    std::vector<int> selection = request.mslIndices;
    if (selection.empty())
        for (int i = 0; i < project.mslCount && i < kMaxMultiSamples; ++i)
            selection.push_back(i);
    if (info->format == ExportFormat::ProphetX) {
        Result layers = checkProphetXLayers(project, selection);
        if (!layers.ok())
            return layers;
    }
    SingleLoopFormat loopFormat;
    switch (info->format) {
    case ExportFormat::Deluge:
        loopFormat = SingleLoopFormat::Deluge;
        break;
    case ExportFormat::ProphetX:
        loopFormat = SingleLoopFormat::ProphetX;
        break;
    case ExportFormat::Quantum:
        loopFormat = SingleLoopFormat::Quantum;
        break;
    default:
        return Result::done();
    }
    // The notice asks for the "Loop all Samples" choice; once it is made the export may go on.
    if (request.loopAll)
        return Result::done();
    return checkLoopTypes(project, loopFormat);
}

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
    if (request.hasSettings &&
        !checkSettingsWord(info->allowedMask, "\"" + request.menuText + "\"", word, message))
        return 0;

    ExportRequest resolved = request;
    if (resolved.mslIndices.empty() && info->format == ExportFormat::Deluge)
        resolved.mslIndices.push_back(
            std::clamp(int(project.currentMsl), 0, std::max(0, int(project.mslCount) - 1)));
    if (resolved.mslIndices.empty())
        for (int i = 0; i < project.mslCount && i < kMaxMultiSamples; ++i)
            resolved.mslIndices.push_back(i);
    if (info->format == ExportFormat::Deluge && resolved.mslIndices.size() > 1)
        resolved.mslIndices.resize(1); // the Deluge takes one layer: the first of the selection
    const bool loopOnly = isLoopOnlyMenuText(request.menuText) || wantsLoopOnly(word);
    if (exportUnavailableReason(info->format) != nullptr) // refused with its reason
        return exporter(project, resolved, word, loopOnly, services, message);
    if (validSelection(project, resolved.mslIndices) &&
        countExportKeys(project, resolved.mslIndices) == 0)
        return setMessage(
            message,
            "Nothing to export: \"%s\" has no recorded Key-Sample within the key "
            "range of the selected Multi-Samples.",
            std::string(project.name, strnlen(project.name, sizeof project.name)).c_str());

    const WaveFormatProbe probe = [](const std::string& path, WaveFormat& format) {
        int32_t loopStart, loopEnd, rootKey, frames;
        std::string ignored;
        return readWavHeader(path, format, loopStart, loopEnd, rootKey, frames, ignored) == 1;
    };
    if (!checkFreeSpace(project, word, checkFolder(request, info->format), probe, message))
        return 0;

    // Each file is synced as it is put in place; the folders they went into are synced once,
    // before the export reports back, rather than after every file.
    FolderSyncBatch folderSyncs;
    return exporter(project, resolved, word, loopOnly, services, message);
}

} // namespace tg
