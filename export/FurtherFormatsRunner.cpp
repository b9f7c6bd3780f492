// From a menu request to the further formats' entry functions.
#include "export/FurtherFormatsRunner.h"

#include "core/Message.h"
#include "export/ExportFormats.h"
#include "export/UnavailableFormats.h"
#include "export/decent/DecentSamplerExport.h"
#include "export/montage/MontageExport.h"
#include "export/nnxt/NnxtExport.h"
#include "export/op1/Op1Export.h"
#include "export/volca/VolcaExport.h"

#include <cstring>
#include <filesystem>

namespace tg {
namespace {

// "<folder>/<base>.<ext>" split into folder and base name; the extension is the format's own.
void splitFileTarget(const std::string& destination, std::string& folder, std::string& baseName)
{
    const std::filesystem::path path(destination);
    folder = path.parent_path().empty() ? "." : path.parent_path().string();
    baseName = path.stem().string();
}

int exportDecent(Project& p, const ExportRequest& r, uint32_t word, bool loopOnly, bool library,
                 const ExportServices& s, std::string& message)
{
    std::string folder, baseName;
    splitFileTarget(r.destination, folder, baseName);
    return TGexport_DecentSampler(folder, baseName, library, &p, r.mslIndices, word, loopOnly,
                                  message, s);
}

int refuse(const char* nameLine, ExportFormat format, std::string& message)
{
    return setMessage(message, "%s%s", nameLine, exportUnavailableReason(format));
}

} // namespace

int exportHALion(Project&, const ExportRequest&, uint32_t, bool, const ExportServices&,
                 std::string& message)
{
    return refuse("TGexport_HALion():\n\n", ExportFormat::HALion, message);
}

int exportBlofeld(Project&, const ExportRequest&, uint32_t, bool, const ExportServices&,
                  std::string& message)
{
    return refuse("TGexport_HALion():\n\n", ExportFormat::Blofeld, message);
}

int exportNNXT(Project& p, const ExportRequest& r, uint32_t word, bool loopOnly,
               const ExportServices& s, std::string& message)
{
    std::string folder, baseName;
    splitFileTarget(r.destination, folder, baseName);
    return TGexport_NNXT(folder, baseName, &p, r.mslIndices, word, loopOnly, message, s);
}

int exportMontage(Project& p, const ExportRequest& r, uint32_t word, bool loopOnly,
                  const ExportServices& s, std::string& message)
{
    std::string folder, baseName;
    splitFileTarget(r.destination, folder, baseName);
    // Both menu rows write the same file; the row's extension says where the instrument loads it.
    const ExportFormatInfo* row = findExportFormat(r.menuText);
    const bool library = row != nullptr && std::strcmp(row->key, "(*.x7l)") == 0;
    MontageExporter exporter(p, r.mslIndices, folder, baseName,
                             library ? MontageFile::Library : MontageFile::User, word, loopOnly);
    return exporter.run(s, message);
}

int exportMicrosampler(Project&, const ExportRequest&, uint32_t, bool, const ExportServices&,
                       std::string& message)
{
    return refuse("TGexport_MultiSampler():\n\n", ExportFormat::Microsampler, message);
}

int exportDecentPreset(Project& p, const ExportRequest& r, uint32_t word, bool loopOnly,
                       const ExportServices& s, std::string& message)
{
    return exportDecent(p, r, word, loopOnly, false, s, message);
}

int exportDecentLibrary(Project& p, const ExportRequest& r, uint32_t word, bool loopOnly,
                        const ExportServices& s, std::string& message)
{
    return exportDecent(p, r, word, loopOnly, true, s, message);
}

int exportOp1(Project& p, const ExportRequest& r, uint32_t word, bool loopOnly,
              const ExportServices& s, std::string& message)
{
    std::string folder, baseName;
    splitFileTarget(r.destination, folder, baseName);
    return TGexport_OP1(folder, baseName, &p, r.mslIndices, word, loopOnly, message, s);
}

int exportVolca(Project& p, const ExportRequest& r, uint32_t word, bool loopOnly,
                const ExportServices& s, std::string& message)
{
    std::string folder, baseName;
    splitFileTarget(r.destination, folder, baseName);
    // The slots are filled from the first one; the slot map tells which Key-Sample went where.
    return TGexport_VolcaSample(folder, baseName, 0, &p, r.mslIndices, word, loopOnly, message, s);
}

} // namespace tg
