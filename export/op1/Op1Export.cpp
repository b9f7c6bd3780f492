// OP-1 export: the pipeline's Key-Samples are gathered per layer and each layer's kit is
// written whole once its last slice has arrived.
#include "export/op1/Op1Export.h"

#include "core/AtomicFile.h"
#include "core/Message.h"
#include "core/Paths.h"
#include "export/ExportPipeline.h"
#include "export/op1/Op1DrumKit.h"

#include <cstring>

namespace tg {
namespace {

constexpr const char* kNameLine = "TGexport_OP1():\n\n";

class Op1Sink : public ExportSink {
  public:
    Op1Sink(const std::string& folder, const std::string& baseName, size_t layers)
        : folder_(folder), base_(baseName), layers_(layers)
    {
    }

    int beginMultiSample(const TGmsl& msl, int ordinal, std::string& message) override
    {
        if (!writeKit(message))
            return 0;
        name_ = std::string(msl.name, strnlen(msl.name, sizeof msl.name));
        ordinal_ = ordinal;
        slices_.clear();
        frames_ = 0;
        return 1;
    }

    int writeKey(const ExportedKey& key, std::string& message) override
    {
        const WaveFormat& format = key.audio.format;
        if (format.nSamplesPerSec != kOp1Rate || format.nChannels != 1 ||
            format.wBitsPerSample != 16)
            return setMessage(message,
                              "an OP-1 drum kit holds 44.1 KHz mono 16 bit audio; Key %d of "
                              "\"%s\" is %u Hz, %u channel(s), %u bit",
                              key.note, name_.c_str(), unsigned(format.nSamplesPerSec),
                              unsigned(format.nChannels), unsigned(format.wBitsPerSample));
        if (slices_.size() == size_t(kOp1Slots))
            return setMessage(message,
                              "\"%s\" has more than %d Key-Samples; an OP-1 drum kit holds %d",
                              name_.c_str(), kOp1Slots, kOp1Slots);
        Op1Slice slice;
        const std::vector<uint8_t>& bytes = key.audio.note;
        for (size_t i = 0; i + 1 < bytes.size(); i += 2)
            slice.frames.push_back(int16_t(bytes[i] | bytes[i + 1] << 8));
        frames_ += int64_t(slice.frames.size());
        if (frames_ > kOp1MaxFrames)
            return setMessage(message,
                              "the Key-Samples of \"%s\" last longer than the 12 seconds of an "
                              "OP-1 drum kit",
                              name_.c_str());
        slices_.push_back(std::move(slice));
        return 1;
    }

    int finish(std::string& message) override { return writeKit(message); }

  private:
    int writeKit(std::string& message)
    {
        if (ordinal_ < 0)
            return 1;
        const std::string name =
            layers_ > 1 ? formatText("%s-%02d", base_.c_str(), ordinal_) : base_;
        const std::string path = joinPath(folder_, name + ".aif");
        const std::vector<uint8_t> file = op1DrumKitFile(name_, slices_);
        if (!replaceFileContents(path, file.data(), file.size()))
            return setMessage(message, "unable to write \"%s\"", path.c_str());
        ordinal_ = -1;
        return 1;
    }

    std::string folder_;
    std::string base_;
    size_t layers_;
    int ordinal_ = -1; // the layer being gathered, -1 before the first
    std::string name_;
    std::vector<Op1Slice> slices_;
    int64_t frames_ = 0;
};

} // namespace

int TGexport_OP1(const std::string& folder, const std::string& baseName, Project* project,
                 const std::vector<int>& mslIndices, uint32_t settings, bool loopOnly,
                 std::string& message, const ExportServices& services)
{
    if (project == nullptr)
        return setMessage(message, "%sillegal pointer (==NULL)", kNameLine);
    Op1Sink sink(folder, baseName, mslIndices.size());
    ExportJob job{kNameLine, project, mslIndices, settings, loopOnly};
    return runExportPipeline(job, services, sink, message);
}

} // namespace tg
