// The project file reader: every version up to 2980, with the rules that bring older files
// and out-of-range values to the current record. Every stored length is checked against
// what is left of the file before it is used.
#include "core/ProjectFile.h"

#include "core/LittleEndian.h"
#include "core/Names.h"
#include "core/Paths.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tg {

bool MemorySource::read(void* destination, size_t count)
{
    if (count > size_ - offset_)
        return false;
    if (count > 0)
        std::memcpy(destination, data_ + offset_, count);
    offset_ += count;
    return true;
}

bool MemorySource::skip(size_t count)
{
    if (count > size_ - offset_)
        return false;
    offset_ += count;
    return true;
}

namespace {

constexpr double kMaxNoteLength = 3600.0;    // seconds
constexpr double kMaxReleaseLength = 1800.0; // seconds

class FieldReader {
  public:
    explicit FieldReader(ByteSource& source) : source_(source) {}

    bool u16(uint16_t& value) { return get(value); }
    bool i32(int32_t& value) { return get(value); }
    bool f64(double& value) { return get(value); }
    bool u8(uint8_t& value) { return source_.read(&value, 1); }
    // A byte-sized model field stored as 16 bits: its low byte.
    bool narrowed(uint8_t& value)
    {
        uint16_t wide = 0;
        if (!u16(wide))
            return false;
        value = static_cast<uint8_t>(wide & 0xFF);
        return true;
    }
    bool f32(float& value)
    {
        uint32_t bits = 0;
        if (!get(bits))
            return false;
        std::memcpy(&value, &bits, sizeof value);
        return true;
    }
    bool raw(void* destination, size_t count) { return source_.read(destination, count); }

    // A length-prefixed string into `field` of `fieldSize` bytes: at most `keep` bytes of it
    // are kept (the rest is skipped); byte `keep` (or the field's last byte) is set to NUL.
    bool string(char* field, size_t fieldSize, size_t keep)
    {
        int32_t length = 0;
        if (!i32(length) || length < 0 || static_cast<uint64_t>(length) > source_.remaining())
            return false;
        const size_t stored = static_cast<size_t>(length);
        const size_t kept = std::min({stored, keep, fieldSize - 1});
        std::memset(field, 0, fieldSize);
        if (!source_.read(field, kept) || !source_.skip(stored - kept))
            return false;
        field[std::min(keep, fieldSize - 1)] = '\0';
        return true;
    }

