// Builds project files of any version field by field, independently of the writer, so tests
// can feed the reader files the way older versions of the program wrote them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace tg::test {

// The values of one key as a file holds them; fields a version lacks are not written. The
// values are unlike the program's defaults and unlike their neighbours, so that a field read
// into the wrong place, or not at all, shows.
struct StoredKey {
    uint16_t keyState = 1, locked = 1, autoGainXFade = 1;
    uint8_t mapLowFlag = 0, mapLow = 33, mapHighFlag = 0, mapHigh = 44;
    std::string name = "Key";
    int32_t silenceIn = 5, silenceOut = 100000;
    float oldSilenceSeconds = 2.0f; // the single value of files older than 2250
    int32_t noteIn = 10, noteOut = 90000, releaseIn = 90001, releaseOut = 99000;
    uint16_t releaseOn = 1, loopMode = 2, clickpopred = 0, zerocrossing = 1;
    int32_t loop[5] = {500, 5000, 400, 6000, 1000};
    int32_t loopResults[5] = {1, 2, 3, 4, 5};
    int32_t xfadeLen = 300, bfxfadeLen = -400;
    uint16_t xfadeCurve = 7, bfxfadeCurve = 13;
    int32_t reserved1 = -5;
    int32_t reservedA[6] = {1, 2, 3, 4, 5, 6};
    int32_t reservedB[6] = {9, 8, 7, 6, 5, 4};
};

struct StoredMultiSample {
    std::string name = "Layer";
    std::string audioInDevice = "Line In", audioInFormat = "96KHz, Mono, 24bit";
    std::string midiOutDevice = "Synth Port 1 abcdefghijklmnopqrstuv"; // fills its 36 bytes
    uint16_t shorts[9] = {9, 0, 1, 77, 101, 12, 3, 37, 95}; // channel .. KBrangeOut in file order
    StoredKey key;                                          // every key gets these values
    double notelength1 = 12.25, notelength2 = 3.5, releaselength1 = 1.25, releaselength2 = 0.75;
    uint16_t notelength2Active = 1, releaselength2Active = 0, clickpopred = 0, zerocrossing = 1;
    int32_t latency = -17;
    double thresIn = 0.66, thresOut = 0.44, recpause = 1.5;
    uint16_t autoloop = 0, autogain = 1;
    double loopsearchlength = 3.25, loopstart = 70.0, loopoutsearchstart = 83.5, xfadelength = 24.5;
    std::string xfadetype = "Sine^2-Exp-Lin-X"; // all 16 characters of the field
    double bfxfadelength = 26.0;
    std::string bfxfadetype = "Log2";
    int32_t rangeStart = 42, rangeEnd = 84, mapTo = 1;
};

class ProjectFileBuilder {
  public:
    explicit ProjectFileBuilder(int32_t version) : version_(version) {}

    std::vector<uint8_t>& bytes() { return bytes_; }
    std::string text() const { return std::string(bytes_.begin(), bytes_.end()); }

    void header(const std::string& name, const std::string& dataPath, int32_t mslCount,
                int32_t currentMsl = 0, int32_t topMsl = 0, int32_t viewValue = 0)
    {
        const char signature[20] = "Tonegrabber Project";
        raw(signature, 20);
        i32(version_);
        string(name);
        string(dataPath);
        i32(mslCount);
        i32(currentMsl);
        i32(topMsl);
        i32(viewValue);
    }

    void multiSample(const StoredMultiSample& m)
    {
        string(m.name);
        string(m.audioInDevice);
        string(m.audioInFormat);
        string(m.midiOutDevice);
        for (uint16_t v : m.shorts)
            u16(v);
        for (int i = 0; i < 32 * 4; ++i)
            u16(static_cast<uint16_t>(i));
        for (int i = 0; i < 57 * 2; ++i)
            u16(static_cast<uint16_t>(1000 + i));
        for (int note = 0; note < 128; ++note)
            key(m.key);
        f64(m.notelength1);
        u16(m.notelength2Active);
        f64(m.notelength2);
        f64(m.releaselength1);
        u16(m.releaselength2Active);
        f64(m.releaselength2);
        u16(m.clickpopred);
        u16(m.zerocrossing);
        i32(m.latency);
        f64(m.thresIn);
        f64(m.thresOut);
        f64(m.recpause);
        u16(m.autoloop);
        if (version_ >= 2980)
            u16(m.autogain);
        f64(m.loopsearchlength);
        f64(m.loopstart);
        f64(m.loopoutsearchstart);
        f64(m.xfadelength);
        string(m.xfadetype);
        f64(m.bfxfadelength);
        string(m.bfxfadetype);
        i32(m.rangeStart);
        i32(m.rangeEnd);
        i32(m.mapTo);
    }

    void key(const StoredKey& k)
    {
        u16(k.keyState);
        u16(k.locked);
        if (version_ >= 2980)
            u16(k.autoGainXFade);
        if (version_ >= 2940) {
            const uint8_t map[4] = {k.mapLowFlag, k.mapLow, k.mapHighFlag, k.mapHigh};
            raw(map, 4);
        } else {
            u16(k.mapLow);
            u16(k.mapHigh);
        }
        if (version_ >= 2900) {
            char name[48] = {};
            std::memcpy(name, k.name.data(), std::min<size_t>(k.name.size(), 47));
            raw(name, 48);
        }
        if (version_ >= 2250) {
            i32(k.silenceIn);
            i32(k.silenceOut);
        } else {
            uint32_t bits = 0;
            std::memcpy(&bits, &k.oldSilenceSeconds, 4);
            i32(static_cast<int32_t>(bits));
        }
        i32(k.noteIn);
        i32(k.noteOut);
        i32(k.releaseIn);
        i32(k.releaseOut);
        if (version_ >= 2250)
            u16(k.releaseOn);
        u16(k.loopMode);
        u16(k.clickpopred);
        u16(k.zerocrossing);
        for (int32_t v : k.loop)
            i32(v);
        if (version_ >= 1920)
            for (int32_t v : k.loopResults)
                i32(v);
        i32(k.xfadeLen);
        i32(k.bfxfadeLen);
        u16(k.xfadeCurve);
        u16(k.bfxfadeCurve);
        if (version_ >= 1930)
            i32(k.reserved1);
        for (int32_t v : k.reservedA)
            i32(v);
        if (version_ >= 1910)
            for (int32_t v : k.reservedB)
                i32(v);
    }

    void string(const std::string& s)
    {
        i32(static_cast<int32_t>(s.size() + 1));
        raw(s.c_str(), s.size() + 1);
    }
    void raw(const void* data, size_t n)
    {
        const auto* p = static_cast<const uint8_t*>(data);
        bytes_.insert(bytes_.end(), p, p + n);
    }
    void u16(uint16_t v) { le(v, 2); }
    void i32(int32_t v) { le(static_cast<uint32_t>(v), 4); }
    void f64(double v)
    {
        uint64_t bits = 0;
        std::memcpy(&bits, &v, 8);
        le(bits, 8);
    }

  private:
    void le(uint64_t v, int n)
    {
        for (int i = 0; i < n; ++i)
            bytes_.push_back(static_cast<uint8_t>(v >> (8 * i)));
    }
    int32_t version_;
    std::vector<uint8_t> bytes_;
};

} // namespace tg::test
