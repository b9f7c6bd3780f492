// Batch auto-note/auto-loop: reads each Key-Sample and reruns the per-key procedures.
#include "analysis/BatchAuto.h"

#include "analysis/AutoNote.h"
#include "analysis/LoopPlacement.h"
#include "audiofile/WavFile.h"
#include "core/Message.h"
#include "core/Names.h"
#include "core/NoteNames.h"

namespace tg {

int batchAutoNoteLoop(Project& project, KeyScope scope, int msl, const BatchAutoOptions& options,
                      const JobProgress& progress, std::string& message)
{
    const std::vector<KeyRef> keys = keysInScope(project, scope, msl, 0);
    const bool hasLoaded = options.loadedMsl >= 0 && options.loadedMsl < project.mslCount &&
                           options.loadedNote >= 0 && options.loadedNote < kKeyCount;
    // The loaded Key-Sample is the reference; a copy keeps it fixed while keys change.
    TGmsl_key loaded;
    uint32_t loadedRate = 0;
    if (hasLoaded) {
        loaded = project.msl[options.loadedMsl].keys[options.loadedNote];
        WaveFormat format;
        int32_t loopStart, loopEnd, rootKey, frames;
        std::string ignored;
        if (readWavHeader(
                keySampleFileName(project, project.msl[options.loadedMsl], options.loadedNote),
                format, loopStart, loopEnd, rootKey, frames, ignored))
            loadedRate = format.nSamplesPerSec;
    }

    LoopPercentages fromLoaded;
    const bool loadedPercentages = options.autoLoop &&
                                   options.loopSource == LoopSource::LoadedKey && hasLoaded &&
                                   loopPercentagesFromKey(loaded, fromLoaded);

    for (size_t i = 0; i < keys.size(); ++i) {
        TGmsl& m = project.msl[keys[i].msl];
        TGmsl_key& key = m.keys[keys[i].note];
        const bool isLoaded =
            hasLoaded && keys[i].msl == options.loadedMsl && keys[i].note == options.loadedNote;
        const std::string text = formatText("Multi-Sample: %s  Working on Key: %s", m.name,
                                            noteName(keys[i].note).c_str());
        if (progress && !progress(text, static_cast<double>(i) / keys.size()))
            return kJobCancelled;

        WaveFormat format;
        std::vector<uint8_t> data;
        std::string readMessage;
        if (!readWav(keySampleFileName(project, m, keys[i].note), format, data, readMessage))
            return setMessage(message, "Error reading data from disk:\n%s", readMessage.c_str());

        AutoNoteOptions noteOptions;
        // Only auto-loop asked: a Key-Sample that already has a note keeps it.
        noteOptions.keepExistingNote = !options.autoNote;
        if (options.equalSilence && hasLoaded && !isLoaded)
            noteOptions.silenceReference = &loaded;
        if (options.equalNoteLength && hasLoaded && !isLoaded && loadedRate > 0) {
            noteOptions.lengthReference = &loaded;
            noteOptions.lengthReferenceRate = loadedRate;
        }
        autoNote(key, format, data.data(), data.size(), m.recordsettings, noteOptions);

        if (options.autoLoop) {
            const LoopPercentages percentages =
                loadedPercentages ? fromLoaded : loopPercentagesFromSettings(m.recordsettings);
            if (key.loopMode == 0)
                key.loopMode = 1;
            auto searchProgress = [&](double fraction, double) {
                return !progress || progress(text, (i + fraction) / keys.size());
            };
            if (placeLoop(key, format, data.data(), data.size(), percentages,
                          m.recordsettings.zerocrossing != 0, searchProgress, options.scan) == -1)
                return kJobCancelled;
        }
        if (options.releaseOff)
            key.releaseOn = 0;
        if (options.keyDone)
            options.keyDone(keys[i]);
    }
    if (!keys.empty())
        project.modified = 1;
    message.clear();
    return 1;
}

} // namespace tg
