// Test helpers: hand-built RIFF files and sample buffers in the WAV byte image.
#pragma once

#include "audiofile/WaveFormat.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tg::test {

// Builds a RIFF/WAVE file chunk by chunk, so tests can arrange chunks any way they like.
class RiffBuilder {
  public:
    RiffBuilder& chunk(const std::string& id, const std::string& body, bool pad = true)
    {
        body_ += id;
        u32(static_cast<uint32_t>(body.size()));
        body_ += body;
        if (pad && (body.size() & 1))
            body_ += '\0';
        return *this;
    }
    // The whole file: "RIFF", size, "WAVE", then the chunks.
    std::string bytes() const
    {
        std::string out = "RIFF";
        appendU32(out, static_cast<uint32_t>(4 + body_.size()));
        return out + "WAVE" + body_;
    }

    static void appendU16(std::string& s, uint16_t v)
    {
        s += static_cast<char>(v & 0xFF);
        s += static_cast<char>(v >> 8);
    }
    static void appendU32(std::string& s, uint32_t v)
    {
        for (int i = 0; i < 4; ++i)
            s += static_cast<char>((v >> (8 * i)) & 0xFF);
    }

  private:
    void u32(uint32_t v) { appendU32(body_, v); }
    std::string body_;
};

// The 16-byte PCM `fmt ` body of a format.
inline std::string fmtBody(const WaveFormat& f, uint16_t tag = 1)
{
    std::string s;
    RiffBuilder::appendU16(s, tag);
    RiffBuilder::appendU16(s, f.nChannels);
    RiffBuilder::appendU32(s, f.nSamplesPerSec);
    RiffBuilder::appendU32(s, f.nAvgBytesPerSec);
    RiffBuilder::appendU16(s, f.nBlockAlign);
    RiffBuilder::appendU16(s, f.wBitsPerSample);
    return s;
}

// A `smpl` body with a root key and optionally one loop.
inline std::string smplBody(uint32_t rootKey, int loops, uint32_t start = 0, uint32_t end = 0)
{
    std::string s;
    const uint32_t head[] = {0, 0, 22675, rootKey, 0, 0, 0, static_cast<uint32_t>(loops), 0};
    for (uint32_t v : head)
        RiffBuilder::appendU32(s, v);
    for (int i = 0; i < loops; ++i) {
        const uint32_t loop[] = {0, 0, start, end, 0, 0};
        for (uint32_t v : loop)
            RiffBuilder::appendU32(s, v);
    }
    return s;
}

// Packs signed samples (interleaved) at the format's own scale into the WAV byte image.
inline std::vector<uint8_t> packSamples(const WaveFormat& f, const std::vector<int32_t>& values)
{
    std::vector<uint8_t> out;
    for (int32_t v : values) {
        switch (f.wBitsPerSample) {
        case 8:
            out.push_back(static_cast<uint8_t>((v + 128) & 0xFF));
            break;
        case 16:
            out.push_back(static_cast<uint8_t>(v & 0xFF));
            out.push_back(static_cast<uint8_t>((v >> 8) & 0xFF));
            break;
        default:
            out.push_back(static_cast<uint8_t>(v & 0xFF));
            out.push_back(static_cast<uint8_t>((v >> 8) & 0xFF));
            out.push_back(static_cast<uint8_t>((v >> 16) & 0xFF));
            break;
        }
    }
    return out;
}

// `count` pseudo-random bytes, different for each seed.
inline std::vector<uint8_t> noise(size_t count, uint32_t seed)
{
    std::vector<uint8_t> v(count);
    for (auto& b : v) {
        seed = seed * 1664525u + 1013904223u;
        b = static_cast<uint8_t>(seed >> 24);
    }
    return v;
}

inline std::string asString(const std::vector<uint8_t>& v)
{
    return {v.begin(), v.end()};
}

// Every field of a format in one line, so that a test compares whole formats with a readable
// failure message.
inline std::string describeFormat(const WaveFormat& f)
{
    return "tag " + std::to_string(f.wFormatTag) + ", " + std::to_string(f.nChannels) + " ch, " +
           std::to_string(f.nSamplesPerSec) + " Hz, " + std::to_string(f.wBitsPerSample) +
           " bit, align " + std::to_string(f.nBlockAlign) + ", " +
           std::to_string(f.nAvgBytesPerSec) + " B/s";
}

} // namespace tg::test
