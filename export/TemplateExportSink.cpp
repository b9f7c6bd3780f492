// The adapter between the pipeline, which pushes finished Key-Samples, and the template
// exporters, which pull them.
#include "export/TemplateExportSink.h"

#include "audiofile/WavFile.h"
#include "core/Message.h"

#include <map>
#include <utility>

namespace tg {

namespace {

class KeptSamples : public KeySampleSource {
  public:
    void keep(int mslIndex, int note, RenderedSample sample)
    {
        samples_[{mslIndex, note}] = std::move(sample);
    }

    int render(int mslIndex, int, int note, RenderedSample& sample, std::string& message) override
    {
        const auto found = samples_.find({mslIndex, note});
        if (found == samples_.end())
            return setMessage(message, "Key-Sample %d of Multi-Sample %d was not rendered", note,
                              mslIndex + 1);
        sample = found->second;
        return 1;
    }

  private:
    std::map<std::pair<int, int>, RenderedSample> samples_;
};

class TemplateSink : public ExportSink {
  public:
    explicit TemplateSink(BaseExporter& exporter) : exporter_(exporter) {}

    int writeKey(const ExportedKey& key, std::string&) override
    {
        RenderedSample sample;
        sample.format = key.audio.format;
        sample.audio = key.audio.note;
        sample.hasLoop = key.hasLoop;
        sample.loopStart = key.hasLoop ? key.audio.loopStart : 0;
        sample.loopEnd = key.hasLoop ? key.audio.loopEnd : 0;
        sample.rootKey = key.note;
        kept_.keep(key.mslIndex, key.note, std::move(sample));
        return 1;
    }

    int finish(std::string& message) override
    {
        return exporter_.exportStep(kept_, writeRenderedWav, message) &&
               exporter_.finishStep(message);
    }

  private:
    BaseExporter& exporter_;
    KeptSamples kept_;
};

} // namespace

int writeRenderedWav(const std::string& path, const RenderedSample& sample, std::string& message)
{
    WavLoopInfo loop;
    loop.loopStart = sample.loopStart;
    loop.loopEnd = sample.loopEnd;
    loop.rootKey = sample.rootKey;
    return writeWav(path, sample.format, sample.audio, message, sample.hasLoop ? &loop : nullptr);
}

int runTemplateExport(BaseExporter& exporter, const ExportJob& job, const ExportServices& services,
                      std::string& message)
{
    TemplateSink sink(exporter);
    return runExportPipeline(job, services, sink, message);
}

} // namespace tg
