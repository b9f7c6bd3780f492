// SFZ export: the text is built in memory while the samples are written and goes to disk
// in one write at the end, so an aborted export leaves no half SFZ file (and a failed one
// leaves the previous file as it was).
#include "export/ExportSfz.h"

#include "core/AtomicFile.h"
#include "core/Message.h"
#include "core/Paths.h"
#include "export/ExportPipeline.h"
#include "export/KeySampleFile.h"
#include "export/SfzText.h"

#include <new>

namespace tg {
namespace {

constexpr const char* kNameLine = "TGexport_DimensionSFZ():\n\n";
constexpr size_t kTextBytesPerKey = 2048;

class SfzSink : public ExportSink {
  public:
    SfzSink(const std::string& folder, const std::string& baseName, const std::string& extension,
            double releaseTime, double attackTime, const ExportServices& services)
        : folder_(folder), base_(baseName), extension_(extension), releaseTime_(releaseTime),
          attackTime_(attackTime), services_(services)
    {
    }

    int reserve(size_t keys, std::string& message)
    {
        try {
            text_.reserve(keys * kTextBytesPerKey);
        } catch (const std::bad_alloc&) {
            return setMessage(message, "Unable to allocate memory.");
        }
        text_ = sfzHeader();
        return 1;
    }

    int beginMultiSample(const TGmsl& msl, int, std::string&) override
    {
        text_ += sfzGroup(msl);
        return 1;
    }

    int writeKey(const ExportedKey& key, std::string& message) override
    {
        SampleLoop loop;
        loop.enabled = key.hasLoop;
        loop.start = key.audio.loopStart;
        loop.end = key.audio.loopEnd;
        const std::string notePath = joinPath(folder_, sfzSampleName(base_, key.ordinal, key.note));
        if (!services_.writeWav(notePath, key.audio.format, key.audio.note, loop, key.note,
                                message))
            return 0;
        const bool hasRelease = !key.audio.release.empty();
        if (hasRelease && !services_.writeWav(
                              joinPath(folder_, sfzReleaseName(base_, key.ordinal, key.note)),
                              key.audio.format, key.audio.release, SampleLoop{}, key.note, message))
            return 0;
        text_ += sfzRegions(base_, key.ordinal, key.note, key.key->mapLow, key.key->mapHigh,
                            hasRelease, releaseTime_, attackTime_);
        return 1;
    }

    int finish(std::string& message) override
    {
        const std::string path = joinPath(folder_, base_ + "." + extension_);
        AtomicFile file(path);
        if (!file.open())
            return setMessage(message, "unable to open \"%s\"", path.c_str());
        if (!file.write(text_.data(), text_.size()) || !file.commit())
            return setMessage(message, "write error \"%s\"", path.c_str());
        return 1;
    }

    const std::string& text() const { return text_; }

  private:
    std::string folder_;
    std::string base_;
    std::string extension_;
    double releaseTime_;
    double attackTime_;
    const ExportServices& services_;
    std::string text_;
};

} // namespace

int TGexport_DimensionSFZ(const std::string& folder, const std::string& baseName,
                          const std::string& extension, Project* project,
                          const std::vector<int>& mslIndices, uint32_t settings, double releaseTime,
                          double attackTime, std::string& message, const ExportServices& services)
{
    if (project == nullptr || !services.writeWav) {
        message = std::string(kNameLine) + "illegal pointer (==NULL)";
        return 0;
    }
    SfzSink sink(folder, baseName, extension, releaseTime, attackTime, services);
    std::string text;
    // Counted before the pipeline prepares the Project: the count only sizes the buffer.
    std::vector<int> valid;
    for (int index : mslIndices)
        if (index >= 0 && index < project->mslCount && index < kMaxMultiSamples)
            valid.push_back(index);
    if (!sink.reserve(size_t(countExportKeys(*project, valid)), text)) {
        message = kNameLine + text;
        return 0;
    }
    ExportJob job{kNameLine, project, mslIndices, settings, false, services.renderThreads};
    return runExportPipeline(job, services, sink, message);
}

} // namespace tg
