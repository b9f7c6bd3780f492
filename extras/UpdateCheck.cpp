// The update check over QtNetwork, bounded in time and in the size of what it reads.
#include "extras/UpdateCheck.h"

#include "core/IniKeys.h"

#include <QEventLoop>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSettings>
#include <QStringList>

#include <algorithm>

namespace tg {

namespace {

const char* const kLatest = "You are using the latest version.";
const char* const kUnreadable = "The answer of the update server could not be read.";

UpdateCheckResult unreachable(const QString& why)
{
    UpdateCheckResult result;
    result.outcome = UpdateCheckResult::Outcome::Unreachable;
    result.message = QStringLiteral("The update server could not be reached (%1).").arg(why);
    return result;
}

UpdateCheckResult unreadable()
{
    UpdateCheckResult result;
    result.outcome = UpdateCheckResult::Outcome::Unreadable;
    result.message = QString::fromLatin1(kUnreadable);
    return result;
}

bool parseVersion(const QString& text, QList<int>& parts)
{
    parts.clear();
    const QStringList fields = text.trimmed().split(QLatin1Char('.'));
    if (text.trimmed().isEmpty() || fields.size() > 8)
        return false;
    for (const QString& field : fields) {
        bool ok = false;
        const int value = field.toInt(&ok);
        if (!ok || value < 0 || field.startsWith(QLatin1Char('+')))
            return false;
        parts.append(value);
    }
    return true;
}

} // namespace

QUrl updateCheckUrl()
{
    const QSettings ini(QString::fromStdString(ini::iniFilePath()), QSettings::IniFormat);
    return QUrl(ini.value(QString::fromLatin1(kUpdateUrlKey)).toString().trimmed());
}

int compareVersions(const QString& a, const QString& b, bool& ok)
{
    QList<int> x, y;
    ok = parseVersion(a, x) && parseVersion(b, y);
    if (!ok)
        return 0;
    for (int i = 0; i < std::max(x.size(), y.size()); ++i) {
        const int left = i < x.size() ? x[i] : 0, right = i < y.size() ? y[i] : 0;
        if (left != right)
            return left < right ? -1 : 1;
    }
    return 0;
}

QString runningVersion()
{
    return QStringLiteral(TONEGRABBER_VERSION);
}

UpdateCheckResult evaluateUpdateDocument(const QByteArray& answer, const QString& running)
{
    if (answer.size() > kUpdateDocumentLimit)
        return unreadable();
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(answer, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return unreadable();
    const QJsonObject info = document.object();
    const QString newest = info.value(QStringLiteral("version")).toString();
    bool ok = false;
    const int order = compareVersions(newest, running, ok);
    if (!ok)
        return unreadable();
    UpdateCheckResult result;
    result.info = info;
    result.newestVersion = newest;
    if (order <= 0) {
        result.outcome = UpdateCheckResult::Outcome::Latest;
        result.message = QString::fromLatin1(kLatest);
        return result;
    }
    result.outcome = UpdateCheckResult::Outcome::Newer;
    result.message =
        QStringLiteral("Tonegrabber %1 is available (you are using %2).").arg(newest, running);
    const QString download = info.value(QStringLiteral("download")).toString();
    if (!download.isEmpty())
        result.message += QStringLiteral("\nDownload: %1").arg(download);
    return result;
}

UpdateChecker::UpdateChecker(QObject* parent)
    : QObject(parent), network_(new QNetworkAccessManager(this))
{
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, [this] {
        timedOut_ = true;
        if (reply_)
            reply_->abort(); // finishes the reply with OperationCanceledError
    });
}

UpdateChecker::~UpdateChecker()
{
    if (reply_) {
        reply_->disconnect(this);
        reply_->abort();
    }
}

void UpdateChecker::check(const QUrl& url)
{
    if (reply_) {
        reply_->disconnect(this);
        reply_->abort();
        reply_->deleteLater();
    }
    timedOut_ = false;
    tooLarge_ = false;
    if (url.isEmpty()) {
        UpdateCheckResult result;
        result.message = QStringLiteral("No address to check for updates is set (%1 in "
                                        "Tonegrabber.ini).")
                             .arg(QString::fromLatin1(kUpdateUrlKey));
        // Reported from the event loop, as every other outcome is.
        QTimer::singleShot(0, this, [this, result] { finish(result); });
        return;
    }
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      QStringLiteral("Tonegrabber/%1").arg(runningVersion()));
    reply_ = network_->get(request);
    connect(reply_, &QNetworkReply::downloadProgress, this, [this](qint64 received, qint64) {
        if (received > kUpdateDocumentLimit && reply_) {
            tooLarge_ = true;
            reply_->abort();
        }
    });
    connect(reply_, &QNetworkReply::finished, this, &UpdateChecker::onReplyFinished);
    timer_.start(timeoutMs_);
}

void UpdateChecker::onReplyFinished()
{
    QNetworkReply* reply = reply_;
    reply_ = nullptr;
    timer_.stop();
    if (reply == nullptr)
        return;
    reply->deleteLater();
    if (tooLarge_)
        return finish(unreadable());
    if (timedOut_)
        return finish(
            unreachable(QStringLiteral("no answer within %1 s").arg(timeoutMs_ / 1000.0)));
    if (reply->error() != QNetworkReply::NoError)
        return finish(unreachable(reply->errorString()));
    finish(evaluateUpdateDocument(reply->read(kUpdateDocumentLimit + 1), runningVersion()));
}

void UpdateChecker::finish(const UpdateCheckResult& result)
{
    result_ = result;
    if (!result.info.isEmpty())
        emit updateInfoReceived(result.info);
    emit finished();
}

UpdateCheckResult checkForUpdatesNow(const QUrl& url, int timeoutMs)
{
    UpdateChecker checker;
    checker.setTimeout(timeoutMs);
    QEventLoop loop;
    QObject::connect(&checker, &UpdateChecker::finished, &loop, &QEventLoop::quit);
    checker.check(url);
    loop.exec();
    return checker.result();
}

} // namespace tg
