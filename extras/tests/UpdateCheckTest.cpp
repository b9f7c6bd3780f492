// The update check against a real HTTP server on 127.0.0.1 run by the test itself: a newer
// version, the latest one, a closed port, a server that never answers, and bad answers.
#include "extras/UpdateCheck.h"

#include "core/IniKeys.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QSettings>
#include <QTcpServer>
#include <QTcpSocket>

namespace tg {
namespace {

// The one application object the network classes need, made on first use.
void needApplication()
{
    static int argc = 1;
    static char name[] = "tg_extras_tests";
    static char* argv[] = {name, nullptr};
    static auto* application = new QCoreApplication(argc, argv);
    (void)application;
}

// Answers every GET with `body` as HTTP/1.1, or with nothing at all when `silent`.
class LocalHttpServer : public QObject {
  public:
    explicit LocalHttpServer(QByteArray body, bool silent = false)
        : body_(std::move(body)), silent_(silent)
    {
        needApplication();
        connect(&server_, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* socket = server_.nextPendingConnection())
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { answer(socket); });
        });
        EXPECT_TRUE(server_.listen(QHostAddress::LocalHost));
    }

    QUrl url() const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1/update.json").arg(server_.serverPort()));
    }

  private:
    void answer(QTcpSocket* socket)
    {
        request_ += socket->readAll();
        if (silent_ || !request_.contains("\r\n\r\n"))
            return;
        socket->write("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " +
                      QByteArray::number(body_.size()) + "\r\nConnection: close\r\n\r\n" + body_);
        socket->disconnectFromHost();
    }

    QTcpServer server_;
    QByteArray body_;
    QByteArray request_;
    bool silent_;
};

using Outcome = UpdateCheckResult::Outcome;

TEST(UpdateCheck, NewerAndLatestVersionsFromTheServer)
{
    LocalHttpServer newer(R"({"version": "99.1", "download": "https://example.org/tg"})");
    UpdateCheckResult result = checkForUpdatesNow(newer.url());
    EXPECT_EQ(result.outcome, Outcome::Newer) << result.message.toStdString();
    EXPECT_EQ(result.message.toStdString(), "Tonegrabber 99.1 is available (you are using " +
                                                runningVersion().toStdString() +
                                                ").\nDownload: https://example.org/tg");

    LocalHttpServer same("{\"version\": \"" + runningVersion().toUtf8() + "\"}");
    result = checkForUpdatesNow(same.url());
    EXPECT_EQ(result.outcome, Outcome::Latest) << result.message.toStdString();
    EXPECT_EQ(result.message, "You are using the latest version.");
}

TEST(UpdateCheck, UnreachableServersAreReportedWithinTheTimeout)
{
    needApplication();
    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
    const quint16 port = closed.serverPort();
    closed.close();
    UpdateCheckResult result =
        checkForUpdatesNow(QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(port)));
    EXPECT_EQ(result.outcome, Outcome::Unreachable);
    EXPECT_TRUE(result.message.startsWith("The update server could not be reached ("))
        << result.message.toStdString();

    // A server that takes the request and never answers is given up after the timeout.
    LocalHttpServer silent("", true);
    result = checkForUpdatesNow(silent.url(), 300);
    EXPECT_EQ(result.outcome, Outcome::Unreachable);
    EXPECT_EQ(result.message, "The update server could not be reached (no answer within 0.3 s).");
}

TEST(UpdateCheck, BadAnswersAndNoAddress)
{
    LocalHttpServer garbage("<html>not json</html>");
    EXPECT_EQ(checkForUpdatesNow(garbage.url()).outcome, Outcome::Unreadable);
    LocalHttpServer huge("{\"version\": \"7\", \"pad\": \"" + QByteArray(200000, 'x') + "\"}");
    EXPECT_EQ(checkForUpdatesNow(huge.url()).outcome, Outcome::Unreadable);
    EXPECT_EQ(evaluateUpdateDocument(R"({"version": "7.x"})", "6.0.0").outcome,
              Outcome::Unreadable);

    // No address in Tonegrabber.ini: nothing is asked.
    EXPECT_TRUE(updateCheckUrl().isEmpty());
    EXPECT_EQ(checkForUpdatesNow(updateCheckUrl()).outcome, Outcome::NoAddress);
    QSettings(QString::fromStdString(ini::iniFilePath()), QSettings::IniFormat)
        .setValue(kUpdateUrlKey, "http://127.0.0.1:9/update.json");
    EXPECT_EQ(updateCheckUrl(), QUrl("http://127.0.0.1:9/update.json"));
}

TEST(UpdateCheck, VersionsCompareByNumberedParts)
{
    bool ok = false;
    EXPECT_EQ(compareVersions("6.0.10", "6.0.9", ok), 1);
    EXPECT_TRUE(ok);
    EXPECT_EQ(compareVersions("6", "6.0.0", ok), 0);
    EXPECT_EQ(compareVersions("5.9", "6.0", ok), -1);
    compareVersions("6.0-beta", "6.0", ok);
    EXPECT_FALSE(ok);
}

} // namespace
} // namespace tg
