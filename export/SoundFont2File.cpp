// RIFF "sfbk" writer. Chunk sizes are written as 0 and patched by seeking back once the
// chunk is complete, so the sample data can be streamed without holding the whole bank.
#include "export/SoundFont2File.h"

#include "core/Message.h"
#include "core/NoteNames.h"

#include <algorithm>
#include <new>

namespace tg {
namespace {

constexpr int kZeroPointsAfterSample = 128;

// Sample types of "shdr".
constexpr uint16_t kMonoSample = 1;
constexpr uint16_t kRightSample = 2;
constexpr uint16_t kLeftSample = 4;

// Generators written.
constexpr uint16_t kGenPan = 17;
constexpr uint16_t kGenInstrument = 41;
constexpr uint16_t kGenKeyRange = 43;
constexpr uint16_t kGenVelRange = 44;
constexpr uint16_t kGenSampleId = 53;
constexpr uint16_t kGenSampleModes = 54;

void put16(std::string& out, uint32_t value)
{
    out += char(value & 0xFF);
    out += char((value >> 8) & 0xFF);
}

void put32(std::string& out, uint32_t value)
{
    put16(out, value & 0xFFFF);
    put16(out, value >> 16);
}

// A text cut to `size` - 1 bytes and zero-padded to `size`, so it always ends in a zero.
void putName(std::string& out, const std::string& text, size_t size)
{
    std::string field = text.substr(0, size - 1);
    field.resize(size, '\0');
    out += field;
}

std::string chunk(const char* id, const std::string& data)
{
    std::string out(id, 4);
    put32(out, uint32_t(data.size()));
    return out + data;
}

int16_t point16(const uint8_t* p, int bits)
{
    switch (bits) {
    case 8:
        return int16_t((int(p[0]) - 128) * 256);
    case 24:
        return int16_t(uint16_t(p[1] | p[2] << 8));
    default:
        return int16_t(uint16_t(p[0] | p[1] << 8));
    }
}

} // namespace

SoundFont2File::~SoundFont2File()
{
    discard();
}

void SoundFont2File::discard()
{
    if (file_ != nullptr) {
        std::fclose(file_);
        file_ = nullptr;
        if (!finished_)
            std::remove(path_.c_str());
    }
}

int SoundFont2File::fail(std::string& message, const char* format)
{
    setMessage(message, format, path_.c_str());
    discard();
    return 0;
}

int SoundFont2File::writeBytes(const std::string& bytes)
{
    return std::fwrite(bytes.data(), 1, bytes.size(), file_) == bytes.size() ? 1 : 0;
}

int SoundFont2File::patchSize(long chunkStart, long chunkEnd)
{
    std::string size;
    put32(size, uint32_t(chunkEnd - chunkStart - 8));
    return std::fseek(file_, chunkStart + 4, SEEK_SET) == 0 && writeBytes(size) &&
           std::fseek(file_, chunkEnd, SEEK_SET) == 0;
}

int SoundFont2File::open(const std::string& path, const std::string& bankName,
                         size_t expectedKeySamples, std::string& message)
{
    discard();
    path_ = path;
    bankName_ = bankName;
    samples_.clear();
    points_ = 0;
    finished_ = false;
    file_ = std::fopen(path.c_str(), "wb");
    if (file_ == nullptr)
        return setMessage(message, "unable to open \"%s\"", path.c_str());

    std::string info = "INFO";
    std::string ifil;
    put16(ifil, 2);
    put16(ifil, 0);
    info += chunk("ifil", ifil);
    std::string isng;
    putName(isng, "for software samplers from Tonegrabber", 256);
    info += chunk("isng", isng);
    std::string inam;
    putName(inam, bankName, 48);
    info += chunk("INAM", inam);

    std::string head = "RIFF";
    put32(head, 0);
    head += "sfbk";
    head += chunk("LIST", info);
    riffStart_ = 0;
    sdtaStart_ = long(head.size());
    head += "LIST";
    put32(head, 0);
    head += "sdta";
    smplStart_ = long(head.size());
    head += "smpl";
    put32(head, 0);
    if (!writeBytes(head))
        return fail(message, "write error \"%s\"");
    try {
        samples_.reserve(2 * expectedKeySamples);
    } catch (const std::bad_alloc&) {
        return fail(message, "not enough memory (pwft)\"%s\"");
    }
    return 1;
}

int SoundFont2File::writeSample(const std::vector<int16_t>& points, std::string& message)
{
    std::string bytes;
    bytes.reserve(points.size() * 2);
    for (int16_t point : points)
        put16(bytes, uint16_t(point));
    if (!writeBytes(bytes))
        return fail(message, "write error (audio data)\"%s\"");
    if (!writeBytes(std::string(kZeroPointsAfterSample * 2, '\0')))
        return fail(message, "write error (audio data 0)\"%s\"");
    return 1;
}

int SoundFont2File::add(const Sf2KeySample& keySample, std::string& message)
{
    if (file_ == nullptr || keySample.data == nullptr)
        return setMessage(message, "illegal pointer (==NULL)");
    const WaveFormat& format = keySample.format;
    const int channels = std::clamp<int>(format.nChannels, 1, 2);
    const int bytesPerPoint = std::clamp<int>(format.wBitsPerSample / 8, 1, 3);
    const size_t frameBytes = size_t(channels) * bytesPerPoint;
    const size_t frames = keySample.data->size() / frameBytes;

    std::vector<std::vector<int16_t>> halves;
    try {
        halves.assign(size_t(channels), std::vector<int16_t>(frames));
    } catch (const std::bad_alloc&) {
        return fail(message, "memory error (split stereo)\"%s\"");
    }
    const uint8_t* bytes = keySample.data->data();
    for (size_t i = 0; i < frames; ++i)
        for (int c = 0; c < channels; ++c)
            halves[c][i] =
                point16(bytes + i * frameBytes + size_t(c) * bytesPerPoint, format.wBitsPerSample);

    const std::string base = formatText("S_%03d_%03d_%s", keySample.ordinal, keySample.note,
                                        noteName(keySample.note).c_str());
    const size_t first = samples_.size();
    for (int c = 0; c < channels; ++c) {
        SampleEntry entry;
        entry.name = channels == 1 ? base : base + (c == 0 ? "_L" : "_R");
        entry.start = points_;
        entry.end = points_ + uint32_t(frames);
        // Without a loop the loop points rest on the sample start.
        // The loop is kept inside the sample's own points whatever the caller hands in.
        const int64_t lastFrame = int64_t(frames) - 1;
        const int64_t loopStart =
            std::clamp<int64_t>(keySample.loopStart, 0, std::max<int64_t>(0, lastFrame));
        const int64_t loopEnd = std::min<int64_t>(keySample.loopEnd, lastFrame);
        const bool loop = keySample.hasLoop && loopEnd > loopStart;
        entry.loop = loop;
        entry.loopStart = loop ? entry.start + uint32_t(loopStart) : entry.start;
        entry.loopEnd = loop ? entry.start + uint32_t(loopEnd) : entry.start;
        entry.rate = format.nSamplesPerSec;
        entry.pitch = uint8_t(std::clamp(keySample.note, 0, 127));
        entry.type = channels == 1 ? kMonoSample : (c == 0 ? kLeftSample : kRightSample);
        entry.link = channels == 1 ? 0 : uint16_t(c == 0 ? first + 1 : first);
        entry.lowKey = keySample.lowKey;
        entry.highKey = keySample.highKey;
        entry.lowVelocity = keySample.lowVelocity;
        entry.highVelocity = keySample.highVelocity;
        if (!writeSample(halves[c], message))
            return 0;
        points_ = entry.end + kZeroPointsAfterSample;
        samples_.push_back(entry);
    }
    return 1;
}

int SoundFont2File::finish(std::string& message)
{
    if (file_ == nullptr)
        return setMessage(message, "illegal pointer (==NULL)");
    const long sdtaEnd = std::ftell(file_);
    if (sdtaEnd < 0 || !patchSize(smplStart_, sdtaEnd) || !patchSize(sdtaStart_, sdtaEnd))
        return fail(message, "write error \"%s\"");

    const uint16_t zones = uint16_t(samples_.size());
    std::string phdr;
    putName(phdr, bankName_.substr(0, 19), 20);
    put16(phdr, 0); // preset
    put16(phdr, 0); // bank
    put16(phdr, 0); // bag index
    put32(phdr, 0); // library
    put32(phdr, 0); // genre
    put32(phdr, 0); // morphology
    putName(phdr, "EOP", 20);
    put16(phdr, 0);
    put16(phdr, 0);
    put16(phdr, 1);
    put32(phdr, 0);
    put32(phdr, 0);
    put32(phdr, 0);

    std::string pbag;
    put16(pbag, 0);
    put16(pbag, 0);
    put16(pbag, 1);
    put16(pbag, 0);
    const std::string modTerminal(10, '\0');
    std::string pgen;
    put16(pgen, kGenInstrument);
    put16(pgen, 0);
    put32(pgen, 0);

    std::string inst;
    putName(inst, "INST_" + bankName_, 20);
    put16(inst, 0);
    putName(inst, "EOI", 20);
    put16(inst, zones);

    std::string ibag, igen, shdr;
    uint16_t generators = 0;
    for (uint16_t i = 0; i < zones; ++i) {
        const SampleEntry& s = samples_[i];
        put16(ibag, generators);
        put16(ibag, 0);
        put16(igen, kGenKeyRange);
        igen += char(s.lowKey);
        igen += char(s.highKey);
        put16(igen, kGenVelRange);
        igen += char(s.lowVelocity);
        igen += char(s.highVelocity);
        // A linked pair is placed hard left and right; without a pan both halves would
        // sound in the middle and the stereo image would collapse.
        const bool stereoHalf = s.type == kLeftSample || s.type == kRightSample;
        if (stereoHalf) {
            put16(igen, kGenPan);
            put16(igen, uint16_t(s.type == kLeftSample ? -500 : 500));
        }
        put16(igen, kGenSampleModes);
        put16(igen, s.loop ? 1 : 0);
        put16(igen, kGenSampleId);
        put16(igen, i);
        generators = uint16_t(generators + (stereoHalf ? 5 : 4));

        putName(shdr, s.name, 20);
        put32(shdr, s.start);
        put32(shdr, s.end);
        put32(shdr, s.loopStart);
        // Readers take the end loop as one past the last loop point.
        put32(shdr, s.loop ? s.loopEnd + 1 : s.loopEnd);
        put32(shdr, s.rate);
        shdr += char(s.pitch);
        shdr += char(0); // pitch correction
        put16(shdr, s.link);
        put16(shdr, s.type);
    }
    put16(ibag, generators);
    put16(ibag, 0);
    put32(igen, 0);
    putName(shdr, "EOS", 20);
    shdr += std::string(26, '\0');

    std::string pdta = "pdta";
    pdta += chunk("phdr", phdr) + chunk("pbag", pbag) + chunk("pmod", modTerminal) +
            chunk("pgen", pgen) + chunk("inst", inst) + chunk("ibag", ibag) +
            chunk("imod", modTerminal) + chunk("igen", igen) + chunk("shdr", shdr);
    if (!writeBytes(chunk("LIST", pdta)))
        return fail(message, "write error \"%s\"");
    const long riffEnd = std::ftell(file_);
    if (riffEnd < 0 || !patchSize(riffStart_, riffEnd))
        return fail(message, "write error \"%s\"");
    const bool flushed = std::fflush(file_) == 0;
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (!flushed || !closed) {
        std::remove(path_.c_str());
        return setMessage(message, "write error \"%s\"", path_.c_str());
    }
    finished_ = true;
    return 1;
}

} // namespace tg
