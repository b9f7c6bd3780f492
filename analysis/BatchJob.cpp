// The worker thread of a batch job and the hand-back of its results.
#include "analysis/BatchJob.h"

#include <algorithm>

namespace tg {

BatchJob::BatchJob(const Project& project) : snapshot_(std::make_unique<Project>(project)) {}

BatchJob::~BatchJob()
{
    cancel();
    if (worker_.joinable())
        worker_.join();
}

void BatchJob::start(Work work)
{
    started_ = std::chrono::steady_clock::now();
    worker_ = std::thread([this, work = std::move(work)] { run(work); });
}

void BatchJob::cancel()
{
    cancelled_ = true;
}

void BatchJob::run(const Work& work)
{
    const JobProgress progress = [this](const std::string& text, double fraction) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            text_ = text;
            fraction_ = std::clamp(fraction, 0.0, 1.0);
            lastReport_ = std::chrono::steady_clock::now();
        }
        return !cancelled_.load();
    };
    const auto keyDone = [this](const KeyRef& key) { keysDone_.push_back(key); };
    std::string message;
    const int result = work(*snapshot_, progress, keyDone, message);
    // A cancel that came after the last poll does not undo a finished job.
    result_ = result;
    message_ = message;
    finished_ = true;
}

BatchJob::Status BatchJob::status() const
{
    Status status;
    std::lock_guard<std::mutex> lock(mutex_);
    status.text = text_;
    status.fraction = fraction_;
    status.finished = finished_.load();
    if (fraction_ > 0.0) {
        const double elapsed =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - started_).count();
        status.secondsLeft = elapsed / fraction_ * (1.0 - fraction_);
    }
    return status;
}

void BatchJob::wait()
{
    if (worker_.joinable())
        worker_.join();
}

std::vector<int> BatchJob::applyMarkers(Project& project) const
{
    std::vector<int> touched;
    for (const KeyRef& key : keysDone_) {
        project.msl[key.msl].keys[key.note] = snapshot_->msl[key.msl].keys[key.note];
        if (std::find(touched.begin(), touched.end(), key.msl) == touched.end())
            touched.push_back(key.msl);
    }
    if (!keysDone_.empty())
        project.modified = 1;
    return touched;
}

BatchJob::Work normalizeWork(KeyScope scope, int msl, int note, const NormalizeOptions& options)
{
    return [=](Project& project, const JobProgress& progress, const auto&, std::string& message) {
        return normalizeKeySamples(project, scope, msl, note, options, progress, message);
    };
}

BatchJob::Work gainWork(KeyScope scope, int msl, int note, GainOptions options)
{
    options.warnClipping = false;
    return [=](Project& project, const JobProgress& progress, const auto&, std::string& message) {
        return changeGainOfKeySamples(project, scope, msl, note, options, {}, progress, message);
    };
}

BatchJob::Work highestLevelWork(KeyScope scope, int msl, int note, bool noteAndRelease,
                                ChannelLevels& levels)
{
    return [=, &levels](Project& project, const JobProgress& progress, const auto&,
                        std::string& message) {
        return findHighestLevel(project, scope, msl, note, noteAndRelease, progress, levels,
                                message);
    };
}

BatchJob::Work autoNoteLoopWork(KeyScope scope, int msl, BatchAutoOptions options)
{
    return [=](Project& project, const JobProgress& progress,
               const std::function<void(const KeyRef&)>& keyDone, std::string& message) mutable {
        options.keyDone = keyDone;
        return batchAutoNoteLoop(project, scope, msl, options, progress, message);
    };
}

} // namespace tg
