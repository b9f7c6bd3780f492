// The common run of the normalize, change-gain and auto-note/auto-loop jobs.
#include "shell/dialogs/BatchJobRun.h"

#include "core/Model.h"
#include "shell/MessageBoxes.h"
#include "shell/dialogs/ProgressDialog.h"

#include <QMessageBox>

#include <algorithm>

namespace tg::shell {

int runBatchJob(QWidget* parent, Model& model, BatchJob::Work work, const std::vector<int>& touched,
                bool showFinishedMessage)
{
    Project* project = model.currentProject();
    if (project == nullptr)
        return 0;
    BatchJob job(*project);
    ProgressDialog progress(parent, QString::fromLatin1(kBatchHeading));
    const int result = progress.run(job, std::move(work));
    std::vector<int> changed = job.applyMarkers(*project);
    for (int msl : touched)
        if (std::find(changed.begin(), changed.end(), msl) == changed.end())
            changed.push_back(msl);
    model.notifyListeners([&](TonegrabberModelListener& listener) {
        for (int msl : changed)
            listener.keySamplesChanged(msl);
    });
    const QString message = QString::fromStdString(job.message());
    if (result == 1 && showFinishedMessage && !message.isEmpty())
        QMessageBox::information(parent, QObject::tr("Info"), message);
    else if (result == 0 && !message.isEmpty())
        showMessage(parent, QObject::tr("Error"), message);
    return result;
}

} // namespace tg::shell
