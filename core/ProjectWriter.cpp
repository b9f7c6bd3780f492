// The project file writer: the Project record field by field, little-endian, version 2980.
#include "core/ProjectFile.h"

#include "core/LittleEndian.h"

#include <algorithm>
#include <cstring>

namespace tg {

namespace {

class ByteSink {
  public:
    void u16(uint16_t value) { put(value); }
    void i32(int32_t value) { put(value); }
    void f64(double value) { put(value); }
    void u8(uint8_t value) { bytes_.push_back(value); }
    // Byte-sized fields of the model are stored as a 16-bit value, sign-extended from 8 bits.
    void widened(uint8_t value)
    {
        u16(static_cast<uint16_t>(static_cast<int16_t>(static_cast<int8_t>(value))));
    }
    void raw(const void* data, size_t size)
    {
        const auto* p = static_cast<const uint8_t*>(data);
        bytes_.insert(bytes_.end(), p, p + size);
    }
    // An i32 length that counts the NUL, the text, the NUL.
    void string(const char* text, size_t length)
    {
        i32(static_cast<int32_t>(length + 1));
        raw(text, length);
        u8(0);
    }
    std::vector<uint8_t> take() { return std::move(bytes_); }

  private:
    template <typename T> void put(T value)
    {
        const size_t at = bytes_.size();
        bytes_.resize(at + sizeof(T));
        putLE(bytes_.data(), bytes_.size(), at, value);
    }
    std::vector<uint8_t> bytes_;
};

// The text of a fixed buffer; for the device and format names only up to the first line feed.
template <size_t N> void putText(ByteSink& sink, const char (&field)[N], bool toLineFeed = false)
{
    size_t length = strnlen(field, N - 1);
    if (toLineFeed)
        if (const void* lf = std::memchr(field, '\n', length))
            length = static_cast<size_t>(static_cast<const char*>(lf) - field);
    sink.string(field, length);
}

void putKey(ByteSink& sink, const TGmsl_key& key)
{
    sink.widened(key.keyState);
    sink.widened(key.locked);
    sink.widened(key.autoGainXFade);
    sink.u8(key.mapLowFlag);
    sink.u8(key.mapLow);
    sink.u8(key.mapHighFlag);
    sink.u8(key.mapHigh);
    char name[kNameSize] = {};
    std::memcpy(name, key.name, kNameSize); // 48 bytes as they stand in memory
    name[kNameSize - 1] = '\0';
    sink.raw(name, kNameSize);
    sink.i32(key.Silence_In);
    sink.i32(key.Silence_Out);
    sink.i32(key.Note_In);
    sink.i32(key.Note_Out);
    sink.i32(key.Release_In);
    sink.i32(key.Release_Out);
    sink.widened(key.releaseOn);
    sink.widened(key.loopMode);
    sink.widened(key.clickpopred);
    sink.widened(key.zerocrossing);
    sink.i32(key.Loop_In);
    sink.i32(key.Loop_Out);
    sink.i32(key.LoopSearch_In);
    sink.i32(key.LoopSearch_Out);
    sink.i32(key.LoopSearch_Len);
    for (int32_t value : key.loopResults)
        sink.i32(value);
    sink.i32(key.xfadeLen);
    sink.i32(key.bfxfadeLen);
    sink.widened(key.xfadeCurve);
    sink.widened(key.bfxfadeCurve);
    sink.i32(key.reserved1);
    for (int32_t value : key.reservedA)
        sink.i32(value);
    for (int32_t value : key.reservedB)
        sink.i32(value);
}

void putMultiSample(ByteSink& sink, const TGmsl& msl)
{
    putText(sink, msl.name);
    putText(sink, msl.AudioInDevice, true);
    putText(sink, msl.AudioInFormat, true);
    putText(sink, msl.MIDIoutDevice, true);
    sink.u16(msl.MIDIoutChannel);
    sink.u16(msl.MIDIoutProgram_active);
    sink.u16(msl.MIDIoutProgram);
    sink.u16(msl.MIDIoutAttackVelocity);
    sink.u16(msl.MIDIoutReleaseVelocity);
    sink.u16(msl.MIDIoutAfterTouch);
    sink.u16(msl.AutoSendReset);
    sink.u16(msl.KBrangeIn);
    sink.u16(msl.KBrangeOut);
    for (const auto& row : msl.controllerTable)
        for (uint16_t value : row)
            sink.u16(value);
    for (const auto& row : msl.parameterTable)
        for (uint16_t value : row)
            sink.u16(value);
    for (const TGmsl_key& key : msl.keys)
        putKey(sink, key);
    const RecordSettings& rs = msl.recordsettings;
    sink.f64(rs.notelength1);
    sink.widened(rs.notelength2_active);
    sink.f64(rs.notelength2);
    sink.f64(rs.releaselength1);
    sink.widened(rs.releaselength2_active);
    sink.f64(rs.releaselength2);
    sink.widened(rs.clickpopred);
    sink.widened(rs.zerocrossing);
    sink.i32(rs.latency);
    sink.f64(rs.thresPrecisionIn);
    sink.f64(rs.thresPrecisionOut);
    sink.f64(rs.recpause);
    sink.widened(rs.autoloop);
    sink.widened(rs.autogain);
    sink.f64(rs.loopsearchlength);
    sink.f64(rs.loopstart);
    sink.f64(rs.loopoutsearchstart);
    sink.f64(rs.xfadelength);
    putText(sink, rs.xfadetype);
    sink.f64(rs.bfxfadelength);
    putText(sink, rs.bfxfadetype);
    sink.i32(msl.range_start);
    sink.i32(msl.range_end);
    sink.i32(msl.mapTo);
}

} // namespace

std::vector<uint8_t> serializeProject(const Project& project, const std::string& storedDataPath)
{
    ByteSink sink;
    char signature[kProjectSignatureSize] = {};
    std::memcpy(signature, kProjectSignature, std::strlen(kProjectSignature));
    sink.raw(signature, sizeof signature);
    sink.i32(kProjectFileVersion);
    putText(sink, project.name);
    char dataPath[kPathSize] = {};
    copyText(dataPath, storedDataPath.c_str());
    putText(sink, dataPath);
    sink.i32(project.mslCount);
    sink.i32(project.currentMsl);
    sink.i32(project.topMsl);
    sink.i32(project.viewValue);
    const int count = project.mslCount < 0 ? 0 : std::min(project.mslCount, kMaxMultiSamples);
    for (int i = 0; i < count; ++i)
        putMultiSample(sink, project.msl[i]);
    return sink.take();
}

} // namespace tg
