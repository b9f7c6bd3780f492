// The export run by a BatchJob.
#include "export/BackgroundExport.h"

#include "export/ExportAudioServices.h"
#include "export/ExportProgress.h"

namespace tg {

BatchJob::Work exportWork(ExportRequest request)
{
    return [request = std::move(request)](Project& project, const JobProgress& progress,
                                          const auto&, std::string& message) {
        exportAbortFlag = false;
        setExportProgressCallback([&progress](double fraction, const std::string& text) {
            if (!progress(text, fraction))
                exportAbortFlag = true;
        });
        const int ok = runExport(project, request, defaultExportServices(), message);
        setExportProgressCallback({});
        if (!ok && exportAbortFlag.load())
            return kJobCancelled;
        return ok;
    };
}

} // namespace tg
