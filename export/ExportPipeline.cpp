// The common export pipeline. The export works on the live records (markers are moved for
// trimming and loop-only) and a working copy taken first puts everything back at any exit.
#include "export/ExportPipeline.h"

#include "core/Message.h"
#include "core/NoteNames.h"
#include "export/ExportProgress.h"
#include "export/KeptRecordings.h"
#include "export/KeyLevels.h"
#include "export/KeyRangeMapping.h"
#include "export/KeySampleFile.h"
#include "export/RenderAhead.h"

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

// Recordings read for level analysis stay in memory up to this much for rendering; a larger
// Project reads the rest again (then mostly from the page cache).
constexpr size_t kKeptRecordingBytes = size_t(512) << 20;

// Rendered keys waiting for the writer, per worker: enough to keep every worker busy while the
// writer waits for the disk, few enough to bound the memory.
constexpr size_t kKeysAheadPerThread = 2;

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
                  const ExportServices& services, LayerGains& gains, std::string& message,
                  KeptRecordings* kept)
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
            if (kept)
                kept->keep(int(i), note, audio);
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

// What a worker needs to render one key without touching the live records: a copy of the
// key with the loop-only rule applied (as renderKey() applies it to the live key), the
// recording's path and the gain.
struct ExportSession::PlannedKey {
    int ordinal = 0;
    int note = 0;
    TGmsl_key key;
    std::string path;
    double gain = 1.0;
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
    kept_ = std::make_unique<KeptRecordings>(kKeptRecordingBytes);
    if (wantsLevelAdjust(job_.settings) &&
        !analyseLevels(project, job_.mslIndices, services_, gains_, text, kept_.get()))
        return fail(job_, message, text);

    total_ = countExportKeys(project, job_.mslIndices) * std::max(1, job_.rendersPerKey);
    done_ = 0;
    return 1;
}

void ExportSession::renderAhead(const std::vector<SelectedKey>& keys)
{
    if (!restore_ || ahead_ || job_.renderThreads <= 1 || keys.empty())
        return;
    const Project& project = *job_.project;
    for (const SelectedKey& selected : keys) {
        if (selected.ordinal < 0 || size_t(selected.ordinal) >= job_.mslIndices.size() ||
            selected.note < 0 || selected.note >= kKeyCount)
            continue;
        const TGmsl& msl = project.msl[job_.mslIndices[size_t(selected.ordinal)]];
        PlannedKey planned;
        planned.ordinal = selected.ordinal;
        planned.note = selected.note;
        planned.key = msl.keys[selected.note];
        if (job_.loopOnly)
            applyLoopOnly(planned.key);
        planned.path = keySampleFilePath(project, msl, selected.note);
        planned.gain = gains_[size_t(selected.ordinal)][selected.note];
        plan_.push_back(std::move(planned));
    }
    ahead_ = std::make_unique<RenderAhead>(
        plan_.size(), job_.renderThreads, kKeysAheadPerThread * size_t(job_.renderThreads),
        [this](size_t index, ExportedKey& out, std::string& message) {
            if (exportAbortFlag)
                return setMessage(message, "%s", kExportAbortedText);
            return renderAudio(plan_[index].key, plan_[index], out.audio, message);
        });
}

bool ExportSession::findPlanned(int ordinal, int note, size_t& index) const
{
    if (!ahead_)
        return false;
    for (size_t i = ahead_->nextToTake(); i < plan_.size(); ++i)
        if (plan_[i].ordinal == ordinal && plan_[i].note == note) {
            index = i;
            return true;
        }
    return false;
}

int ExportSession::renderAudio(const TGmsl_key& key, const PlannedKey& planned, RenderedKey& out,
                               std::string& message) const
{
    KeyAudio recording;
    if (!kept_->take(planned.ordinal, planned.note, recording) &&
        !services_.readKeySample(planned.path, recording, message))
        return 0;
    if (!services_.render(key, recording, out, message))
        return 0;
    // The recording is not needed past rendering; let its memory go before converting.
    recording = KeyAudio();

    const WaveFormat source = out.format;
    const WaveFormat target = targetFormat(job_.settings, source);
    const ChannelMode channels = targetChannelMode(job_.settings);
    const ResampleMode resampling = targetResampling(job_.settings);
    if (!services_.convert(out.note, source, target, &out.loopStart, &out.loopEnd, channels,
                           resampling, message))
        return 0;
    if (!out.release.empty() && !services_.convert(out.release, source, target, nullptr, nullptr,
                                                   channels, resampling, message))
        return 0;
    out.format = target;

    applyKeyGain(planned.gain, target, out.note.data(), out.note.size());
    applyKeyGain(planned.gain, target, out.release.data(), out.release.size());
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

    out = ExportedKey();
    size_t planned = 0;
    if (findPlanned(ordinal, note, planned)) {
        if (!ahead_->take(planned, out, message))
            return 0;
    } else {
        PlannedKey request;
        request.ordinal = ordinal;
        request.note = note;
        request.path = keySampleFilePath(project, msl, note);
        request.gain = gains_[size_t(ordinal)][note];
        if (!renderAudio(key, request, out.audio, message))
            return 0;
    }
    out.msl = &msl;
    out.key = &key;
    out.mslIndex = mslIndex;
    out.ordinal = ordinal;
    out.note = note;
    out.hasLoop = key.loopMode != 0 && key.Loop_Out > key.Loop_In;
    ++done_;
    return 1;
}

int runExportPipeline(const ExportJob& job, const ExportServices& services, ExportSink& sink,
                      std::string& message)
{
    ExportSession session(job, services);
    if (!session.begin(message))
        return 0;
    std::vector<SelectedKey> order;
    for (size_t ordinal = 0; ordinal < job.mslIndices.size(); ++ordinal)
        for (int note : exportedKeys(job.project->msl[job.mslIndices[ordinal]]))
            order.push_back({int(ordinal), note});
    session.renderAhead(order);
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
