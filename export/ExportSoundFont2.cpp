// SoundFont 2 export: the common pipeline feeding the bank writer Key-Sample by Key-Sample.
#include "export/ExportSoundFont2.h"

#include "core/Paths.h"
#include "export/ExportPipeline.h"
#include "export/KeyRangeMapping.h"
#include "export/SoundFont2File.h"

#include <algorithm>

namespace tg {
namespace {

constexpr const char* kNameLine = "TGexport_SoundFont2():\n\n";

class SoundFont2Sink : public ExportSink {
  public:
    SoundFont2Sink(std::string path, std::string bankName, size_t keySamples)
        : path_(std::move(path)), bankName_(std::move(bankName)), keySamples_(keySamples)
    {
    }

    // The bank is opened when the first Multi-Sample starts, after trimming and level
    // analysis, so a failure there leaves no file behind.
    int beginMultiSample(const TGmsl&, int, std::string& message) override
    {
        if (opened_)
            return 1;
        opened_ = true;
        return bank_.open(path_, bankName_, keySamples_, message);
    }

    int writeKey(const ExportedKey& key, std::string& message) override
    {
        Sf2KeySample sample;
        sample.ordinal = key.ordinal;
        sample.note = key.note;
        sample.format = key.audio.format;
        sample.data = &key.audio.note;
        sample.hasLoop = key.hasLoop;
        sample.loopStart = key.audio.loopStart;
        sample.loopEnd = key.audio.loopEnd;
        sample.lowKey = key.key->mapLow;
        sample.highKey = key.key->mapHigh;
        const VelocityRange velocities = layerVelocities(*key.msl, 0);
        sample.lowVelocity = uint8_t(velocities.low);
        sample.highVelocity = uint8_t(velocities.high);
        return bank_.add(sample, message);
    }

    int finish(std::string& message) override { return bank_.finish(message); }

    void discard() { bank_.discard(); }

  private:
    std::string path_;
    std::string bankName_;
    size_t keySamples_;
    bool opened_ = false;
    SoundFont2File bank_;
};

} // namespace

int TGexport_SoundFont2(const std::string& folder, const std::string& bankName,
                        const std::string& extension, Project* project,
                        const std::vector<int>& mslIndices, uint32_t settings, std::string& message,
                        const ExportServices& services)
{
    if (project == nullptr) {
        message = std::string(kNameLine) + "illegal pointer (==NULL)";
        return 0;
    }
    std::vector<int> valid;
    for (int index : mslIndices)
        if (index >= 0 && index < project->mslCount && index < kMaxMultiSamples)
            valid.push_back(index);
    SoundFont2Sink sink(joinPath(folder, bankName + "." + extension), bankName,
                        size_t(countExportKeys(*project, valid)));
    ExportJob job{kNameLine, project, mslIndices, settings, false, services.renderThreads};
    const int ok = runExportPipeline(job, services, sink, message);
    if (!ok)
        sink.discard();
    return ok;
}

} // namespace tg
