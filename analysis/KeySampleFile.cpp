// Safe rewriting of Key-Sample files and the key selections of the batch jobs.
#include "analysis/KeySampleFile.h"

#include "audiofile/WavFile.h"

namespace tg {

int writeWavReplacing(const std::string& path, const WaveFormat& format,
                      const std::vector<uint8_t>& data, std::string& message)
{
    return writeWav(path, format, data, message); // the writer replaces a file whole or not at all
}

std::vector<int> multiSamplesInScope(const Project& project, KeyScope scope, int msl)
{
    std::vector<int> result;
    if (scope == KeyScope::Project) {
        for (int m = 0; m < project.mslCount && m < kMaxMultiSamples; ++m)
            result.push_back(m);
    } else if (msl >= 0 && msl < project.mslCount && msl < kMaxMultiSamples) {
        result.push_back(msl);
    }
    return result;
}

std::vector<KeyRef> keysInScope(const Project& project, KeyScope scope, int msl, int note)
{
    std::vector<KeyRef> keys;
    for (int m : multiSamplesInScope(project, scope, msl)) {
        for (int n = 0; n < kKeyCount; ++n) {
            if (scope == KeyScope::Sample && n != note)
                continue;
            if (project.msl[m].keys[n].hasAudio)
                keys.push_back({m, n});
        }
    }
    return keys;
}

} // namespace tg
