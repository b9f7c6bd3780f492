// The record dialog: starts, shows and steers a recording run over the Multi-Samples of a
// record command, automatic or semi-automatic, with its log, countdown, progress and
// options. The run's timers are kept by one QTimer that wakes when the next one is due;
// bouncing from the hosted instrument moves the run's clock straight to its next timer, so an
// offline run takes only the time it needs to render and process.
#pragma once

#include "recording/RecordingRun.h"

#include <QDialog>

#include <memory>

class QCheckBox;
class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QSpinBox;
class QTimer;

namespace tg {
class AudioManager;
class MidiManager;
class Model;
class OfflineTakeSource;
class SkippingRunClock;
} // namespace tg

namespace tg::shell {

class RecordingCheckDialog;

// The run's observer calls are private; its finished(bool) hides QDialog's finished(int)
// signal by name, so connect to &QDialog::finished to learn that the dialog closed.
class RecordDialog : public QDialog, private RunObserver {
    Q_OBJECT
  public:
    // `command` is a record command (kRecordSelectedMultiSample, kRecordSelectedProject or
    // kRecordAllProjects); `automatic` false runs it semi-automatically. The record list is
    // built and checked at once: a refusal is shown, and a run that cannot start closes the
    // dialog as soon as it is shown.
    // `titleText`, when given, names the run in the title instead of the command's text.
    RecordDialog(Model& model, int command, bool automatic, QWidget* parent = nullptr,
                 const QString& titleText = QString());
    ~RecordDialog() override;

    QString logText() const;
    QCheckBox* offlineBouncingBox() const { return offline_; }
    QSpinBox* maxRecLengthBox() const { return maxRecLength_; }
    QPushButton* startButton() const { return start_; }
    QPushButton* closeButton() const { return close_; }
    QProgressBar* progressBar() const { return progress_; }
    QLabel* nextKeyLabel() const { return nextKey_; }
    // The check dialog of the take waiting to be kept or discarded, or null.
    RecordingCheckDialog* checkDialog() const { return check_; }
    // True once a run has ended (finished, failed or stopped).
    bool runEnded() const { return run_ != nullptr && run_->finished(); }
    const RecordingRun* run() const { return run_.get(); }

  public slots:
    // "Start Recording", "Start Countdown" or "Stop Recording", as the button reads.
    void onStartClicked();
    // Closing stops the run (Note Off, All Notes Off); every finished take stays saved.
    void reject() override;

  private slots:
    void onRunTimerTimeout();

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void buildLayout();
    void readOptions();
    void bindOption(QCheckBox* box, const char* key);
    void scheduleRunTimer();
    void setOptionsEnabled(bool enabled);
    // A run over the chosen source with the options as they are now; false when refused.
    bool makeRun();
    void makeSource(RunOptions& options, bool hostedInput);
    void openCheckDialog(int note);

    // What the run shows.
    void log(const std::string& text) override;
    void progress(const std::string& title, int done, int total) override;
    void countdownText(const std::string& text) override;
    void nextKeyText(const std::string& text) override;
    void sizeText(const std::string& text) override;
    void recordingText(const std::string& text) override;
    void buttonText(const std::string& text) override;
    void message(const std::string& title, const std::string& text) override;
    void checkTake(int note) override;
    void finished(bool close) override;

    Model& model_;
    int command_;
    bool automatic_;
    QString titleText_;
    QCheckBox* onlyEmpty_ = nullptr;
    QCheckBox* keepLocked_ = nullptr;
    QCheckBox* closeAfter_ = nullptr;
    QCheckBox* verbose_ = nullptr;
    QCheckBox* offline_ = nullptr;
    QSpinBox* maxRecLength_ = nullptr;
    QLabel* countdown_ = nullptr;
    QLabel* nextKey_ = nullptr;
    QLabel* recording_ = nullptr;
    QLabel* size_ = nullptr;
    QProgressBar* progress_ = nullptr;
    QPlainTextEdit* log_ = nullptr;
    QPushButton* start_ = nullptr;
    QPushButton* close_ = nullptr;
    QTimer* runTimer_ = nullptr;
    RecordingCheckDialog* check_ = nullptr;
    bool closing_ = false;     // the dialog is closing itself: the run's end must not close it
    bool refusedOpen_ = false; // the run was refused on opening: the dialog closes when shown

    std::unique_ptr<AudioManager> audio_;
    std::unique_ptr<MidiManager> midi_;
    std::unique_ptr<TakeSource> source_;
    OfflineTakeSource* offlineSource_ = nullptr; // source_ when bouncing
    std::unique_ptr<RunClock> clock_;
    SkippingRunClock* skippingClock_ = nullptr; // clock_ when bouncing
    std::unique_ptr<RecordingRun> run_;
};

} // namespace tg::shell
