// Running a batch dialog's job: a snapshot of the current Project on a worker, the progress
// dialog, the markers handed back and the listeners told, then the closing message.
#pragma once

#include "analysis/BatchJob.h"

#include <QString>

class QWidget;

namespace tg {
class Model;
}

namespace tg::shell {

// Runs `work` over the current Project with the batch heading. When the job finished or was
// cancelled, the completed keys' markers reach the Project and the listeners hear of every
// Multi-Sample in `touched`. A failure's message is shown under "Error"; a finished job's
// message (e.g. "Normalizing done.") under "Info" unless `showFinishedMessage` is false.
// Returns the job's result.
int runBatchJob(QWidget* parent, Model& model, BatchJob::Work work, const std::vector<int>& touched,
                bool showFinishedMessage = true);

} // namespace tg::shell
