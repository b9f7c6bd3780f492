// The one progress callback and abort flag of the export subsystem.
#include "export/ExportProgress.h"

#include <utility>

namespace tg {

bool exportAbortFlag = false;

namespace {
ExportProgressCallback& progressCallback()
{
    static ExportProgressCallback callback;
    return callback;
}
} // namespace

void setExportProgressCallback(ExportProgressCallback callback)
{
    progressCallback() = std::move(callback);
}

void reportExportProgress(double fraction, const std::string& text)
{
    if (progressCallback())
        progressCallback()(fraction, text);
}

} // namespace tg
