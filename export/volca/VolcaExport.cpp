// Volca Sample export: the pipeline's Key-Samples are gathered as 16-bit mono samples, then the
// stream is written in one pass and the slot map beside it.
#include "export/volca/VolcaExport.h"

#include "core/AtomicFile.h"
#include "core/Message.h"
#include "core/NoteNames.h"
#include "core/Paths.h"
#include "export/ExportPipeline.h"
#include "export/volca/VolcaStream.h"
#include "export/xml/XmlText.h"

#include <cstring>

namespace tg {
namespace {

constexpr const char* kNameLine = "TGexport_VolcaSample():\n\n";

// 8-bit (unsigned), 16-bit and 24-bit frames as 16-bit values.
std::vector<int16_t> sixteenBit(const std::vector<uint8_t>& bytes, int bits)
{
    std::vector<int16_t> frames;
    const size_t step = size_t(bits / 8);
    for (size_t i = 0; i + step <= bytes.size(); i += step) {
        if (bits == 8)
            frames.push_back(int16_t((int(bytes[i]) - 128) * 256));
        else
            frames.push_back(int16_t(bytes[i + step - 2] | bytes[i + step - 1] << 8));
    }
    return frames;
}

void putLe(std::vector<uint8_t>& out, uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out.push_back(uint8_t(value >> (8 * i)));
}

std::vector<uint8_t> streamWavHeader(uint64_t frames)
{
    const uint32_t dataBytes = uint32_t(frames * 4);
    std::vector<uint8_t> header;
    header.insert(header.end(), {'R', 'I', 'F', 'F'});
    putLe(header, 36 + dataBytes, 4);
    header.insert(header.end(), {'W', 'A', 'V', 'E', 'f', 'm', 't', ' '});
    putLe(header, 16, 4);
    putLe(header, 1, 2); // PCM
    putLe(header, 2, 2);
    putLe(header, kVolcaStreamRate, 4);
    putLe(header, kVolcaStreamRate * 4, 4);
    putLe(header, 4, 2);
    putLe(header, 16, 2);
    header.insert(header.end(), {'d', 'a', 't', 'a'});
    putLe(header, dataBytes, 4);
    return header;
}

class VolcaSink : public ExportSink {
  public:
    VolcaSink(const std::string& folder, const std::string& baseName, int firstSlot)
        : folder_(folder), base_(baseName), nextSlot_(firstSlot)
    {
    }

    int writeKey(const ExportedKey& key, std::string& message) override
    {
        const WaveFormat& format = key.audio.format;
        const std::string layer(key.msl->name, strnlen(key.msl->name, sizeof key.msl->name));
        if (format.nChannels != 1)
            return setMessage(message,
                              "the Volca Sample takes mono samples; Key %d of \"%s\" has %u "
                              "channels",
                              key.note, layer.c_str(), unsigned(format.nChannels));
        if (format.nSamplesPerSec > kVolcaMaxSampleRate)
            return setMessage(message,
                              "the Volca Sample plays samples up to %u Hz; Key %d of "
                              "\"%s\" is %u Hz",
                              unsigned(kVolcaMaxSampleRate), key.note, layer.c_str(),
                              unsigned(format.nSamplesPerSec));
        if (nextSlot_ >= kVolcaSlots)
            return setMessage(message,
                              "the Volca Sample has %d sample slots; Key %d of \"%s\" finds none "
                              "left",
                              kVolcaSlots, key.note, layer.c_str());
        VolcaSample sample;
        sample.slot = nextSlot_++;
        sample.rate = format.nSamplesPerSec;
        sample.frames = sixteenBit(key.audio.note, format.wBitsPerSample);
        slotMap_ += formatText("%d\t%s\t%d\t%s\t%zu\t%u\n", sample.slot,
                               utf8FromName(layer).c_str(), key.note, noteName(key.note).c_str(),
                               sample.frames.size(), unsigned(sample.rate));
        samples_.push_back(std::move(sample));
        return 1;
    }

    int finish(std::string& message) override
    {
        const std::string streamPath = joinPath(folder_, base_ + ".wav");
        AtomicFile stream(streamPath);
        const std::vector<uint8_t> header = streamWavHeader(volcaStreamFrames(samples_));
        bool written = stream.open() && stream.write(header.data(), header.size());
        std::vector<uint8_t> bytes;
        written = written && writeVolcaStream(samples_, [&](const int16_t* frames, size_t count) {
                      bytes.clear();
                      for (size_t i = 0; i < count * 2; ++i)
                          putLe(bytes, uint16_t(frames[i]), 2);
                      return stream.write(bytes.data(), bytes.size());
                  });
        if (!written || !stream.commit())
            return setMessage(message, "unable to write \"%s\"", streamPath.c_str());

        const std::string text = "slot\tmulti-sample\tnote\tnote name\tframes\trate\n" + slotMap_;
        const std::string mapPath = joinPath(folder_, base_ + ".txt");
        if (!replaceFileContents(mapPath, text.data(), text.size()))
            return setMessage(message, "unable to write \"%s\"", mapPath.c_str());
        return 1;
    }

  private:
    std::string folder_;
    std::string base_;
    int nextSlot_;
    std::vector<VolcaSample> samples_;
    std::string slotMap_;
};

} // namespace

int TGexport_VolcaSample(const std::string& folder, const std::string& baseName, int firstSlot,
                         Project* project, const std::vector<int>& mslIndices, uint32_t settings,
                         bool loopOnly, std::string& message, const ExportServices& services)
{
    if (project == nullptr)
        return setMessage(message, "%sillegal pointer (==NULL)", kNameLine);
    if (firstSlot < 0 || firstSlot >= kVolcaSlots)
        return setMessage(message, "%sthe first sample slot must be 0 to %d, not %d", kNameLine,
                          kVolcaSlots - 1, firstSlot);
    VolcaSink sink(folder, baseName, firstSlot);
    ExportJob job{kNameLine, project, mslIndices, settings, loopOnly};
    return runExportPipeline(job, services, sink, message);
}

} // namespace tg
