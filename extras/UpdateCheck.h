// The update check: asks the address set in Tonegrabber.ini for a small JSON document naming
// the newest version ({"version": "6.1.0", "download": "https://...", "notes": "..."}) and says
// whether a newer one exists. It never blocks: the answer arrives by signal, within a bounded
// time, and without an address nothing is asked at all.
#pragma once

#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QUrl>

class QNetworkAccessManager;
class QNetworkReply;

namespace tg {

// INI key of the address to ask; none by default.
constexpr const char* kUpdateUrlKey = "UpdateServiceDialog/UpdateUrl";
// How long a check may take at most, connecting included (ms).
constexpr int kUpdateCheckTimeoutMs = 5000;
// The largest answer read (bytes); the document is a few lines.
constexpr qint64 kUpdateDocumentLimit = 64 * 1024;

struct UpdateCheckResult {
    enum class Outcome { Newer, Latest, NoAddress, Unreachable, Unreadable };
    Outcome outcome = Outcome::NoAddress;
    QString newestVersion; // from the document, when it was read
    QString message;       // what the user is told
    QJsonObject info;      // the document, when it was read
};

// The address stored under kUpdateUrlKey in Tonegrabber.ini; empty when none is set.
QUrl updateCheckUrl();

// Compares dotted version numbers ("6.0.10" > "6.0.9"; missing parts count as 0). Returns
// -1, 0 or 1; `ok` false when either is not such a number.
int compareVersions(const QString& a, const QString& b, bool& ok);

// What an answer means for the running version `running`.
UpdateCheckResult evaluateUpdateDocument(const QByteArray& answer, const QString& running);

// The running program's version.
QString runningVersion();

// One check at a time; GUI thread (or any thread with an event loop).
class UpdateChecker : public QObject {
    Q_OBJECT
  public:
    explicit UpdateChecker(QObject* parent = nullptr);
    ~UpdateChecker() override;

    // Starts a check of `url` (an empty one finishes at once with NoAddress). `finished` is
    // emitted exactly once per call, at the latest after the timeout.
    void check(const QUrl& url);
    void setTimeout(int milliseconds) { timeoutMs_ = milliseconds; }
    const UpdateCheckResult& result() const { return result_; }

  signals:
    void finished();
    // The document of a check that read one.
    void updateInfoReceived(const QJsonObject& info);

  private:
    void finish(const UpdateCheckResult& result);
    void onReplyFinished();

    QNetworkAccessManager* network_;
    QPointer<QNetworkReply> reply_;
    QTimer timer_;
    int timeoutMs_ = kUpdateCheckTimeoutMs;
    bool timedOut_ = false;
    bool tooLarge_ = false;
    UpdateCheckResult result_;
};

// Runs a check and waits for its result in a local event loop (for the command line; needs a
// QCoreApplication).
UpdateCheckResult checkForUpdatesNow(const QUrl& url, int timeoutMs = kUpdateCheckTimeoutMs);

} // namespace tg
