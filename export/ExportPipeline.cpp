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
    for (int index : mslIndices)
        count += int(exportedKeys(project.msl[index]).size());
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
        for (int note : exportedKeys(msl)) {
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

// Puts the Project back as it was when the copy was made, however the export ends.
class ExportSession::WorkingCopy {
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

ExportSession::ExportSession(const ExportJob& job, const ExportServices& services)
    : job_(job), services_(services)
{
}

ExportSession::~ExportSession() = default;

int ExportSession::begin(std::string& message)
{
    if (job_.project == nullptr || !services_.readKeySample || !services_.render ||
        !services_.convert || !services_.peakLevel)
        return fail(job_, message, "illegal pointer (==NULL)");
    Project& project = *job_.project;

    // Taken before the preparation so that even the key ranges it sets are put back: the
    // Project is exactly as before after any export.
    restore_ = std::make_unique<WorkingCopy>(project);

    std::string text;
    if (!prepareProject(project, job_.mslIndices, text))
        return fail(job_, message, text);

    if (wantsTailRemoval(job_.settings))
        trimAfterLoops(project, job_.mslIndices);

    gains_.assign(job_.mslIndices.size(), {});
    for (auto& layer : gains_)
        layer.fill(1.0);
    if (wantsLevelAdjust(job_.settings) &&
        !analyseLevels(project, job_.mslIndices, services_, gains_, text))
        return fail(job_, message, text);

    total_ = countExportKeys(project, job_.mslIndices) * std::max(1, job_.rendersPerKey);
    done_ = 0;
    return 1;
}

int ExportSession::renderKey(int ordinal, int note, ExportedKey& out, std::string& message)
{
    if (!restore_ || ordinal < 0 || size_t(ordinal) >= job_.mslIndices.size() || note < 0 ||
        note >= kKeyCount)
        return setMessage(message, "no Key-Sample %d of selected Multi-Sample %d to render", note,
                          ordinal);
    Project& project = *job_.project;
    const int mslIndex = job_.mslIndices[size_t(ordinal)];
    TGmsl& msl = project.msl[mslIndex];
    TGmsl_key& key = msl.keys[note];
    if (exportAbortFlag)
        return setMessage(message, "%s", kExportAbortedText);
    const std::string mslName(msl.name, strnlen(msl.name, sizeof msl.name));
    reportExportProgress(total_ > 0 ? double(done_) / total_ : 0.0,
                         formatText("Working on Multisample \"%s\" (%d of %d)\r\n\r\n"
                                    "Rendering and writing Key %d (\"%s\")",
                                    mslName.c_str(), ordinal + 1, project.mslCount, note,
                                    noteName(note).c_str()));
    if (job_.loopOnly)
        applyLoopOnly(key);

    KeyAudio recording;
    if (!services_.readKeySample(keySampleFilePath(project, msl, note), recording, message))
        return 0;
    out = ExportedKey();
    out.msl = &msl;
    out.key = &key;
    out.mslIndex = mslIndex;
    out.ordinal = ordinal;
    out.note = note;
    out.hasLoop = key.loopMode != 0 && key.Loop_Out > key.Loop_In;
    if (!services_.render(key, recording, out.audio, message))
        return 0;

    const WaveFormat source = out.audio.format;
    const WaveFormat target = targetFormat(job_.settings, source);
    const ChannelMode channels = targetChannelMode(job_.settings);
    const ResampleMode resampling = targetResampling(job_.settings);
    if (!services_.convert(out.audio.note, source, target, &out.audio.loopStart, &out.audio.loopEnd,
                           channels, resampling, message))
        return 0;
    if (!out.audio.release.empty() && !services_.convert(out.audio.release, source, target, nullptr,
                                                         nullptr, channels, resampling, message))
        return 0;
    out.audio.format = target;

    const double gain = gains_[size_t(ordinal)][note];
    applyGains(gain, gain, target, out.audio.note.data(), out.audio.note.size());
    applyGains(gain, gain, target, out.audio.release.data(), out.audio.release.size());
    ++done_;
    return 1;
}

int runExportPipeline(const ExportJob& job, const ExportServices& services, ExportSink& sink,
                      std::string& message)
{
    ExportSession session(job, services);
    if (!session.begin(message))
        return 0;
    std::string text;
    for (size_t ordinal = 0; ordinal < job.mslIndices.size(); ++ordinal) {
        const TGmsl& msl = job.project->msl[job.mslIndices[ordinal]];
        if (!sink.beginMultiSample(msl, int(ordinal), text))
            return fail(job, message, text);
        for (int note : exportedKeys(msl)) {
            ExportedKey out;
            if (!session.renderKey(int(ordinal), note, out, text) || !sink.writeKey(out, text))
                return fail(job, message, text);
        }
    }
    if (!sink.finish(text))
        return fail(job, message, text);
    reportExportProgress(1.0, "");
    return 1;
}

} // namespace tg
