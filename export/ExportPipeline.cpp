// The common export pipeline. The export works on the live records (markers are moved for
// trimming and loop-only) and a working copy taken first puts everything back at any exit.
#include "export/ExportPipeline.h"

#include "analysis/Levels.h"
#include "core/Message.h"
#include "core/NoteNames.h"
#include "export/ExportProgress.h"
#include "export/KeyRangeMapping.h"
#include "export/KeySampleFile.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace tg {

int ExportSink::beginMultiSample(const TGmsl&, int, std::string&)
{
    return 1;
}

int ExportSink::finish(std::string&)
{
    return 1;
}

namespace {

// Puts the Project back as it was when the guard was made, however the export ends.
class WorkingCopy {
  public:
    explicit WorkingCopy(Project& project)
        : project_(project), saved_(std::make_unique<Project>(project))
    {
    }
    ~WorkingCopy() { project_ = *saved_; }
    WorkingCopy(const WorkingCopy&) = delete;
    WorkingCopy& operator=(const WorkingCopy&) = delete;

  private:
    Project& project_;
    std::unique_ptr<Project> saved_;
};

int keyLow(const TGmsl& msl)
{
    return std::max(0, int(msl.KBrangeIn));
}

int keyHigh(const TGmsl& msl)
{
    return std::min(kKeyCount - 1, int(msl.KBrangeOut));
}

int fail(const ExportJob& job, std::string& message, const std::string& text)
{
    message = job.nameLine + text;
    return 0;
}

// Checks the selection and sets the key ranges the writers use.
int prepareProject(Project& project, const std::vector<int>& mslIndices, std::string& message)
{
    if (mslIndices.empty())
        return setMessage(message, "no Multi-Sample selected");
    for (int index : mslIndices)
        if (index < 0 || index >= project.mslCount || index >= kMaxMultiSamples)
            return setMessage(message, "illegal Multi-Sample index %d", index);
    mapKeyRanges(project, -1);
    return 1;
}

} // namespace

void trimAfterLoops(Project& project, const std::vector<int>& mslIndices)
{
    for (int index : mslIndices) {
        for (TGmsl_key& key : project.msl[index].keys) {
            if (key.loopMode != 0 && key.Loop_In < key.Loop_Out) {
                // The 16 frames after the loop end are kept on purpose.
                const int64_t end = int64_t(key.Loop_Out) + 16;
                if (end < key.Note_Out)
                    key.Note_Out = int32_t(end);
            }
        }
    }
}

void applyLoopOnly(TGmsl_key& key)
{
    if (key.loopMode != 0 && int64_t(key.Loop_Out) - key.Loop_In >= 6 &&
        key.Loop_In >= key.Note_In && key.Loop_Out <= key.Note_Out) {
        key.Note_In = key.Loop_In;
        key.Note_Out = key.Loop_Out;
    }
}

int countExportKeys(const Project& project, const std::vector<int>& mslIndices)
{
    int count = 0;
    for (int index : mslIndices) {
        const TGmsl& msl = project.msl[index];
        for (int note = keyLow(msl); note <= keyHigh(msl); ++note)
            if (isExportable(msl.keys[note]))
                ++count;
    }
    return count;
}

int analyseLevels(const Project& project, const std::vector<int>& mslIndices,
                  const ExportServices& services, LayerGains& gains, std::string& message)
{
    const size_t layers = mslIndices.size();
    gains.assign(layers, {});
    std::vector<std::array<double, kKeyCount>> levels(layers);
    std::vector<std::array<bool, kKeyCount>> analysed(layers);
    for (size_t i = 0; i < layers; ++i) {
        gains[i].fill(1.0);
        levels[i].fill(0.0);
        analysed[i].fill(false);
    }

    int total = 0;
    for (int index : mslIndices)
        if (project.msl[index].mapTo == 0)
            total += countExportKeys(project, {index});

    int done = 0;
    int reference = -1;
    double referenceLevel = 0.0;
    int32_t referenceHigh = 0;
    for (size_t i = 0; i < layers; ++i) {
        const TGmsl& msl = project.msl[mslIndices[i]];
        if (msl.mapTo != 0)
            continue;
        // Only a strictly higher velocity range replaces the reference layer.
        const bool isReference = reference < 0 || msl.range_end > referenceHigh;
        if (isReference) {
            reference = int(i);
            referenceHigh = msl.range_end;
            referenceLevel = 0.0;
        }
        for (int note = keyLow(msl); note <= keyHigh(msl); ++note) {
            if (!isExportable(msl.keys[note]))
                continue;
            if (exportAbortFlag)
                return setMessage(message, "%s", kExportAbortedText);
            reportExportProgress(total > 0 ? double(done) / total : 0.0, kAnalyzingLevelsText);
            KeyAudio audio;
            std::string readMessage;
            if (!services.readKeySample(keySampleFilePath(project, msl, note), audio, readMessage))
                return setMessage(message, "%s", kExportAbortedText);
            const double level = services.peakLevel(audio);
            levels[i][note] = level;
            analysed[i][note] = true;
            if (isReference)
                referenceLevel = std::max(referenceLevel, level);
            ++done;
        }
    }

    for (size_t i = 0; i < layers; ++i) {
        if (int(i) == reference)
            continue;
        for (int note = 0; note < kKeyCount; ++note)
            if (analysed[i][note] && levels[i][note] > 0.0)
                gains[i][note] = referenceLevel / levels[i][note];
    }
    return 1;
}

