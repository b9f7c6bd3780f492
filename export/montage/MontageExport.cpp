// Montage export: the pipeline's Key-Samples become key banks; their audio waits in a scratch
// file, one channel after the other, until the last one has arrived, since every offset in the
// library file depends on the sizes of all of them. The file is then written in one pass.
#include "export/montage/MontageExport.h"

#include "core/AtomicFile.h"
#include "core/Message.h"
#include "core/Paths.h"
#include "export/ExportPipeline.h"
#include "export/ExportProgress.h"
#include "export/KeyRangeMapping.h"
#include "export/montage/YsfcLibrary.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include <sys/types.h>

namespace tg {
namespace {

constexpr const char* kNameLine = "MontageExporter:\n\n";
constexpr const char* kWritingText = "Writing the Montage file.";

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Where each key bank's audio lies in the scratch file.
struct SpooledAudio {
    off_t offset = 0;
    size_t size = 0;
};

// Printable ASCII without ':', which separates the category from the name in the file.
bool fitsWaveformName(const std::string& name)
{
    return !name.empty() && name.size() <= kYsfcNameLength &&
           std::all_of(name.begin(), name.end(),
                       [](char c) { return c >= ' ' && c <= '~' && c != ':'; });
}

class MontageSink : public ExportSink {
  public:
    explicit MontageSink(std::string path) : path_(std::move(path)) {}

    int beginMultiSample(const TGmsl& msl, int, std::string& message) override
    {
        const std::string name(msl.name, strnlen(msl.name, sizeof msl.name));
        if (!fitsWaveformName(name))
            return setMessage(message,
                              "the Multi-Sample name \"%s\" is no Montage waveform name: 1 to %d "
                              "characters of plain ASCII without ':'",
                              name.c_str(), int(kYsfcNameLength));
        YsfcWaveform waveform;
        waveform.name = name;
        waveforms_.push_back(waveform);
        audio_.emplace_back();
        velocities_ = layerVelocities(msl, 1);
        return 1;
    }

    int writeKey(const ExportedKey& key, std::string& message) override
    {
        const WaveFormat& format = key.audio.format;
        const char* layer = waveforms_.back().name.c_str();
        if (format.nSamplesPerSec != kYsfcRate || format.wBitsPerSample != 16 ||
            (format.nChannels != 1 && format.nChannels != 2))
            return setMessage(message,
                              "Montage waveforms hold 44.1 KHz 16 bit mono or stereo audio; Key "
                              "%d of \"%s\" is %u Hz, %u channel(s), %u bit",
                              key.note, layer, unsigned(format.nSamplesPerSec),
                              unsigned(format.nChannels), unsigned(format.wBitsPerSample));
        const size_t channels = format.nChannels;
        const std::vector<uint8_t>& bytes = key.audio.note;
        const size_t frames = bytes.size() / (2 * channels);
        audioBytes_ += uint64_t(frames) * 2 * channels;
        if (audioBytes_ > kYsfcMaxFileSize) // known before the rest is rendered
            return tooLarge(message);

        YsfcKeyBank bank;
        bank.lowKey = uint8_t(std::clamp(int(key.key->mapLow), 0, 127));
        bank.highKey = uint8_t(std::clamp(int(key.key->mapHigh), 0, 127));
        bank.lowVelocity = uint8_t(velocities_.low);
        bank.highVelocity = uint8_t(velocities_.high);
        bank.rootKey = uint8_t(key.note);
        bank.channels = uint8_t(channels);
        bank.sampleNumber = ++sampleNumber_;
        bank.frames = uint32_t(frames);
        bank.looped = key.hasLoop && key.audio.loopStart >= 0 &&
                      key.audio.loopEnd > key.audio.loopStart && size_t(key.audio.loopEnd) < frames;
        bank.loopStart = bank.looped ? uint32_t(key.audio.loopStart) : 0;
        bank.loopEnd = bank.looped ? uint32_t(key.audio.loopEnd) : 0;

        std::vector<uint8_t> channel(frames * 2);
        for (size_t c = 0; c < channels; ++c) {
            for (size_t i = 0; i < frames; ++i) {
                channel[2 * i] = bytes[(i * channels + c) * 2];
                channel[2 * i + 1] = bytes[(i * channels + c) * 2 + 1];
            }
            if (!spool(channel, message))
                return 0;
            waveforms_.back().keyBanks.push_back(bank);
        }
        return 1;
    }

