// Key-Sample audio over the WAV reader, with the model's own messages.
#include "audiofile/KeySampleAudio.h"

#include "audiofile/WavFile.h"
#include "core/Names.h"

#include <filesystem>
#include <new>

namespace tg {

namespace {

const char* const kSampleNotFound = "Sample file '%s' could not be found.";
const char* const kSampleReadError = "Error reading sample file '%s'. Error: %s";
const char* const kNoSampleMemory = "Unable to allcate memory.";

// The WAV reader refuses blocks it cannot allocate with a message of this beginning.
bool isAllocationFailure(const std::string& readerMessage)
{
    return readerMessage.rfind("unable to allocate memory", 0) == 0;
}

} // namespace

Result loadKeySampleAudio(const Project& project, TGmsl& msl, int note, WaveFormat& format,
                          std::vector<uint8_t>& data)
{
    data.clear();
    if (note < 0 || note >= kKeyCount)
        return Result::refused(formatText(kSampleNotFound, ""));
    TGmsl_key& key = msl.keys[note];
    key.hasAudio = 0;
    const std::string path = keySampleFileName(project, msl, note);
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return Result::refused(formatText(kSampleNotFound, path.c_str()));
    std::string message;
    int ok = 0;
    try {
        ok = readWav(path, format, data, message);
    } catch (const std::bad_alloc&) {
        data.clear();
        return Result::refused(kNoSampleMemory);
    }
    if (!ok) {
        data.clear();
        if (isAllocationFailure(message))
            return Result::refused(kNoSampleMemory);
        return Result::refused(formatText(kSampleReadError, path.c_str(), message.c_str()));
    }
    key.hasAudio = 1;
    return Result::done();
}

bool wavSampleRate(const std::string& path, double& rate)
{
    WaveFormat format;
    int32_t loopStart = 0, loopEnd = 0, rootKey = 0, frames = 0;
    std::string message;
    if (!readWavHeader(path, format, loopStart, loopEnd, rootKey, frames, message))
        return false;
    rate = format.nSamplesPerSec;
    return true;
}

WavRateReader wavFileRateReader()
{
    return [](const std::string& path, double& rate) { return wavSampleRate(path, rate); };
}

} // namespace tg
