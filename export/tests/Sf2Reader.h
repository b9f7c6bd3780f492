// A small, bounds-checked SoundFont 2 reader for tests: the sub-chunks, the sample points and
// the decoded generator and sample-header records. The order of lists and chunks and the RIFF
// size are FluidSynth's to refuse (SoundFontInFluidSynth in tests/clients loads every bank).
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tg::test {

struct Sf2SampleHeader {
    std::string name;
    uint32_t start = 0, end = 0, loopStart = 0, loopEnd = 0;
    // "name start-end loop loopStart-loopEnd", to compare a header in one line.
    std::string text() const
    {
        return name + " " + std::to_string(start) + "-" + std::to_string(end) + " loop " +
               std::to_string(loopStart) + "-" + std::to_string(loopEnd);
    }
};

struct Sf2Generator {
    uint16_t oper = 0;
    uint16_t amount = 0;
    uint8_t low() const { return uint8_t(amount & 0xFF); }
    uint8_t high() const { return uint8_t(amount >> 8); }
};

struct Sf2Bank {
    bool ok = false;
    std::string error;
    std::map<std::string, std::string> chunks; // sub-chunk id -> data
    std::vector<int16_t> points;               // "smpl"
    std::vector<Sf2SampleHeader> samples;      // "shdr" with its terminal record
    std::vector<Sf2Generator> igen;            // with its terminal record
};

inline uint32_t le32(const std::string& s, size_t at)
{
    return uint8_t(s[at]) | uint8_t(s[at + 1]) << 8 | uint8_t(s[at + 2]) << 16 |
           uint32_t(uint8_t(s[at + 3])) << 24;
}

inline uint16_t le16(const std::string& s, size_t at)
{
    return uint16_t(uint8_t(s[at]) | uint8_t(s[at + 1]) << 8);
}

inline std::string fieldName(const std::string& s, size_t at, size_t size)
{
    const std::string field = s.substr(at, size);
    return field.substr(0, field.find('\0'));
}

inline Sf2Bank readSf2(const std::string& bytes)
{
    Sf2Bank bank;
    if (bytes.size() < 12 || bytes.compare(0, 4, "RIFF") != 0 || bytes.compare(8, 4, "sfbk") != 0) {
        bank.error = "not a RIFF sfbk file";
        return bank;
    }
    size_t pos = 12;
    while (pos + 12 <= bytes.size()) {
        const std::string id = bytes.substr(pos, 4);
        const uint32_t size = le32(bytes, pos + 4);
        if (id != "LIST" || size < 4 || pos + 8 + size > bytes.size()) {
            bank.error = "bad top-level chunk at " + std::to_string(pos);
            return bank;
        }
        size_t sub = pos + 12;
        const size_t end = pos + 8 + size;
        while (sub + 8 <= end) {
            const std::string subId = bytes.substr(sub, 4);
            const uint32_t subSize = le32(bytes, sub + 4);
            if (sub + 8 + subSize > end) {
                bank.error = "sub-chunk " + subId + " overruns its list";
                return bank;
            }
            bank.chunks[subId] = bytes.substr(sub + 8, subSize);
            sub += 8 + subSize;
        }
        pos = end;
    }
    const std::string& smpl = bank.chunks["smpl"];
    for (size_t i = 0; i + 1 < smpl.size(); i += 2)
        bank.points.push_back(int16_t(le16(smpl, i)));
    const std::string& shdr = bank.chunks["shdr"];
    for (size_t at = 0; at + 46 <= shdr.size(); at += 46) {
        Sf2SampleHeader h;
        h.name = fieldName(shdr, at, 20);
        h.start = le32(shdr, at + 20);
        h.end = le32(shdr, at + 24);
        h.loopStart = le32(shdr, at + 28);
        h.loopEnd = le32(shdr, at + 32);
        bank.samples.push_back(h);
    }
    const std::string& igen = bank.chunks["igen"];
    for (size_t at = 0; at + 4 <= igen.size(); at += 4)
        bank.igen.push_back({le16(igen, at), le16(igen, at + 2)});
    bank.ok = true;
    return bank;
}

} // namespace tg::test