  private:
    template <typename T> bool get(T& value)
    {
        uint8_t bytes[sizeof(T)];
        if (!source_.read(bytes, sizeof bytes))
            return false;
        return getLE(bytes, sizeof bytes, 0, value);
    }
    ByteSource& source_;
};

// frames = integer part of seconds × factor × rate, kept inside the 32-bit range.
int32_t secondsToFrames(float seconds, double factor, double rate)
{
    const double frames = std::trunc(static_cast<double>(seconds) * factor * rate);
    if (!std::isfinite(frames))
        return 0;
    return static_cast<int32_t>(std::clamp(frames, -2147483648.0, 2147483647.0));
}

struct KeyReadState {
    int32_t version;
    int note;
    const ProjectReadContext& context;
    const Project& project;
    const TGmsl& msl;
};

bool readKey(FieldReader& in, const KeyReadState& s, TGmsl_key& key)
{
    const int32_t v = s.version;
    key = makeNewKey(s.note);
    key.hasAudio = 0;
    uint16_t dropped = 0;
    if (!in.narrowed(key.keyState) || !in.narrowed(key.locked))
        return false;
    key.autoGainXFade = 0;
    if (v >= 2980 && !in.narrowed(key.autoGainXFade))
        return false;
    if (v >= 2940) {
        if (!in.u8(key.mapLowFlag) || !in.u8(key.mapLow) || !in.u8(key.mapHighFlag) ||
            !in.u8(key.mapHigh))
            return false;
    } else if (!in.u16(dropped) || !in.u16(dropped)) {
        return false; // the zone stays on the key's own note, set automatically
    }
    if (v >= 2900) {
        if (!in.raw(key.name, kNameSize))
            return false;
        key.name[kNameSize - 1] = '\0';
    }
    float silenceSeconds = 0.0f;
    if (v >= 2250) {
        if (!in.i32(key.Silence_In) || !in.i32(key.Silence_Out))
            return false;
    } else if (!in.f32(silenceSeconds)) {
        return false;
    }
    if (!in.i32(key.Note_In) || !in.i32(key.Note_Out) || !in.i32(key.Release_In) ||
        !in.i32(key.Release_Out))
        return false;
    const bool releaseFits = key.Release_In < key.Release_Out;
    if (v >= 2250) {
        if (!in.narrowed(key.releaseOn))
            return false;
        if (!releaseFits)
            key.releaseOn = 0;
    } else {
        key.releaseOn = releaseFits ? 1 : 0;
    }
    if (!in.narrowed(key.loopMode) || !in.narrowed(key.clickpopred) ||
        !in.narrowed(key.zerocrossing) || !in.i32(key.Loop_In) || !in.i32(key.Loop_Out) ||
        !in.i32(key.LoopSearch_In) || !in.i32(key.LoopSearch_Out) || !in.i32(key.LoopSearch_Len))
        return false;
    if (v >= 1920)
        for (int32_t& value : key.loopResults)
            if (!in.i32(value))
                return false;
    if (!in.i32(key.xfadeLen) || !in.i32(key.bfxfadeLen) || !in.narrowed(key.xfadeCurve) ||
        !in.narrowed(key.bfxfadeCurve))
        return false;
    if (v >= 1930 && !in.i32(key.reserved1))
        return false;
    for (int32_t& value : key.reservedA)
        if (!in.i32(value))
            return false;
    if (v >= 1910)
        for (int32_t& value : key.reservedB)
            if (!in.i32(value))
                return false;

    if (v < 2250) {
        // These files kept one silence time in seconds; the markers are placed from it with the
        // rate of the key's recording, when that can be read.
        key.Silence_In = 0;
        key.Silence_Out = 0;
        double rate = 0;
        if (s.context.wavRate &&
            s.context.wavRate(keySampleFileName(s.project, s.msl, s.note), rate)) {
            key.Silence_In = secondsToFrames(silenceSeconds, 0.25, rate);
            key.Silence_Out = secondsToFrames(silenceSeconds, 0.8, rate);
        }
    }
    return true;
}

void renameOldCurve(char (&curve)[kCurveNameSize + 1])
{
    if (std::strcmp(curve, "Exponential") == 0)
        copyText(curve, "Exponential^2");
    else if (std::strcmp(curve, "Logarithmic") == 0)
        copyText(curve, "Log2");
}

bool readRecordSettings(FieldReader& in, int32_t version, RecordSettings& rs)
{
    if (!in.f64(rs.notelength1) || !in.narrowed(rs.notelength2_active) || !in.f64(rs.notelength2) ||
        !in.f64(rs.releaselength1) || !in.narrowed(rs.releaselength2_active) ||
        !in.f64(rs.releaselength2) || !in.narrowed(rs.clickpopred) ||
        !in.narrowed(rs.zerocrossing) || !in.i32(rs.latency) || !in.f64(rs.thresPrecisionIn) ||
        !in.f64(rs.thresPrecisionOut) || !in.f64(rs.recpause) || !in.narrowed(rs.autoloop))
        return false;
    rs.autogain = 0;
    if (version >= 2980 && !in.narrowed(rs.autogain))
        return false;
    if (!in.f64(rs.loopsearchlength) || !in.f64(rs.loopstart) || !in.f64(rs.loopoutsearchstart) ||
        !in.f64(rs.xfadelength) || !in.string(rs.xfadetype, sizeof rs.xfadetype, kCurveNameSize) ||
        !in.f64(rs.bfxfadelength) ||
        !in.string(rs.bfxfadetype, sizeof rs.bfxfadetype, kCurveNameSize))
        return false;
    // Only upper bounds are corrected: a NaN stays NaN rather than turning into a limit.
    if (rs.notelength1 > kMaxNoteLength)
        rs.notelength1 = kMaxNoteLength;
    if (rs.notelength2 > kMaxNoteLength)
        rs.notelength2 = kMaxNoteLength;
    if (rs.releaselength1 > kMaxReleaseLength)
        rs.releaselength1 = kMaxReleaseLength;
    if (rs.releaselength2 > kMaxReleaseLength)
        rs.releaselength2 = kMaxReleaseLength;
    if (version < 1500) {
        renameOldCurve(rs.xfadetype);
        renameOldCurve(rs.bfxfadetype);
    }
    return true;
}

bool readMultiSample(FieldReader& in, int32_t version, const ProjectReadContext& context,
                     const Project& project, TGmsl& msl)
{
    const size_t devices = static_cast<size_t>(std::max(0, context.audioInputDeviceCount));
    msl.audioInChannelL.assign(devices, -1);
    msl.audioInChannelR.assign(devices, -1);
    if (!in.string(msl.name, sizeof msl.name, kNameSize) ||
        !in.string(msl.AudioInDevice, sizeof msl.AudioInDevice, kStoredAudioInDeviceSize) ||
        !in.string(msl.AudioInFormat, sizeof msl.AudioInFormat, kAudioInFormatSize) ||
        !in.string(msl.MIDIoutDevice, sizeof msl.MIDIoutDevice, kMidiOutDeviceSize))
        return false;
    if (!in.u16(msl.MIDIoutChannel) || !in.u16(msl.MIDIoutProgram_active) ||
        !in.u16(msl.MIDIoutProgram) || !in.u16(msl.MIDIoutAttackVelocity) ||
        !in.u16(msl.MIDIoutReleaseVelocity) || !in.u16(msl.MIDIoutAfterTouch) ||
        !in.u16(msl.AutoSendReset) || !in.u16(msl.KBrangeIn) || !in.u16(msl.KBrangeOut))
        return false;
    for (auto& row : msl.controllerTable)
        for (uint16_t& value : row)
            if (!in.u16(value))
                return false;
    for (auto& row : msl.parameterTable)
        for (uint16_t& value : row)
            if (!in.u16(value))
                return false;
    for (int note = 0; note < kKeyCount; ++note)
        if (!readKey(in, KeyReadState{version, note, context, project, msl}, msl.keys[note]))
            return false;
    return readRecordSettings(in, version, msl.recordsettings) && in.i32(msl.range_start) &&
           in.i32(msl.range_end) && in.i32(msl.mapTo);
}

} // namespace

