// The normalize, change-gain and highest-level jobs over Key-Sample files.
#include "analysis/LevelOperations.h"

#include "audiofile/WavFile.h"
#include "core/FolderSyncBatch.h"
#include "core/Message.h"
#include "core/Names.h"

#include <algorithm>

namespace tg {

namespace {

const char* const kNoSelection = "No Key-Sample selected!";

struct KeyAudio {
    WaveFormat format;
    std::vector<uint8_t> data;
    std::string path;
};

int readKey(const Project& project, int msl, int note, KeyAudio& audio, std::string& message)
{
    audio.path = keySampleFileName(project, project.msl[msl], note);
    return readWav(audio.path, audio.format, audio.data, message);
}

LevelRegion regionOf(const Project& project, int msl, int note, bool noteAndRelease)
{
    return LevelRegion{noteAndRelease, &project.msl[msl].keys[note]};
}

// Percent done with the counter advancing by 100 per key slot over 128 slots per
// Multi-Sample of the job.
std::string progressText(const char* label, size_t slotsDone, size_t multiSamples)
{
    const size_t percent = multiSamples ? slotsDone * 100 / (kKeyCount * multiSamples) : 100;
    return formatText("%s (%zu %% done)", label, percent);
}

// Runs `work` for every key of the scope, walking all 128 slots of each Multi-Sample so the
// progress advances evenly. Returns 1, 0 (work failed) or kJobCancelled.
template <typename Work>
int forEachKey(const Project& project, KeyScope scope, int msl, int note, const char* label,
               const JobProgress& progress, Work work)
{
    const std::vector<int> msls = multiSamplesInScope(project, scope, msl);
    // A job that rewrites the Key-Samples syncs the data folder once, at the end.
    FolderSyncBatch folderSyncs;
    size_t slots = 0;
    for (int m : msls) {
        for (int n = 0; n < kKeyCount; ++n, ++slots) {
            const bool selected = scope != KeyScope::Sample || n == note;
            if (selected && project.msl[m].keys[n].hasAudio) {
                if (!work(m, n))
                    return 0;
                const std::string text = progressText(label, slots + 1, msls.size());
                if (progress &&
                    !progress(text, static_cast<double>(slots + 1) / (kKeyCount * msls.size())))
                    return kJobCancelled;
            }
        }
    }
    return 1;
}

} // namespace

int normalizeKeySample(const Project& project, int msl, int note, double targetDb,
                       bool equalLeftRight, bool noteAndRelease, std::string& message)
{
    KeyAudio audio;
    if (!readKey(project, msl, note, audio, message))
        return 0;
    const LevelRegion region = regionOf(project, msl, note, noteAndRelease);
    const ChannelLevels levels =
        measureLevels(audio.format, audio.data.data(), audio.data.size(), region);
    double left = 1.0, right = 1.0;
    normalizeFactors(levels, targetDb, equalLeftRight, left, right);
    if ((left == 1.0 && right == 1.0) || (left == 1.0 && audio.format.nChannels == 1))
        return 1; // nothing to change: leave the file as it is
    applyGains(left, right, audio.format, audio.data.data(), audio.data.size(), region);
    return writeWavReplacing(audio.path, audio.format, audio.data, message);
}

int normalizeKeySamples(const Project& project, KeyScope scope, int msl, int note,
                        const NormalizeOptions& options, const JobProgress& progress,
                        std::string& message)
{
    if (keysInScope(project, scope, msl, note).empty())
        return setMessage(message, "%s", kNoSelection);
    const char* label = "Normalizing...";

    if (!options.toMultiSampleMaximum) {
        const int result =
            forEachKey(project, scope, msl, note, label, progress, [&](int m, int n) {
                return normalizeKeySample(project, m, n, options.targetDb, options.equalLeftRight,
                                          options.noteAndRelease, message) == 1;
            });
        if (result == 1)
            setMessage(message, "Normalizing done.");
        return result;
    }

    // Each Multi-Sample on its own: pass one finds its loudest Key-Sample, pass two brings
    // the selected keys up (or down) to that level.
    for (int m : multiSamplesInScope(project, scope, msl)) {
        const std::vector<KeyRef> present = keysInScope(project, KeyScope::MultiSample, m, 0);
        if (present.size() < 2)
            continue; // a single Key-Sample is already as loud as its loudest one
        double peak = 0.0;
        for (const KeyRef& key : present) {
            KeyAudio audio;
            if (!readKey(project, m, key.note, audio, message))
                return 0;
            const ChannelLevels levels =
                measureLevels(audio.format, audio.data.data(), audio.data.size(),
                              regionOf(project, m, key.note, options.noteAndRelease));
            peak = std::max({peak, levels.left, levels.right});
        }
        if (peak <= 0.0)
            continue;
        const double targetDb = levelInDb(peak);
        const KeyScope inner = scope == KeyScope::Sample ? KeyScope::Sample : KeyScope::MultiSample;
        const int result = forEachKey(project, inner, m, note, label, progress, [&](int mm, int n) {
            return normalizeKeySample(project, mm, n, targetDb, options.equalLeftRight,
                                      options.noteAndRelease, message) == 1;
        });
        if (result != 1)
            return result;
    }
    setMessage(message, "Normalizing done.");
    return 1;
}

int findHighestLevel(const Project& project, KeyScope scope, int msl, int note, bool noteAndRelease,
                     const JobProgress& progress, ChannelLevels& levels, std::string& message)
{
    levels = {};
    if (keysInScope(project, scope, msl, note).empty())
        return setMessage(message, "%s", kNoSelection);
    const int result = forEachKey(
        project, scope, msl, note, "Searching for maximum Level...", progress, [&](int m, int n) {
            KeyAudio audio;
            if (!readKey(project, m, n, audio, message))
                return false;
            const ChannelLevels l =
                measureLevels(audio.format, audio.data.data(), audio.data.size(),
                              regionOf(project, m, n, noteAndRelease));
            levels.left = std::max(levels.left, l.left);
            levels.right = std::max(levels.right, l.right);
            return true;
        });
    if (result != 1)
        return result;
    const double peak = std::max(levels.left, levels.right);
    const char* name = scope == KeyScope::Sample        ? "Sample"
                       : scope == KeyScope::MultiSample ? "Multi-Sample"
                                                        : "Project";
    setMessage(message, "Maximum level in %s: %.2f dB (= %.2f %%)", name, levelInDb(peak),
               peak * 100.0);
    return 1;
}

bool gainWouldClip(const ChannelLevels& highest, const GainOptions& options)
{
    const bool left = options.channels != GainChannels::Right;
    const bool right = options.channels != GainChannels::Left;
    return (left && levelInDb(highest.left) + options.gainDb > 0.0) ||
           (right && levelInDb(highest.right) + options.gainDb > 0.0);
}

int changeGainOfKeySamples(const Project& project, KeyScope scope, int msl, int note,
                           const GainOptions& options, const JobConfirm& confirm,
                           const JobProgress& progress, std::string& message)
{
    if (keysInScope(project, scope, msl, note).empty())
        return setMessage(message, "%s", kNoSelection);
    const bool left = options.channels != GainChannels::Right;
    const bool right = options.channels != GainChannels::Left;
    const double factor = gainFromDb(options.gainDb);

    if (options.warnClipping) {
        ChannelLevels highest;
        std::string levelMessage;
        const int found = findHighestLevel(project, scope, msl, note, options.noteAndRelease, {},
                                           highest, levelMessage);
        if (found != 1)
            return setMessage(message, "%s", levelMessage.c_str());
        if (gainWouldClip(highest, options) && !(confirm && confirm(kClippingQuestion)))
            return setMessage(message, "%s", kClippingQuestion);
    }

    const int result =
        forEachKey(project, scope, msl, note, "Changing gain...", progress, [&](int m, int n) {
            KeyAudio audio;
            if (!readKey(project, m, n, audio, message))
                return false;
            const double l = left ? factor : 1.0;
            const double r = right ? factor : 1.0;
            if ((l == 1.0 && r == 1.0) || (l == 1.0 && audio.format.nChannels == 1))
                return true;
            applyGains(l, r, audio.format, audio.data.data(), audio.data.size(),
                       regionOf(project, m, n, options.noteAndRelease));
            return writeWavReplacing(audio.path, audio.format, audio.data, message) == 1;
        });
    if (result == 1)
        setMessage(message, "Changing gain done.");
    return result;
}

} // namespace tg