    int finish(std::string& message) override
    {
        // A layer without a Key-Sample in its key range would be an empty waveform.
        std::vector<YsfcWaveform> waveforms;
        std::vector<std::vector<SpooledAudio>> audio;
        for (size_t i = 0; i < waveforms_.size(); ++i)
            if (!waveforms_[i].keyBanks.empty()) {
                waveforms.push_back(waveforms_[i]);
                audio.push_back(audio_[i]);
            }
        if (ysfcFileSize(waveforms) > kYsfcMaxFileSize)
            return tooLarge(message);

        AtomicFile file(path_);
        if (!file.open())
            return setMessage(message, "unable to write \"%s\"", path_.c_str());
        const YsfcOutput out = [&file](const uint8_t* data, size_t size) {
            return file.write(data, size);
        };
        size_t total = 0, copied = 0;
        for (const auto& parts : audio)
            total += parts.size();
        bool aborted = false;
        const YsfcAudio copy = [&](size_t w, size_t b, const YsfcOutput& to) {
            aborted = exportAbortFlag;
            reportExportProgress(double(copied++) / double(total), kWritingText);
            return !aborted && copySpooled(audio[w][b], to);
        };
        if (!writeYsfcLibrary(waveforms, copy, out) || !file.commit()) {
            file.discard();
            if (aborted)
                return setMessage(message, "%s", kExportAbortedText);
            return setMessage(message, "unable to write \"%s\"", path_.c_str());
        }
        return 1;
    }

  private:
    static int tooLarge(std::string& message)
    {
        return setMessage(message, "the waveforms add up to more than the 4 GB a Montage file "
                                   "can hold; export fewer Multi-Samples at once");
    }

    int spool(const std::vector<uint8_t>& channel, std::string& message)
    {
        if (!scratch_)
            scratch_.reset(std::tmpfile());
        if (!scratch_ || fseeko(scratch_.get(), 0, SEEK_END) != 0)
            return setMessage(message, "unable to create a temporary file");
        SpooledAudio spooled;
        spooled.offset = ftello(scratch_.get());
        spooled.size = channel.size();
        if (spooled.offset < 0 ||
            std::fwrite(channel.data(), 1, channel.size(), scratch_.get()) != channel.size())
            return setMessage(message, "unable to write a temporary file");
        audio_.back().push_back(spooled);
        return 1;
    }

    bool copySpooled(const SpooledAudio& spooled, const YsfcOutput& out)
    {
        if (fseeko(scratch_.get(), spooled.offset, SEEK_SET) != 0)
            return false;
        std::vector<uint8_t> buffer(std::min<size_t>(spooled.size, 1 << 20));
        for (size_t left = spooled.size; left > 0;) {
            const size_t part = std::min(left, buffer.size());
            if (std::fread(buffer.data(), 1, part, scratch_.get()) != part ||
                !out(buffer.data(), part))
                return false;
            left -= part;
        }
        return true;
    }

    std::string path_;
    std::vector<YsfcWaveform> waveforms_;          // one per selected Multi-Sample
    std::vector<std::vector<SpooledAudio>> audio_; // by waveform, then key bank
    std::unique_ptr<std::FILE, FileCloser> scratch_;
    uint32_t sampleNumber_ = 0;
    uint64_t audioBytes_ = 0;
    VelocityRange velocities_;
};

} // namespace

MontageExporter::MontageExporter(Project& project, std::vector<int> mslIndices, std::string folder,
                                 std::string baseName, MontageFile kind, uint32_t settings,
                                 bool loopOnly)
    : project_(project), mslIndices_(std::move(mslIndices)),
      path_(joinPath(folder, baseName + (kind == MontageFile::User ? ".X7U" : ".X7L"))),
      settings_(settings), loopOnly_(loopOnly)
{
}

int MontageExporter::run(const ExportServices& services, std::string& message)
{
    MontageSink sink(path_);
    ExportJob job{kNameLine, &project_, mslIndices_, settings_, loopOnly_, services.renderThreads};
    return runExportPipeline(job, services, sink, message);
}

} // namespace tg