std::string expandDataPath(const std::string& stored, const std::string& projectDir,
                           const std::string& userDataFolder)
{
    std::string path;
    if (stored.compare(0, 2, "..") == 0)
        path = joinPath(projectDir, nativePath(stored.size() > 3 ? stored.substr(3) : ""));
    else if (stored.compare(0, 1, ".") == 0)
        path = userDataFolder + nativePath(stored.substr(1));
    else
        path = nativePath(stored);
    if (path.size() > kPathSize - 1)
        path.resize(kPathSize - 1);
    return path;
}

int parseProject(ByteSource& source, const ProjectReadContext& context, Project& project)
{
    FieldReader in(source);
    char signature[kProjectSignatureSize] = {};
    int32_t version = 0;
    if (!in.raw(signature, sizeof signature) ||
        std::memcmp(signature, kProjectSignature, std::strlen(kProjectSignature) + 1) != 0 ||
        !in.i32(version) || version > kProjectFileVersion)
        return 0;
    char storedName[kNameSize] = {};
    char storedPath[kPathSize] = {};
    if (!in.string(storedName, sizeof storedName, kNameSize) ||
        !in.string(storedPath, sizeof storedPath, kPathSize))
        return 0;
    copyText(project.dataPath,
             expandDataPath(storedPath, context.projectDir, context.userDataFolder).c_str());
    int32_t count = 0;
    if (!in.i32(count) || !in.i32(project.currentMsl) || !in.i32(project.topMsl) ||
        !in.i32(project.viewValue))
        return 0;
    project.mslCount = std::clamp(count, 0, kMaxMultiSamples);
    project.currentMsl = std::clamp(project.currentMsl, 0, kMaxMultiSamples - 1);
    project.topMsl = std::clamp(project.topMsl, 0, kMaxMultiSamples - 1);
    int whole = 0;
    while (whole < project.mslCount &&
           readMultiSample(in, version, context, project, project.msl[whole]))
        ++whole;
    return whole == project.mslCount ? 1 : 0;
}

} // namespace tg
