// An export as a BatchJob's work: it runs on the job's snapshot of the Project, so the live
// Project is never touched, and the job's Cancel reaches the export's abort flag.
#pragma once

#include "analysis/BatchJob.h"
#include "export/ExportRunner.h"

namespace tg {

// Runs `request` through runExport with the real audio services. The export's progress
// becomes the job's; a cancelled job sets the abort flag, and the export ends with "Export
// aborted.". One export at a time: the progress callback and the abort flag are shared.
BatchJob::Work exportWork(ExportRequest request);

} // namespace tg
