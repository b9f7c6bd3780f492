// Montage export: the pipeline's Key-Samples become key banks; their audio waits in a scratch
// file beside the destination, one channel after the other, until the last one has arrived,
// since every offset in the library file depends on the sizes of all of them. The file is then
// written in one pass.
#include "export/montage/MontageExport.h"

#include "core/AtomicFile.h"
#include "core/Message.h"
#include "core/Paths.h"
#include "export/ExportPipeline.h"
#include "export/ExportProgress.h"
#include "export/KeyRangeMapping.h"
#include "export/UsableLoop.h"
#include "export/montage/YsfcLibrary.h"
#include "export/templates/TemporaryFolder.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace tg {
namespace {

constexpr const char* kNameLine = "MontageExporter:\n\n";
constexpr const char* kWritingText = "Writing the Montage file.";

// Where each key bank's audio lies in the scratch file.
struct SpooledAudio {
    off_t offset = 0;
    size_t size = 0;
};

// An unnamed file in the destination's folder that holds the audio until the library file is
// written: the audio can run to gigabytes, more than /tmp (often in memory) should take, and
// the destination's disk has to hold the file anyway. Nobody else sees it, and it disappears
// with the descriptor however the export ends.
class ScratchFile {
  public:
    ScratchFile() = default;
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }

    int create(const std::string& folder, std::string& message)
    {
        fd_ = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
        if (fd_ < 0) { // file systems without unnamed files: a named one, unlinked at once
            std::string name = joinPath(folder, ".montage-audio-XXXXXX");
            fd_ = ::mkostemp(name.data(), O_CLOEXEC);
            if (fd_ >= 0)
                ::unlink(name.c_str());
        }
        if (fd_ < 0)
            return setMessage(message, "unable to create a temporary file in \"%s\": %s",
                              folder.c_str(), std::strerror(errno));
        folder_ = folder;
        return 1;
    }

    int append(const std::vector<uint8_t>& bytes, SpooledAudio& spooled, std::string& message)
    {
        spooled.offset = size_;
        spooled.size = bytes.size();
        for (size_t done = 0; done < bytes.size();) {
            const ssize_t n =
                ::pwrite(fd_, bytes.data() + done, bytes.size() - done, off_t(size_ + done));
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                return setMessage(message, "unable to write the temporary file in \"%s\": %s",
                                  folder_.c_str(), n < 0 ? std::strerror(errno) : "disk full");
            done += size_t(n);
        }
        size_ += bytes.size();
        return 1;
    }

    // Hands the spooled bytes to `out`; false (with `readFailed()` telling which side) when
    // reading or `out` fails.
    bool copy(const SpooledAudio& spooled, const YsfcOutput& out)
    {
        std::vector<uint8_t> buffer(std::min<size_t>(spooled.size, 1 << 20));
        for (size_t done = 0; done < spooled.size;) {
            const size_t part = std::min(spooled.size - done, buffer.size());
            const ssize_t n = ::pread(fd_, buffer.data(), part, spooled.offset + off_t(done));
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0) {
                readFailed_ = true;
                return false;
            }
            if (!out(buffer.data(), size_t(n)))
                return false;
            done += size_t(n);
        }
        return true;
    }

    bool readFailed() const { return readFailed_; }
    const std::string& folder() const { return folder_; }

  private:
    int fd_ = -1;
    std::string folder_;
    uint64_t size_ = 0;
    bool readFailed_ = false;
};

// The writing phase fills the last step of the bar, which the pipeline left at
// (keys - 1) / keys when it handed over the last Key-Sample: after `copied` of `total` audio
// parts the bar stands at (keys - 1 + copied / total) / keys, and at the end at 1.
double writingProgress(size_t keys, size_t copied, size_t total)
{
    if (keys == 0 || total == 0)
        return 1.0;
    return (double(keys - 1) + double(copied) / double(total)) / double(keys);
}

// Printable ASCII without ':', which separates the category from the name in the file.
bool fitsWaveformName(const std::string& name)
{
    return !name.empty() && name.size() <= kYsfcNameLength &&
           std::all_of(name.begin(), name.end(),
                       [](char c) { return c >= ' ' && c <= '~' && c != ':'; });
}

