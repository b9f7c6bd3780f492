// Writing the kit: FORM "AIFF" with COMM, the "op-1" APPL chunk (which must come before the
// sound data), and SSND; all integers big-endian.
#include "export/op1/Op1DrumKit.h"

#include "audiofile/Extended80.h"
#include "core/Message.h"
#include "export/korg/BigEndian.h"
#include "export/xml/XmlText.h"

namespace tg {
namespace {

std::string jsonString(const std::string& text)
{
    std::string out = "\"";
    for (char c : utf8FromName(text)) {
        if (c == '"' || c == '\\')
            out += '\\';
        if (static_cast<uint8_t>(c) < 0x20)
            out += formatText("\\u%04x", static_cast<unsigned>(c));
        else
            out += c;
    }
    return out + "\"";
}

std::string jsonArray(const std::vector<int64_t>& values)
{
    std::string out = "[";
    for (size_t i = 0; i < values.size(); ++i)
        out += (i ? "," : "") + std::to_string(values[i]);
    return out + "]";
}

std::string kitJson(const std::string& name, const std::vector<Op1Slice>& slices)
{
    std::vector<int64_t> start(kOp1Slots), end(kOp1Slots);
    int64_t at = 0;
    for (int slot = 0; slot < kOp1Slots; ++slot) {
        const int64_t frames =
            slot < int(slices.size()) ? int64_t(slices[size_t(slot)].frames.size()) : 0;
        // A slice covers its first to its last frame; an empty slot starts and ends at the
        // end of the audio.
        start[size_t(slot)] = at * kOp1PositionScale;
        end[size_t(slot)] = (frames > 0 ? at + frames - 1 : at) * kOp1PositionScale;
        at += frames;
    }
    const std::vector<int64_t> neutral(kOp1Slots, 8192); // volume 8192 is unity, reverse off
    const std::vector<int64_t> zero(kOp1Slots, 0);
    return "{\"drum_version\":2,\"type\":\"drum\",\"name\":" + jsonString(name) +
           ",\"octave\":0,\"pitch\":" + jsonArray(zero) + ",\"start\":" + jsonArray(start) +
           ",\"end\":" + jsonArray(end) + ",\"playmode\":" + jsonArray(neutral) +
           ",\"reverse\":" + jsonArray(neutral) + ",\"volume\":" + jsonArray(neutral) +
           ",\"dyna_env\":[0,8192,0,8192,0,0,0,0],\"fx_active\":false,\"fx_type\":\"delay\","
           "\"fx_params\":[8000,8000,8000,8000,8000,8000,8000,8000],\"lfo_active\":false,"
           "\"lfo_type\":\"tremolo\",\"lfo_params\":[16000,16000,16000,16000,0,0,0,0]}";
}

} // namespace

std::vector<uint8_t> op1DrumKitFile(const std::string& name, const std::vector<Op1Slice>& slices)
{
    uint32_t frames = 0;
    for (const Op1Slice& slice : slices)
        frames += uint32_t(slice.frames.size());

    // The JSON is followed by a line feed, and by blanks so that the chunk stays 4-byte aligned.
    std::string json = kitJson(name, slices) + "\n";
    while ((4 + json.size()) % 4 != 0)
        json += ' ';

    std::vector<uint8_t> comm;
    be::put16(comm, 1);
    be::put32(comm, frames);
    be::put16(comm, 16);
    uint8_t rate[10];
    doubleToExtended80(kOp1Rate, rate);
    comm.insert(comm.end(), rate, rate + 10);

    std::vector<uint8_t> file;
    const uint32_t formSize =
        4 + (8 + uint32_t(comm.size())) + (8 + 4 + uint32_t(json.size())) + (8 + 8 + frames * 2);
    be::putChunkHeader(file, "FORM", formSize);
    file.insert(file.end(), {'A', 'I', 'F', 'F'});
    be::putChunkHeader(file, "COMM", uint32_t(comm.size()));
    file.insert(file.end(), comm.begin(), comm.end());
    be::putChunkHeader(file, "APPL", uint32_t(4 + json.size()));
    file.insert(file.end(), {'o', 'p', '-', '1'});
    file.insert(file.end(), json.begin(), json.end());
    be::putChunkHeader(file, "SSND", 8 + frames * 2);
    be::put32(file, 0); // offset
    be::put32(file, 0); // block size
    for (const Op1Slice& slice : slices)
        for (int16_t value : slice.frames)
            be::put16(file, uint16_t(value));
    return file;
}

} // namespace tg
