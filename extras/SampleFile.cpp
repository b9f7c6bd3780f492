// One reader over the WAV and AIFF readers, with the checks an imported file needs.
#include "extras/SampleFile.h"

#include "audiofile/AiffFile.h"
#include "audiofile/WavFile.h"
#include "core/Message.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace tg {

namespace {

enum class Kind { Wav, Aiff, Other, Unreadable };

Kind kindOf(const std::string& path)
{
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr)
        return Kind::Unreadable;
    char id[4] = {};
    const size_t got = std::fread(id, 1, sizeof id, file);
    std::fclose(file);
    if (got == sizeof id && std::memcmp(id, "RIFF", 4) == 0)
        return Kind::Wav;
    if (got == sizeof id && std::memcmp(id, "FORM", 4) == 0)
        return Kind::Aiff;
    return Kind::Other;
}

int notSampleFile(const std::string& path, Kind kind, std::string& message)
{
    if (kind == Kind::Unreadable)
        return setMessage(message, "unable to open %s", path.c_str());
    return setMessage(message, "\"%s\" is neither a WAV nor an AIFF file.", path.c_str());
}

// The extensible WAV header is accepted without a look at channels and bits; what the rest
// of the program works with is checked here.
bool usableFormat(WaveFormat& format)
{
    const bool ok = format.wFormatTag == 1 && (format.nChannels == 1 || format.nChannels == 2) &&
                    (format.wBitsPerSample == 8 || format.wBitsPerSample == 16 ||
                     format.wBitsPerSample == 24) &&
                    format.nSamplesPerSec > 0 && format.nSamplesPerSec <= 384000;
    completeWaveFormat(format);
    return ok;
}

std::string extensionOf(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return extension;
}

} // namespace

int readSampleFile(const std::string& path, SampleFileContents& contents, std::string& message)
{
    contents = SampleFileContents();
    const Kind kind = kindOf(path);
    int32_t frames = 0;
    if (kind == Kind::Wav) {
        if (!readWavHeader(path, contents.format, contents.loopStart, contents.loopEnd,
                           contents.rootKey, frames, message) ||
            !readWav(path, contents.format, contents.data, message))
            return 0;
    } else if (kind == Kind::Aiff) {
        AiffContents aiff;
        if (!readAiff(path, aiff, message))
            return 0;
        contents.format = aiff.format;
        contents.data = std::move(aiff.data);
        contents.loopStart = aiff.loopStart;
        contents.loopEnd = aiff.loopEnd;
        contents.rootKey = aiff.rootKey;
        frames = contents.frames();
    } else {
        return notSampleFile(path, kind, message);
    }
    message.clear(); // the AIFF reader's notes about skipped chunks are no failure
    if (!usableFormat(contents.format))
        return setMessage(message,
                          "unsupported audio format (should be uncompressed PCM, "
                          "8bit/16bit/24bit, mono/stereo):\n\"%s\"",
                          path.c_str());
    // The WAV reader keeps the RIFF pad byte of an odd data chunk; it is no audio.
    const size_t whole =
        size_t(std::max(0, std::min(frames, contents.frames()))) * contents.format.nBlockAlign;
    contents.data.resize(whole);
    if (contents.data.empty())
        return setMessage(message, "\"%s\" holds no audio.", path.c_str());

    const int32_t last = contents.frames() - 1;
    if (contents.loopStart < 0 || contents.loopEnd <= contents.loopStart ||
        contents.loopEnd > last) {
        contents.loopStart = -1;
        contents.loopEnd = -1;
    }
    if (contents.rootKey < 0 || contents.rootKey > 127)
        contents.rootKey = -1;
    return 1;
}

int readSampleFileRootKey(const std::string& path, int32_t& rootKey, std::string& message)
{
    rootKey = -1;
    const Kind kind = kindOf(path);
    if (kind == Kind::Wav) {
        WaveFormat format;
        int32_t loopStart = -1, loopEnd = -1, frames = 0;
        if (!readWavHeader(path, format, loopStart, loopEnd, rootKey, frames, message))
            return 0;
    } else if (kind == Kind::Aiff) {
        // The AIFF reader has no header-only mode; the audio is read and dropped.
        AiffContents aiff;
        if (!readAiff(path, aiff, message))
            return 0;
        rootKey = aiff.rootKey;
    } else {
        return notSampleFile(path, kind, message);
    }
    message.clear();
    if (rootKey < 0 || rootKey > 127)
        rootKey = -1;
    return 1;
}

bool isWavFileName(const std::string& path)
{
    return extensionOf(path) == ".wav";
}

bool isAiffFileName(const std::string& path)
{
    const std::string extension = extensionOf(path);
    return extension == ".aif" || extension == ".aiff" || extension == ".aifc";
}

} // namespace tg
