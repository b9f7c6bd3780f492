// Decent Sampler export: the pipeline hands over each rendered Key-Sample, its WAV files go
// into "Samples", and the preset is written last, whole, once every sample is on disk.
#include "export/decent/DecentSamplerExport.h"

#include "core/AtomicFile.h"
#include "core/Message.h"
#include "core/Paths.h"
#include "export/ExportPipeline.h"
#include "export/ExportProgress.h"
#include "export/NamingTags.h"
#include "export/decent/DecentPreset.h"
#include "export/templates/TemporaryFolder.h"
#include "export/xml/XmlText.h"
#include "export/zip/ZipArchive.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

namespace tg {
namespace {

constexpr const char* kNameLine = "TGexport_DecentSampler():\n\n";
constexpr const char* kSampleFolder = "Samples";
constexpr const char* kCompressingText = "Compressing Decent Sampler library.";

class DecentSink : public ExportSink {
  public:
    DecentSink(const Project& project, const std::string& root, const std::string& baseName,
               const ExportServices& services)
        : project_(project), root_(root), base_(baseName), services_(services)
    {
    }

    int beginMultiSample(const TGmsl& msl, int, std::string&) override
    {
        DecentGroup group;
        group.name = std::string(msl.name, strnlen(msl.name, sizeof msl.name));
        group.hasVelocity = msl.mapTo == 0;
        group.loVel = std::clamp(int(msl.range_start), 0, 127);
        group.hiVel = std::clamp(int(msl.range_end), 0, 127);
        groups_.push_back(group);
        return 1;
    }

    int writeKey(const ExportedKey& key, std::string& message) override
    {
        const std::string name = portableFileName(expandNamingTags(
            project_, *key.msl, key.ordinal, key.note, "<#msi#>-<#ms#>-<#mn#>-<#n#>"));
        DecentZone zone;
        zone.rootNote = key.note;
        zone.loNote = key.key->mapLow;
        zone.hiNote = key.key->mapHigh;
        zone.loop = key.hasLoop && key.audio.loopEnd > key.audio.loopStart;
        zone.loopStart = zone.loop ? key.audio.loopStart : 0;
        zone.loopEnd = zone.loop ? key.audio.loopEnd : 0;
        SampleLoop loop;
        loop.enabled = zone.loop;
        loop.start = zone.loopStart;
        loop.end = zone.loopEnd;
        if (!writeSample(name + ".wav", key, key.audio.note, loop, zone, message))
            return 0;
        if (!key.audio.release.empty()) {
            DecentZone release = zone;
            release.release = true;
            release.loop = false;
            release.loopStart = release.loopEnd = 0;
            if (!writeSample(name + "-release.wav", key, key.audio.release, SampleLoop{}, release,
                             message))
                return 0;
        }
        return 1;
    }

    int finish(std::string& message) override
    {
        const std::string text = decentPresetXml(groups_);
        const std::string path = joinPath(root_, base_ + ".dspreset");
        if (!replaceFileContents(path, text.data(), text.size()))
            return setMessage(message, "unable to write \"%s\"", path.c_str());
        return 1;
    }

    // The sample files written, relative to the root, in writing order.
    const std::vector<std::string>& samplePaths() const { return samplePaths_; }

  private:
    int writeSample(const std::string& fileName, const ExportedKey& key,
                    const std::vector<uint8_t>& audio, const SampleLoop& loop, DecentZone zone,
                    std::string& message)
    {
        const std::string path = joinPath(joinPath(root_, kSampleFolder), fileName);
        if (!services_.writeWav(path, key.audio.format, audio, loop, key.note, message))
            return 0;
        zone.path = std::string(kSampleFolder) + "/" + fileName;
        groups_.back().zones.push_back(zone);
        samplePaths_.push_back(zone.path);
        return 1;
    }

    const Project& project_;
    std::string root_;
    std::string base_;
    const ExportServices& services_;
    std::vector<DecentGroup> groups_;
    std::vector<std::string> samplePaths_;
};

// Packs the preset and its samples under "<baseName>/" in the archive.
int packLibrary(const std::string& root, const std::string& baseName,
                const std::vector<std::string>& samples, const std::string& zipPath,
                std::string& message)
{
    std::vector<std::string> entries = {baseName + ".dspreset"};
    entries.insert(entries.end(), samples.begin(), samples.end());
    ZipArchive zip;
    if (!zip.create(zipPath, message))
        return 0;
    for (size_t i = 0; i < entries.size(); ++i) {
        if (exportAbortFlag)
            return setMessage(message, "%s", kExportAbortedText);
        reportExportProgress(double(i) / double(entries.size()), kCompressingText);
        if (!zip.addFile(baseName + "/" + entries[i], joinPath(root, entries[i]), message))
            return 0;
    }
    return zip.close(message);
}

} // namespace

int TGexport_DecentSampler(const std::string& folder, const std::string& baseName, bool library,
                           Project* project, const std::vector<int>& mslIndices, uint32_t settings,
                           bool loopOnly, std::string& message, const ExportServices& services)
{
    if (project == nullptr || !services.writeWav)
        return setMessage(message, "%sillegal pointer (==NULL)", kNameLine);
    if (baseName.empty())
        return setMessage(message, "%sno preset name given", kNameLine);

    TemporaryFolder staging;
    std::string root = folder;
    std::string text;
    if (library) {
        if (!staging.create(text))
            return setMessage(message, "%s%s", kNameLine, text.c_str());
        root = joinPath(staging.path(), baseName);
    }
    if (!createFolders(joinPath(root, kSampleFolder), text))
        return setMessage(message, "%s%s", kNameLine, text.c_str());

    DecentSink sink(*project, root, baseName, services);
    ExportJob job{kNameLine, project, mslIndices, settings, loopOnly};
    if (!runExportPipeline(job, services, sink, message))
        return 0;
    if (library && !packLibrary(root, baseName, sink.samplePaths(),
                                joinPath(folder, baseName + ".dslibrary"), text))
        return setMessage(message, "%s%s", kNameLine, text.c_str());
    return 1;
}

} // namespace tg
