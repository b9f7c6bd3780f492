// WAV-files and AIFF-files exports: the common pipeline plus one writer call per part.
#include "export/ExportWavFiles.h"

#include "core/Paths.h"
#include "export/ExportPipeline.h"
#include "export/NamingTags.h"

namespace tg {
namespace {

enum class SetFormat { Wav, Aiff };

class SampleSetSink : public ExportSink {
  public:
    SampleSetSink(SetFormat format, const std::string& folder, const std::string& nameTemplate,
                  const Project& project, const ExportServices& services)
        : format_(format), folder_(folder), template_(nameTemplate), project_(project),
          services_(services)
    {
    }

    int writeKey(const ExportedKey& key, std::string& message) override
    {
        const std::string base =
            expandNamingTags(project_, *key.msl, key.ordinal, key.note, template_);
        SampleLoop loop;
        loop.enabled = key.hasLoop;
        loop.start = key.audio.loopStart;
        loop.end = key.audio.loopEnd;
        const SampleLoop noLoop;
        const char* extension = format_ == SetFormat::Wav ? ".wav" : ".aif";
        if (!write(joinPath(folder_, base + extension), key, key.audio.note, loop, base, message))
            return 0;
        if (!key.audio.release.empty() &&
            !write(joinPath(folder_, base + " - release" + extension), key, key.audio.release,
                   noLoop, base + " - release", message))
            return 0;
        return 1;
    }

  private:
    int write(const std::string& path, const ExportedKey& key, const std::vector<uint8_t>& data,
              const SampleLoop& loop, const std::string& name, std::string& message)
    {
        if (format_ == SetFormat::Wav)
            return services_.writeWav(path, key.audio.format, data, loop, key.note, message);
        SampleInstrument instrument;
        instrument.rootKey = uint8_t(key.note);
        instrument.lowKey = key.key->mapLow;
        instrument.highKey = key.key->mapHigh;
        return services_.writeAiff(path, key.audio.format, data, loop, instrument, name, message);
    }

    SetFormat format_;
    std::string folder_;
    std::string template_;
    const Project& project_;
    const ExportServices& services_;
};

int exportSampleSet(SetFormat format, const char* nameLine, const std::string& folder,
                    const std::string& nameTemplate, Project* project,
                    const std::vector<int>& mslIndices, uint32_t settings, bool loopOnly,
                    std::string& message, const ExportServices& services)
{
    const bool writerMissing = format == SetFormat::Wav ? !services.writeWav : !services.writeAiff;
    if (project == nullptr || writerMissing) {
        message = std::string(nameLine) + "illegal pointer (==NULL)";
        return 0;
    }
    ExportJob job{nameLine, project, mslIndices, settings, loopOnly, services.renderThreads};
    SampleSetSink sink(format, folder, nameTemplate, *project, services);
    return runExportPipeline(job, services, sink, message);
}

} // namespace

int TGexport_WavFiles(const std::string& folder, const std::string& nameTemplate, Project* project,
                      const std::vector<int>& mslIndices, uint32_t settings, bool loopOnly,
                      std::string& message, const ExportServices& services)
{
    return exportSampleSet(SetFormat::Wav, "TGexport_WavFiles():\n\n", folder, nameTemplate,
                           project, mslIndices, settings, loopOnly, message, services);
}

int TGexport_Aiff(const std::string& folder, const std::string& nameTemplate, Project* project,
                  const std::vector<int>& mslIndices, uint32_t settings, bool loopOnly,
                  std::string& message, const ExportServices& services)
{
    return exportSampleSet(SetFormat::Aiff, "TGexport_Aiff():\n\n", folder, nameTemplate, project,
                           mslIndices, settings, loopOnly, message, services);
}

} // namespace tg