class MontageSink : public ExportSink {
  public:
    explicit MontageSink(const std::string& path) : target_(path) {}

    // Opens the destination and the scratch file before anything is rendered, so that a folder
    // that cannot be written is reported at once.
    int prepare(const std::string& folder, std::string& message)
    {
        if (!target_.open())
            return setMessage(message, "unable to write \"%s\": %s", target_.target().c_str(),
                              std::strerror(target_.errorNumber()));
        return scratch_.create(folder, message);
    }

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
                              "Montage waveforms hold 44.1KHz 16 bit mono or stereo audio; Key "
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
        bank.looped = isLoopUsable(key.hasLoop, key.audio.loopStart, key.audio.loopEnd, frames);
        bank.loopStart = bank.looped ? uint32_t(key.audio.loopStart) : 0;
        bank.loopEnd = bank.looped ? uint32_t(key.audio.loopEnd) : 0;

        std::vector<uint8_t> channel(frames * 2);
        for (size_t c = 0; c < channels; ++c) {
            for (size_t i = 0; i < frames; ++i) {
                channel[2 * i] = bytes[(i * channels + c) * 2];
                channel[2 * i + 1] = bytes[(i * channels + c) * 2 + 1];
            }
            SpooledAudio spooled;
            if (!scratch_.append(channel, spooled, message))
                return 0;
            audio_.back().push_back(spooled);
            waveforms_.back().keyBanks.push_back(bank);
        }
        ++keysWritten_;
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

        const YsfcOutput out = [this](const uint8_t* data, size_t size) {
            return target_.write(data, size);
        };
        size_t total = 0, copied = 0;
        for (const auto& parts : audio)
            total += parts.size();
        bool aborted = false;
        const YsfcAudio copy = [&](size_t w, size_t b, const YsfcOutput& to) {
            aborted = exportAbortFlag;
            if (aborted || !scratch_.copy(audio[w][b], to))
                return false;
            reportExportProgress(writingProgress(keysWritten_, ++copied, total), kWritingText);
            return true;
        };
        if (!writeYsfcLibrary(waveforms, copy, out) || !target_.commit()) {
            target_.discard();
            if (aborted)
                return setMessage(message, "%s", kExportAbortedText);
            if (scratch_.readFailed())
                return setMessage(message, "unable to read the temporary file in \"%s\"",
                                  scratch_.folder().c_str());
            return setMessage(message, "unable to write \"%s\": %s", target_.target().c_str(),
                              target_.errorNumber() != 0 ? std::strerror(target_.errorNumber())
                                                         : "write failed");
        }
        return 1;
    }

  private:
    static int tooLarge(std::string& message)
    {
        return setMessage(message, "the waveforms add up to more than the 4 GB a Montage file "
                                   "can hold; export fewer Multi-Samples at once");
    }

    AtomicFile target_;
    ScratchFile scratch_;
    std::vector<YsfcWaveform> waveforms_;          // one per selected Multi-Sample
    std::vector<std::vector<SpooledAudio>> audio_; // by waveform, then key bank
    uint32_t sampleNumber_ = 0;
    size_t keysWritten_ = 0;
    uint64_t audioBytes_ = 0;
    VelocityRange velocities_;
};

} // namespace

MontageExporter::MontageExporter(Project& project, std::vector<int> mslIndices, std::string folder,
                                 std::string baseName, MontageFile kind, uint32_t settings,
                                 bool loopOnly)
    : project_(project), mslIndices_(std::move(mslIndices)), folder_(folder),
      path_(joinPath(folder, baseName + (kind == MontageFile::User ? ".X7U" : ".X7L"))),
      settings_(settings), loopOnly_(loopOnly)
{
}

int MontageExporter::run(const ExportServices& services, std::string& message)
{
    std::string text;
    if (!createFolders(folder_, text))
        return setMessage(message, "%s%s", kNameLine, text.c_str());
    MontageSink sink(path_);
    if (!sink.prepare(folder_, text))
        return setMessage(message, "%s%s", kNameLine, text.c_str());
    ExportJob job{kNameLine, &project_, mslIndices_, settings_, loopOnly_, services.renderThreads};
    return runExportPipeline(job, services, sink, message);
}

} // namespace tg
