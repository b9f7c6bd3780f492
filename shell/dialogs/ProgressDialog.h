// The progress dialog of the long jobs: the operation text, a bar, the time left and Cancel,
// while a BatchJob works on its own thread and the window stays responsive.
#pragma once

#include "analysis/BatchJob.h"

#include <QDialog>
#include <QTimer>

class QLabel;
class QProgressBar;
class QPushButton;

namespace tg::shell {

// The heading of the batch dialogs' progress and of other long jobs.
constexpr const char* kBatchHeading = "This might take a bit ...";
constexpr const char* kLongJobHeading = "This may take a bit ...";

class ProgressDialog : public QDialog {
    Q_OBJECT
  public:
    ProgressDialog(QWidget* parent, const QString& heading);

    // Starts `work` on `job` and shows its progress, modally, until the job has finished;
    // "Cancel" asks the job to stop after the key in hand. Returns the job's result.
    int run(BatchJob& job, BatchJob::Work work);

    QPushButton* cancelButton() const { return cancel_; }

  private:
    void poll();
    void reject() override; // Escape and the window's close button cancel, as Cancel does

    BatchJob* job_ = nullptr;
    QTimer timer_;
    QLabel* operation_;
    QProgressBar* bar_;
    QLabel* timeLeft_;
    QPushButton* cancel_;
};

} // namespace tg::shell
