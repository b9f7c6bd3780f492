// A batch job (normalize, change gain, highest level, auto-note/auto-loop) run on a worker
// thread, so that the window stays responsive while it works through the Key-Samples.
//
// The job works on a snapshot of the Project taken when it is made; the live Project is
// left alone until the job has finished and `applyMarkers` copies the markers of the keys
// the job completed back, on the GUI thread. Cancel is a flag the job polls after every key
// (and inside a loop search), so it stops within one key.
#pragma once

#include "analysis/BatchAuto.h"
#include "analysis/KeySampleFile.h"
#include "analysis/LevelOperations.h"
#include "core/Records.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tg {

class BatchJob {
  public:
    // The job's work on the snapshot: returns 1, 0 with `message`, or kJobCancelled.
    // `keyDone` records a key whose markers in the snapshot are final.
    using Work =
        std::function<int(Project& snapshot, const JobProgress& progress,
                          const std::function<void(const KeyRef&)>& keyDone, std::string& message)>;

    // Takes the snapshot of `project`. Any thread; the caller keeps `project` unchanged
    // meanwhile (the dialogs are modal).
    explicit BatchJob(const Project& project);
    // Cancels a job still running and waits for it.
    ~BatchJob();
    BatchJob(const BatchJob&) = delete;
    BatchJob& operator=(const BatchJob&) = delete;

    // Starts `work` on the worker thread. Once per job.
    void start(Work work);
    // Asks the job to stop before its next key. Any thread.
    void cancel();
    bool cancelRequested() const { return cancelled_.load(); }

    struct Status {
        std::string text;        // the operation text of the last progress report
        double fraction = 0.0;   // 0..1
        double secondsLeft = -1; // remaining time from the pace so far; -1 before any progress
        bool finished = false;
    };
    // Any thread.
    Status status() const;
    // Blocks until the job has finished.
    void wait();

    // After the job finished: 1, 0 or kJobCancelled, and the job's closing message.
    int result() const { return result_; }
    const std::string& message() const { return message_; }
    // The keys the job completed, in the order it completed them.
    const std::vector<KeyRef>& keysDone() const { return keysDone_; }
    const Project& snapshot() const { return *snapshot_; }

    // Copies the key records of the completed keys from the snapshot into `project`, marks it
    // modified when any were copied, and returns the Multi-Samples touched. GUI thread, after
    // the job finished.
    std::vector<int> applyMarkers(Project& project) const;

  private:
    void run(const Work& work);

    std::unique_ptr<Project> snapshot_;
    std::thread worker_;
    std::atomic<bool> cancelled_{false};
    std::atomic<bool> finished_{false};
    mutable std::mutex mutex_; // guards text_, fraction_, firstReport_, lastReport_
    std::string text_;
    double fraction_ = 0.0;
    std::chrono::steady_clock::time_point started_;
    std::chrono::steady_clock::time_point lastReport_;
    int result_ = 0;
    std::string message_;
    std::vector<KeyRef> keysDone_; // written by the worker, read after it finished
};

// The jobs of the three batch dialogs as BatchJob work.
BatchJob::Work normalizeWork(KeyScope scope, int msl, int note, const NormalizeOptions& options);
// Change gain without its own clipping question: the dialog asks first, on the GUI thread,
// from the levels a highestLevelWork job found (see gainWouldClip).
BatchJob::Work gainWork(KeyScope scope, int msl, int note, GainOptions options);
// Finds the highest level; the levels land in `levels`, which must outlive the job.
BatchJob::Work highestLevelWork(KeyScope scope, int msl, int note, bool noteAndRelease,
                                ChannelLevels& levels);
BatchJob::Work autoNoteLoopWork(KeyScope scope, int msl, BatchAutoOptions options);

} // namespace tg