int runExportPipeline(const ExportJob& job, const ExportServices& services, ExportSink& sink,
                      std::string& message)
{
    if (job.project == nullptr || !services.readKeySample || !services.render ||
        !services.convert || !services.peakLevel)
        return fail(job, message, "illegal pointer (==NULL)");
    Project& project = *job.project;

    // Taken before the preparation so that even the key ranges it sets are put back: the
    // Project is exactly as before after any export.
    WorkingCopy restoreOnExit(project);

    std::string text;
    if (!prepareProject(project, job.mslIndices, text))
        return fail(job, message, text);

    if (wantsTailRemoval(job.settings))
        trimAfterLoops(project, job.mslIndices);

    LayerGains gains(job.mslIndices.size());
    for (auto& layer : gains)
        layer.fill(1.0);
    if (wantsLevelAdjust(job.settings) &&
        !analyseLevels(project, job.mslIndices, services, gains, text))
        return fail(job, message, text);

    const int total = countExportKeys(project, job.mslIndices);
    int done = 0;
    for (size_t ordinal = 0; ordinal < job.mslIndices.size(); ++ordinal) {
        const int mslIndex = job.mslIndices[ordinal];
        TGmsl& msl = project.msl[mslIndex];
        if (!sink.beginMultiSample(msl, int(ordinal), text))
            return fail(job, message, text);
        for (int note = keyLow(msl); note <= keyHigh(msl); ++note) {
            TGmsl_key& key = msl.keys[note];
            if (!isExportable(key))
                continue;
            if (exportAbortFlag)
                return fail(job, message, kExportAbortedText);
            const std::string mslName(msl.name, strnlen(msl.name, sizeof msl.name));
            reportExportProgress(total > 0 ? double(done) / total : 0.0,
                                 formatText("Working on Multisample \"%s\" (%d of %d)\r\n\r\n"
                                            "Rendering and writing Key %d (\"%s\")",
                                            mslName.c_str(), int(ordinal) + 1, project.mslCount,
                                            note, noteName(note).c_str()));
            if (job.loopOnly)
                applyLoopOnly(key);

            KeyAudio recording;
            if (!services.readKeySample(keySampleFilePath(project, msl, note), recording, text))
                return fail(job, message, text);
            ExportedKey out;
            out.msl = &msl;
            out.key = &key;
            out.mslIndex = mslIndex;
            out.ordinal = int(ordinal);
            out.note = note;
            out.hasLoop = key.loopMode != 0 && key.Loop_Out > key.Loop_In;
            if (!services.render(key, recording, out.audio, text))
                return fail(job, message, text);

            const WaveFormat source = out.audio.format;
            const WaveFormat target = targetFormat(job.settings, source);
            const ChannelMode channels = targetChannelMode(job.settings);
            const ResampleMode resampling = targetResampling(job.settings);
            if (!services.convert(out.audio.note, source, target, &out.audio.loopStart,
                                  &out.audio.loopEnd, channels, resampling, text))
                return fail(job, message, text);
            if (!out.audio.release.empty() &&
                !services.convert(out.audio.release, source, target, nullptr, nullptr, channels,
                                  resampling, text))
                return fail(job, message, text);
            out.audio.format = target;

            const double gain = gains[ordinal][note];
            applyGains(gain, gain, target, out.audio.note.data(), out.audio.note.size());
            applyGains(gain, gain, target, out.audio.release.data(), out.audio.release.size());

            if (!sink.writeKey(out, text))
                return fail(job, message, text);
            ++done;
        }
    }
    if (!sink.finish(text))
        return fail(job, message, text);
    reportExportProgress(1.0, "");
    return 1;
}

} // namespace tg
