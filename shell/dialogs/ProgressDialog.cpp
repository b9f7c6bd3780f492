// The progress dialog: polls its job's status on a timer and relays Cancel.
#include "shell/dialogs/ProgressDialog.h"

#include <QGridLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <cmath>

namespace tg::shell {

ProgressDialog::ProgressDialog(QWidget* parent, const QString& heading) : QDialog(parent)
{
    setObjectName(QStringLiteral("ProgressDialog"));
    setWindowTitle(tr("Info"));
    setModal(true);
    auto* layout = new QVBoxLayout(this);
    auto* headingLabel = new QLabel(heading, this);
    headingLabel->setObjectName(QStringLiteral("heading"));
    layout->addWidget(headingLabel);
    operation_ = new QLabel(this);
    operation_->setObjectName(QStringLiteral("operation"));
    operation_->setMinimumWidth(380);
    operation_->setWordWrap(true);
    layout->addWidget(operation_);
    bar_ = new QProgressBar(this);
    bar_->setObjectName(QStringLiteral("progress"));
    bar_->setRange(0, 1000);
    bar_->setTextVisible(false);
    layout->addWidget(bar_);
    auto* time = new QHBoxLayout;
    time->addWidget(new QLabel(tr("Time Left:"), this));
    timeLeft_ = new QLabel(this);
    timeLeft_->setObjectName(QStringLiteral("timeLeft"));
    time->addWidget(timeLeft_, 1);
    cancel_ = new QPushButton(tr("Cancel"), this);
    cancel_->setObjectName(QStringLiteral("cancel"));
    time->addWidget(cancel_);
    layout->addLayout(time);

    connect(cancel_, &QPushButton::clicked, this, &ProgressDialog::reject);
    timer_.setInterval(50);
    connect(&timer_, &QTimer::timeout, this, &ProgressDialog::poll);
}

int ProgressDialog::run(BatchJob& job, BatchJob::Work work)
{
    job_ = &job;
    job.start(std::move(work));
    timer_.start();
    poll();
    if (!job.status().finished)
        exec();
    timer_.stop();
    job.wait();
    job_ = nullptr;
    return job.result();
}

void ProgressDialog::poll()
{
    if (job_ == nullptr)
        return;
    const BatchJob::Status status = job_->status();
    operation_->setText(QString::fromStdString(status.text));
    bar_->setValue(int(std::lround(status.fraction * 1000)));
    timeLeft_->setText(status.secondsLeft < 0 ? QString()
                                              : tr("%1 s").arg(int(std::ceil(status.secondsLeft))));
    if (status.finished && isVisible())
        accept();
}

void ProgressDialog::reject()
{
    // The dialog stays until the job has stopped; the timer closes it then.
    if (job_ != nullptr && !job_->status().finished) {
        job_->cancel();
        cancel_->setEnabled(false);
        return;
    }
    QDialog::reject();
}

} // namespace tg::shell
