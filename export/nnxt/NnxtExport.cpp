// NN-XT export: the pipeline hands over each rendered Key-Sample, its WAV file goes beside the
// patch, and the patch is written last, whole, once every sample it names is on disk.
#include "export/nnxt/NnxtExport.h"

#include "core/AtomicFile.h"
#include "core/Message.h"
#include "core/Paths.h"
#include "export/ExportPipeline.h"
#include "export/KeyRangeMapping.h"
#include "export/NamingTags.h"
#include "export/UsableLoop.h"
#include "export/nnxt/NnxtPatch.h"
#include "export/templates/TemporaryFolder.h"
#include "export/xml/XmlText.h"

namespace tg {
namespace {

constexpr const char* kNameLine = "TGexport_NNXT():\n\n";

class NnxtSink : public ExportSink {
  public:
    NnxtSink(const Project& project, const std::string& folder, const std::string& baseName,
             const ExportServices& services)
        : project_(project), folder_(folder), base_(baseName), services_(services)
    {
        patch_.name = baseName;
        patch_.groups = 0;
    }

    int beginMultiSample(const TGmsl& msl, int, std::string&) override
    {
        layerHasGroup_ = false;
        velocities_ = layerVelocities(msl, 1); // the sampler knows no velocity 0
        return 1;
    }

    int writeKey(const ExportedKey& key, std::string& message) override
    {
        // A layer without Key-Samples in its key range gets no group.
        if (!layerHasGroup_) {
            ++patch_.groups;
            layerHasGroup_ = true;
        }
        NnxtZone zone;
        zone.fileName = portableFileName(base_ + "-" +
                                         expandNamingTags(project_, *key.msl, key.ordinal, key.note,
                                                          "<#msi#>-<#ms#>-<#mn#>-<#n#>")) +
                        ".wav";
        zone.group = patch_.groups - 1;
        zone.rootKey = key.note;
        zone.lowKey = key.key->mapLow;
        zone.highKey = key.key->mapHigh;
        zone.lowVelocity = velocities_.low;
        zone.highVelocity = velocities_.high;
        const uint32_t frameBytes = key.audio.format.nBlockAlign;
        zone.frames = frameBytes == 0 ? 0 : uint32_t(key.audio.note.size() / frameBytes);
        zone.loop = isLoopUsable(key.hasLoop, key.audio.loopStart, key.audio.loopEnd, zone.frames);
        zone.loopStart = zone.loop ? uint32_t(key.audio.loopStart) : 0;
        zone.loopEnd = zone.loop ? uint32_t(key.audio.loopEnd) : 0;

        SampleLoop loop;
        loop.enabled = zone.loop;
        loop.start = int32_t(zone.loopStart);
        loop.end = int32_t(zone.loopEnd);
        if (!services_.writeWav(joinPath(folder_, zone.fileName), key.audio.format, key.audio.note,
                                loop, key.note, message))
            return 0;
        patch_.zones.push_back(zone);
        return 1;
    }

    int finish(std::string& message) override
    {
        const std::vector<uint8_t> bytes = nnxtPatchFile(patch_);
        const std::string path = joinPath(folder_, base_ + ".sxt");
        if (!replaceFileContents(path, bytes.data(), bytes.size()))
            return setMessage(message, "unable to write \"%s\"", path.c_str());
        return 1;
    }

  private:
    const Project& project_;
    std::string folder_;
    std::string base_;
    const ExportServices& services_;
    NnxtPatch patch_;
    bool layerHasGroup_ = false;
    VelocityRange velocities_;
};

} // namespace

int TGexport_NNXT(const std::string& folder, const std::string& baseName, Project* project,
                  const std::vector<int>& mslIndices, uint32_t settings, bool loopOnly,
                  std::string& message, const ExportServices& services)
{
    if (project == nullptr || !services.writeWav)
        return setMessage(message, "%sillegal pointer (==NULL)", kNameLine);
    if (baseName.empty())
        return setMessage(message, "%sno patch name given", kNameLine);
    std::string text;
    if (!createFolders(folder, text))
        return setMessage(message, "%s%s", kNameLine, text.c_str());
    NnxtSink sink(*project, folder, baseName, services);
    ExportJob job{kNameLine, project, mslIndices, settings, loopOnly, services.renderThreads};
    return runExportPipeline(job, services, sink, message);
}

} // namespace tg
