// Auto-note for one Key-Sample and the export's note-length checks.
#include "analysis/AutoNote.h"

#include "analysis/PcmSamples.h"
#include "analysis/ThresholdSearch.h"
#include "audiofile/ZeroCrossing.h"
#include "core/Message.h"

#include <algorithm>
#include <climits>

namespace tg {

void autoNote(TGmsl_key& key, const WaveFormat& format, const uint8_t* data, size_t bytes,
              const RecordSettings& settings, const AutoNoteOptions& options)
{
    if (data == nullptr || !pcm::isSupportedFormat(format))
        return;
    const int64_t frames = static_cast<int64_t>(bytes / format.nBlockAlign);
    if (frames < 1)
        return;
    const int32_t finderBytes = static_cast<int32_t>(
        std::min<int64_t>(frames * format.nBlockAlign, INT32_MAX - INT32_MAX % format.nBlockAlign));
    const int32_t last = static_cast<int32_t>(std::min<int64_t>(frames - 1, INT32_MAX));
    // The note end snaps back to a zero crossing; with none after the note start (the
    // finder then runs off the front of the data) it stays where it is.
    auto snapNoteEnd = [&](int32_t end) {
        const int32_t snapped =
            findZeroCrossing(&format, data, finderBytes, end, -1, kZeroCrossingEitherChannel);
        return snapped > key.Note_In ? snapped : end;
    };

    if (options.silenceReference != nullptr && options.silenceReference != &key) {
        key.Silence_In = options.silenceReference->Silence_In;
        key.Silence_Out = options.silenceReference->Silence_Out;
    }

    if (!(options.keepExistingNote && key.Note_In < key.Note_Out)) {
        const int32_t start = key.Silence_Out < INT32_MAX ? key.Silence_Out + 1 : INT32_MAX;
        key.Note_In = thresholdSearch(&format, data, bytes, key.Silence_In, key.Silence_Out, start,
                                      1, settings.thresPrecisionIn);
        key.Note_Out = thresholdSearch(&format, data, bytes, key.Silence_In, key.Silence_Out,
                                       static_cast<int32_t>(std::min<int64_t>(frames, INT32_MAX)),
                                       -1, settings.thresPrecisionOut);
        // Nothing rose above the noise: keep the whole recording as the note.
        if (key.Note_In >= key.Note_Out) {
            key.Note_In = 0;
            key.Note_Out = last;
        }
        if (settings.zerocrossing)
            key.Note_Out = snapNoteEnd(key.Note_Out);
    }

    const TGmsl_key* reference = options.lengthReference;
    if (reference != nullptr && reference != &key && options.lengthReferenceRate > 0) {
        // The same duration in seconds, whatever the rates of the two recordings.
        const double seconds =
            static_cast<double>(int64_t{reference->Note_Out} - reference->Note_In) /
            options.lengthReferenceRate;
        const int64_t length = static_cast<int64_t>(format.nSamplesPerSec * seconds);
        key.Note_Out = static_cast<int32_t>(
            std::clamp<int64_t>(int64_t{key.Note_In} + length, key.Note_In, last));
        if (settings.zerocrossing)
            key.Note_Out = snapNoteEnd(key.Note_Out);
    }
}

int checkNoteLengths(const TGmsl& msl, std::string& message)
{
    for (int n = 0; n < kKeyCount; ++n) {
        const TGmsl_key& key = msl.keys[n];
        if (key.hasAudio && int64_t{key.Note_Out} + 1 - key.Note_In <= 0)
            return setMessage(message,
                              "The Note Length of the selected Key \"%d\" in the Multi-Sample "
                              "\"%s\" is equal Zero.",
                              n, msl.name);
    }
    return 1;
}

int checkSomethingToExport(const TGmsl* msls, int count, std::string& message)
{
    for (int m = 0; msls != nullptr && m < count; ++m) {
        for (const TGmsl_key& key : msls[m].keys) {
            if (key.hasAudio)
                return 1;
        }
    }
    return setMessage(message, "There is nothing to export.");
}

} // namespace tg
